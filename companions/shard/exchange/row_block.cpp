#include "companions/shard/exchange/row_block.h"

#include "companions/shard/exchange/range_key.h"
#include "tools/parse/url_key.h"

#include <utility>

namespace {

void require_row_count(const Frame& block, uint64_t count) {
    if (number_in(block.label, "rows") != count) {
        fail_as_damaged();
    }
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

RowBlockReader::RowBlockReader(Frame block) : block_(std::move(block)), from_(block_.payload) {
    if (block_.kind != FrameKind::rows) {
        fail_as_damaged();
    }
    constexpr size_t least_key = max_method_length + 2; // bytes in the payload
    uint64_t left = from_.number();
    if (left > block_.payload.size() / least_key) {
        fail_as_damaged();
    }
    for (keys_.reserve(left); left != 0; --left) {
        keys_.push_back(read_url_key(from_));
    }
}

bool RowBlockReader::next() {
    if (rows_left_ == 0) {
        if (from_.at_end()) {
            require_row_count(block_, row_count_);
            return false;
        }
        begin_session();
    }
    read_time_and_place();
    const uint64_t url = from_.number();
    if (url >= keys_.size()) {
        fail_as_damaged();
    }
    row_.url_key = keys_[url];
    own_texts_.read(from_, UrlKey(row_.url_key).url, row_);
    --rows_left_;
    ++row_count_;
    return true;
}

void RowBlockReader::begin_session() {
    const std::string_view session = from_.text();
    rows_left_ = from_.number();
    if (rows_left_ == 0 || (row_count_ != 0 && session <= row_.session)) {
        fail_as_damaged();
    }
    row_ = {};
    row_.session = session;
    is_first_of_session_ = true;
}

void RowBlockReader::read_time_and_place() {
    const uint64_t later = from_.number();
    const RequestPlace place = {from_.word(), from_.word()};
    const bool is_first = std::exchange(is_first_of_session_, false);
    if (later > UINT64_MAX - row_.time || (!is_first && later == 0 && place <= row_.place)) {
        fail_as_damaged();
    }
    row_.time += later;
    row_.place = place;
}
