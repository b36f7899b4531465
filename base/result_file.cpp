#include "base/result_file.h"

#include "base/left_results.h"

#include <charconv>
#include <cstring>
#include <unistd.h>

namespace {

constexpr size_t buffer_size = size_t{1} << 20;
constexpr size_t max_number_length = 20;

} // namespace

ResultFile::~ResultFile() {
    if (is_open()) {
        close();
    }
}

bool ResultFile::create(const OwnDirectory& directory, const char* name) {
    file_ = directory.create(name, 0666);
    name_ = name;
    buffer_ = std::make_unique_for_overwrite<char[]>(buffer_size);
    return is_open();
}

void ResultFile::append(std::string_view text) {
    if (text.size() > buffer_size - used_) {
        flush();
        if (text.size() > buffer_size) {
            write_all(text);
            return;
        }
    }
    std::memcpy(buffer_.get() + used_, text.data(), text.size());
    used_ += text.size();
}

void ResultFile::append_unsigned(uint64_t number) {
    char digits[max_number_length];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    append(std::string_view(digits, static_cast<size_t>(end - digits)));
}

void ResultFile::append_signed(int64_t number) {
    char digits[max_number_length];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    append(std::string_view(digits, static_cast<size_t>(end - digits)));
}

void ResultFile::overwrite_start(std::string_view text) {
    flush();
    if (lseek(file_.get(), 0, SEEK_SET) == -1) {
        has_failed_ = true;
        return;
    }
    write_all(text);
}

bool ResultFile::close() {
    flush();
    note_left_result(name_.c_str(), file_.get());
    if (!file_.close()) {
        has_failed_ = true;
    }
    return !has_failed_;
}

void ResultFile::flush() {
    write_all({buffer_.get(), used_});
    used_ = 0;
}

void ResultFile::write_all(std::string_view text) {
    has_failed_ = has_failed_ || !write_whole(file_.get(), text);
}
