#include "output_file.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace bench {

namespace {

constexpr std::size_t buffer_size = std::size_t{1024} * 1024;

[[noreturn]] void fail(const std::filesystem::path& path) {
    throw std::system_error(errno, std::generic_category(), path.string());
}

} // namespace

OutputFile::OutputFile(const std::filesystem::path& path)
    : path_(path), descriptor_(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)),
      buffer_(buffer_size), end_(buffer_.data()),
      flush_mark_(buffer_.data() + (buffer_size - longest_line)) {
    if (descriptor_ < 0)
        fail(path_);
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

void OutputFile::flush() {
    for (const char* next = buffer_.data(); next < end_;) {
        const ssize_t written = write(descriptor_, next, static_cast<std::size_t>(end_ - next));
        if (written < 0 && errno != EINTR)
            fail(path_);
        if (written > 0)
            next += written;
    }
    end_ = buffer_.data();
}

void OutputFile::close() {
    flush();
    const int descriptor = descriptor_;
    descriptor_ = -1;
    if (::close(descriptor) != 0)
        fail(path_);
}

} // namespace bench
