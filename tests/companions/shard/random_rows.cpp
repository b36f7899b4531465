#include "tests/companions/shard/random_rows.h"

#include "companions/shard/exchange/row_block.h"
#include "tests/urls/table_of_requests.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <deque>
#include <string>

namespace {

void give_session(alInfo& request, Choices& choices) {
    static const std::array<std::string, 8> ids = {
        "", "a", "ab", "b\xe9", "12345678", "123456789", "12345678\xe9", std::string(63, 'x')};
    if (session_mode == SESSION_MODE_COOKIE) {
        std::strcpy(request.jsession_id, choices.of(ids).c_str());
        std::strcpy(request.akaau_id, choices.one_in(3) ? "=k" : "");
    } else {
        request.client_ip = choices.of(std::array{0U, 1U, 0x80000000U, UINT32_MAX});
    }
}

alInfo random_request(Choices& choices, size_t max_url, std::deque<std::string>& texts) {
    alInfo request = {};
    give_session(request, choices);
    request.time_stamp = choices.of(std::array<uint64_t, 5>{0, 1, 2, 971211336, UINT64_MAX});
    std::strcpy(request.method, choices.of(std::array{"GET", "get", "Post", "SIXTEENLETTERS16"}));
    request.host_ip = choices.of(std::array{"NA", "a.example", "b.example"});
    std::string& url =
        texts.emplace_back("/" + choices.text("ab", choices.one_in(3) ? max_url : 2));
    if (choices.one_in(2)) {
        url += "?" + choices.text("q=&", choices.one_in(3) ? max_url : 3);
    }
    request.url = url.data();
    request.url_len = static_cast<int>(url.size());
    find_counted_url(request);
    if (choices.one_in(3)) {
        request.response_code = 302;
        request.redirect_url = texts
                                   .emplace_back((choices.one_in(2) ? "http://a.example/" : "/") +
                                                 choices.text("Ab", 2))
                                   .data();
    }
    return request;
}

} // namespace

RequestTable random_requests(Choices& choices, size_t count, size_t max_url) {
    std::deque<std::string> texts;
    std::vector<alInfo> records(count);
    for (alInfo& record : records) {
        record = random_request(choices, max_url, texts);
    }
    return table_of_requests(records, choices);
}

std::vector<PlacedRow> placed_rows(Choices& choices, const RequestTable& table) {
    std::vector<PlacedRow> rows;
    RequestPlace place = {0, 0};
    table.rows.for_each([&](uint32_t, const RequestRow& row) {
        place = choices.one_in(20) ? RequestPlace{place.log_piece + 1, 0}
                                   : RequestPlace{place.log_piece, place.row + 1};
        rows.push_back({row, place});
    });
    return rows;
}

void write_blocks(Choices& choices, const RequestTexts& texts, std::vector<PlacedRow> rows,
                  FrameWriter& frames) {
    for (size_t i = 0; i + 1 < rows.size(); ++i) {
        std::swap(rows[i], rows[i + choices.below(rows.size() - i)]);
    }
    for (auto begin = rows.begin(); begin != rows.end();) {
        const auto left = static_cast<size_t>(rows.end() - begin);
        const size_t size = 1 + choices.below(std::min<size_t>(left, choices.one_in(4) ? left : 9));
        const auto end = begin + static_cast<ptrdiff_t>(size);
        std::vector<PlacedRow> block(begin, end);
        sort_rows(texts, block);
        RowBlockWriter writer(frames, nlohmann::json::object());
        for (const PlacedRow& row : block) {
            writer.add(exchanged_row(texts, row));
        }
        writer.finish();
        begin = end;
    }
}
