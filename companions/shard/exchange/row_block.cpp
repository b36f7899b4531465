#include "companions/shard/exchange/row_block.h"

#include "companions/shard/exchange/range_key.h"
#include "tools/parse/url_key.h"

#include <utility>

namespace {

std::vector<std::string_view> read_url_keys(PackedReader& from) {
    std::vector<std::string_view> keys;
    for (uint64_t left = from.number(); left != 0; --left) {
        keys.push_back(read_url_key(from));
    }
    return keys;
}

} // namespace

void RowBlockWriter::add(const ExchangedRow& row) {
    if (row_count_ != 0 &&
        url_texts_.size() + sessions_.size() + session_rows_.size() >= row_block_size) {
        finish();
    }
    if (row_count_ == 0) {
        first_key_ = range_key(row.session, row.time);
    }
    if (session_count_ == 0 || session_ != row.session) {
        end_session();
        session_ = row.session;
        last_time_ = 0;
    }
    append_packed(session_rows_, row.time - last_time_);
    append_packed(session_rows_, uint64_t{row.place.log_piece});
    append_packed(session_rows_, uint64_t{row.place.row});
    append_packed(session_rows_, number_of_url(row.url_key));
    append_own_texts(session_rows_, row, UrlKey(row.url_key).url);
    last_time_ = row.time;
    ++session_count_;
    ++row_count_;
}

void RowBlockWriter::finish() {
    if (row_count_ == 0) {
        return;
    }
    end_session();
    nlohmann::json label = label_;
    label["first"] = hex_text(first_key_);
    label["last"] = hex_text(range_key(session_, last_time_));
    label["rows"] = std::exchange(row_count_, 0);
    std::string payload;
    append_packed(payload, uint64_t{urls_.size()});
    payload += url_texts_;
    payload += sessions_;
    frames_.write(FrameKind::rows, std::move(label), payload);
    urls_.clear();
    url_texts_.clear();
    sessions_.clear();
}

void RowBlockWriter::end_session() {
    if (session_count_ == 0) {
        return;
    }
    append_packed(sessions_, session_);
    append_packed(sessions_, std::exchange(session_count_, 0));
    sessions_ += session_rows_;
    session_rows_.clear();
}

uint64_t RowBlockWriter::number_of_url(std::string_view key) {
    const auto [place, is_new] = urls_.try_emplace(std::string(key), urls_.size());
    if (is_new) {
        append_packed(url_texts_, key);
    }
    return place->second;
}

void read_row_block(const Frame& frame, const std::function<void(const ExchangedRow&)>& take) {
    PackedReader from(frame.payload);
    const std::vector<std::string_view> keys = read_url_keys(from);
    OwnTextsReader own_texts;
    ExchangedRow row = {};
    while (!from.at_end()) {
        row.session = from.text();
        row.time = 0;
        for (uint64_t left = from.number(); left != 0; --left) {
            row.time += from.number();
            row.place = {from.word(), from.word()};
            const uint64_t url = from.number();
            if (url >= keys.size()) {
                fail_as_damaged();
            }
            row.url_key = keys[url];
            own_texts.read(from, UrlKey(row.url_key).url, row);
            take(row);
        }
    }
}
