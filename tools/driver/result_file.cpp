#include "tools/driver/result_file.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fcntl.h>
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

bool ResultFile::create(const std::string& path) {
    unlink(path.c_str());
    descriptor_ = open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
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
    if (lseek(descriptor_, 0, SEEK_SET) == -1) {
        has_failed_ = true;
        return;
    }
    write_all(text);
}

bool ResultFile::close() {
    flush();
    if (::close(descriptor_) != 0) {
        has_failed_ = true;
    }
    descriptor_ = -1;
    return !has_failed_;
}

void ResultFile::flush() {
    write_all({buffer_.get(), used_});
    used_ = 0;
}

void ResultFile::write_all(std::string_view text) {
    while (!text.empty() && !has_failed_) {
        const ssize_t count = write(descriptor_, text.data(), text.size());
        if (count > 0) {
            text.remove_prefix(static_cast<size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            has_failed_ = true;
        }
    }
}
