#include "companions/shard/exchange/url_table.h"

#include "base/failure.h"
#include "companions/shard/exchange/exchanged_row.h"
#include "tools/urls/url_order.h"

#include <utility>

void UrlTableWriter::add_url(const TabledUrl& url) {
    make_room();
    append_packed(payload_, url.key);
    append_packed(payload_, url.count);
    append_packed(payload_, url.own_method);
    append_packed(payload_, url.query_count);
}

void UrlTableWriter::add_query(std::string_view rest) {
    make_room();
    append_packed(payload_, rest);
}

void UrlTableWriter::make_room() {
    if (payload_.size() >= url_frame_size) {
        write(false);
    }
}

void UrlTableWriter::write(bool is_last) {
    frames_.write(FrameKind::urls, {{"table", table_}, {"part", part_++}, {"is_last", is_last}},
                  std::exchange(payload_, {}));
}

bool UrlTableReader::next_url() {
    while (queries_left_ != 0) {
        next_query();
    }
    if (!has_more()) {
        return false;
    }
    read_url();
    return true;
}

std::string_view UrlTableReader::next_query() {
    if (queries_left_ == 0 || !has_more()) {
        fail_as_damaged();
    }
    --queries_left_;
    return from_.text();
}

bool UrlTableReader::has_more() {
    while (from_.at_end()) {
        if (was_last_) {
            return false;
        }
        part_ = next_part_();
        if (!part_ || part_->kind != FrameKind::urls ||
            number_in(part_->label, "part") != part_count_) {
            fail("Frames of the job are missing");
        }
        ++part_count_;
        was_last_ = flag_in(part_->label, "is_last");
        from_ = PackedReader(part_->payload);
    }
    return true;
}

void UrlTableReader::read_url() {
    const std::string key_before = std::exchange(key_, std::string(read_url_key(from_)));
    url_.key = key_;
    url_.count = from_.number();
    own_method_ = from_.text();
    url_.own_method = own_method_;
    queries_left_ = url_.query_count = from_.number();
    const bool is_in_order = key_before.empty() || stands_before(UrlKey(key_before), UrlKey(key_));
    if (!is_in_order || url_.count == 0 || own_method_.size() > max_method_length ||
        own_method_.find('\0') != std::string::npos ||
        (queries_left_ != 0 && queries_left_ != url_.count)) {
        fail_as_damaged();
    }
}
