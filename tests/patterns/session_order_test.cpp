#include "tools/patterns/session_order.h"

#include "tests/patterns/numbered_requests.h"
#include "tools/config/replay_settings.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <tuple>

namespace {

std::vector<alInfo> random_records(Choices& choices, size_t count) {
    const std::string x62(62, 'x');
    const std::string ids[] = {
        "",          "a",         "A",       "ab",   "a\xe9",        "b",       "12345678",
        "123456789", "123456780", "1234567", "\xe9", "12345678\xe9", x62 + "x", x62 + "y"};
    const uint32_t addresses[] = {0, 1, 2, 0x7fffffff, 0x80000000, 0xffffffff};
    const uint64_t times[] = {0, 1, 2, 3, 971211336, uint64_t{1} << 63, UINT64_MAX};
    static char url[] = "/";
    std::vector<alInfo> records(count);
    for (alInfo& record : records) {
        record.url = url;
        record.host_ip = "h";
        if (session_mode == SESSION_MODE_COOKIE) {
            std::strcpy(record.jsession_id, choices.of(ids).c_str());
        } else {
            record.client_ip = choices.of(addresses);
        }
        record.time_stamp = choices.of(times);
    }
    if (choices.one_in(3)) { // as single logs mostly are
        std::sort(records.begin(), records.end(),
                  [](const alInfo& a, const alInfo& b) { return a.time_stamp < b.time_stamp; });
    }
    return records;
}

void expect_stable_order(char mode) {
    session_mode = mode;
    const auto key = [](const alInfo& record) { // only the id of the mode is filled
        return std::make_tuple(std::string_view(record.jsession_id), record.client_ip,
                               record.time_stamp);
    };
    Choices choices(9);
    for (const size_t count : {0U, 1U, 2U, 3U, 10U, 50U, 3000U, 3001U}) {
        for (size_t round = 0; round < 3000 / (count + 10) + 5; ++round) {
            std::vector<alInfo> records = random_records(choices, count);
            const RequestNumbers numbers = number_requests(records, choices);
            std::vector<uint32_t> expected(count);
            std::iota(expected.begin(), expected.end(), 0U);
            std::stable_sort(expected.begin(), expected.end(), [&](uint32_t a, uint32_t b) {
                return key(records[a]) < key(records[b]);
            });
            std::vector<uint32_t> ordered;
            for (const OrderedRequest& request :
                 order_by_session(records.data(), numbers).requests) {
                ordered.push_back(request.record);
            }
            EXPECT_EQ(ordered, expected);
        }
    }
}

} // namespace

TEST(SessionOrder, IsThatOfAStableSortInBothModes) {
    run_in_child([] { expect_stable_order(SESSION_MODE_COOKIE); });
    run_in_child([] { expect_stable_order(SESSION_MODE_CLIENT_IP); });
}
