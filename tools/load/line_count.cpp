#include "tools/load/line_count.h"

#include "base/file_descriptor.h"
#include "base/file_exists.h"
#include "base/logs.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// In groups small enough for a byte-wide sum, so that the compiler can compare many bytes at a
// time.
uint64_t count_line_feeds(const char* text, size_t size) {
    constexpr size_t group_size = 192;
    uint64_t total = 0;
    size_t done = 0;
    for (; done + group_size <= size; done += group_size) {
        unsigned char in_group = 0;
        for (size_t i = 0; i < group_size; ++i) {
            in_group = static_cast<unsigned char>(in_group + (text[done + i] == '\n'));
        }
        total += in_group;
    }
    for (; done < size; ++done) {
        total += text[done] == '\n';
    }
    return total;
}

// Only a regular file can be read twice. Any other is not even opened: that could wait for ever, or
// take a writer's only reader from it.
FileDescriptor open_regular_file(const char* file_name) {
    struct stat status;
    const bool is_regular = stat(file_name, &status) == 0 && S_ISREG(status.st_mode);
    return FileDescriptor(is_regular ? open(file_name, O_RDONLY | O_CLOEXEC) : -1);
}

// As `read`, past interruptions.
ssize_t read_block(int descriptor, char* block, size_t size) {
    ssize_t count;
    do {
        count = read(descriptor, block, size);
    } while (count == -1 && errno == EINTR);
    return count;
}

uint64_t count_lines(int descriptor) {
    constexpr size_t block_size = size_t{256} << 10;
    const auto block = std::make_unique_for_overwrite<char[]>(block_size);
    uint64_t total = 0;
    ssize_t count;
    while ((count = read_block(descriptor, block.get(), block_size)) > 0) {
        total += count_line_feeds(block.get(), static_cast<size_t>(count));
    }
    return count == 0 ? total : 0;
}

constexpr const char* fname = "zvr_get_total_lines_in_file";

// `descriptor`: -1 for a file that cannot be opened.
uint64_t count_and_log(const char* file_name, int descriptor) {
    // The command that gives the same count by hand.
    DEBUG_LOG(3, "zvr_run_cmd_and_get_last_line",
              "Method called. Command = wc -l %s | awk '{print $1}'", file_name);
    const uint64_t total = descriptor == -1 ? 0 : count_lines(descriptor);
    DEBUG_LOG(3, fname, "Total number of lines in file %s is %lu", file_name, total);
    return total;
}

} // namespace

uint64_t zvr_get_total_lines_in_file(const char* file_name) {
    DEBUG_LOG(3, fname, "Method called. File = %s", file_name);
    if (!file_exists(file_name)) {
        DEBUG_LOG(2, fname, "File %s is not present. Returning 0", file_name);
        return 0;
    }
    const FileDescriptor file = open_regular_file(file_name);
    return count_and_log(file_name, file.get());
}

uint64_t total_lines_in_open_file(const char* file_name, int descriptor) {
    DEBUG_LOG(3, fname, "Method called. File = %s", file_name);
    const uint64_t total = count_and_log(file_name, descriptor);
    return lseek(descriptor, 0, SEEK_SET) == 0 ? total : 0;
}

bool has_lines(const char* file_name) {
    const FileDescriptor file = open_regular_file(file_name);
    char block[16384];
    bool is_found = false;
    ssize_t count;
    while (!is_found && file.is_open() &&
           (count = read_block(file.get(), block, sizeof block)) > 0) {
        is_found = std::memchr(block, '\n', static_cast<size_t>(count)) != nullptr;
    }
    return is_found;
}
