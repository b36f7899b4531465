#include "tools/load/line_count.h"

#include "base/file_descriptor.h"
#include "base/file_exists.h"
#include "base/logs.h"
#include "base/regular_file.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
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

// As `read`, past interruptions.
ssize_t read_block(int descriptor, char* block, size_t size) {
    ssize_t count;
    do {
        count = read(descriptor, block, size);
    } while (count == -1 && errno == EINTR);
    return count;
}

// Where a count ends that is to end at `end`: what the file gains meanwhile is not counted, or who
// writes to it could keep the count going.
uint64_t end_of_count(int descriptor, uint64_t end) {
    struct stat status;
    const bool has_size = fstat(descriptor, &status) == 0 && status.st_size > 0;
    return std::min(end, has_size ? static_cast<uint64_t>(status.st_size) : most_unshown);
}

uint64_t count_lines(int descriptor, uint64_t end) {
    constexpr uint64_t block_size = uint64_t{256} << 10;
    const auto block = std::make_unique_for_overwrite<char[]>(block_size);
    uint64_t left = end_of_count(descriptor, end);
    uint64_t total = 0;
    ssize_t count;
    while ((count = read_block(descriptor, block.get(), std::min(left, block_size))) > 0) {
        total += count_line_feeds(block.get(), static_cast<size_t>(count));
        left -= static_cast<uint64_t>(count);
    }
    return count == 0 ? total : 0;
}

// What is counted decides what is read, so it has to be what is read.
FileDescriptor open_to_count(const char* file_name, const FileIdentity& measured) {
    FileDescriptor file = open_regular_file(file_name);
    if (file.is_open()) {
        take_measured_log(file_name, file, measured);
    }
    return file;
}

constexpr const char* fname = "zvr_get_total_lines_in_file";

// `descriptor`: -1 for a file that cannot be opened.
uint64_t count_and_log(const char* file_name, int descriptor, uint64_t end) {
    // The command that gives the same count by hand.
    DEBUG_LOG(3, "zvr_run_cmd_and_get_last_line",
              "Method called. Command = wc -l %s | awk '{print $1}'", file_name);
    const uint64_t total = descriptor == -1 ? 0 : count_lines(descriptor, end);
    DEBUG_LOG(3, fname, "Total number of lines in file %s is %lu", file_name, total);
    return total;
}

} // namespace

uint64_t zvr_get_total_lines_in_file(const char* file_name, const FileIdentity& measured,
                                     uint64_t size) {
    DEBUG_LOG(3, fname, "Method called. File = %s", file_name);
    if (!file_exists(file_name)) {
        DEBUG_LOG(2, fname, "File %s is not present. Returning 0", file_name);
        return 0;
    }
    const FileDescriptor file = open_to_count(file_name, measured);
    if (size == 0) {
        refuse_more_than_unshown(file_name, file.get());
    }
    return count_and_log(file_name, file.get(), end_of_measured(file.get(), size));
}

uint64_t total_lines_in_open_file(const char* file_name, int descriptor, uint64_t end) {
    DEBUG_LOG(3, fname, "Method called. File = %s", file_name);
    const uint64_t total = count_and_log(file_name, descriptor, end);
    return lseek(descriptor, 0, SEEK_SET) == 0 ? total : 0;
}

bool has_lines(const char* file_name, const FileIdentity& measured, uint64_t size) {
    const FileDescriptor file = open_to_count(file_name, measured);
    return has_lines(file.get(), end_of_measured(file.get(), size));
}

bool has_lines(int descriptor, uint64_t end) {
    char block[16384];
    bool is_found = false;
    ssize_t count;
    while (!is_found && (count = read_block(descriptor, block, std::min(end, sizeof block))) > 0) {
        end -= static_cast<uint64_t>(count);
        is_found = std::memchr(block, '\n', static_cast<size_t>(count)) != nullptr;
    }
    return is_found;
}
