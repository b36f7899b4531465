#include "base/line_reader.h"

#include "base/allocation.h"
#include "base/failure.h"
#include "base/logs.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <unistd.h>

namespace {

constexpr const char* buffer_name = "line buffer";

} // namespace

size_t LineReader::block_size = size_t{256} << 10;

LineReader::LineReader(int descriptor, size_t line_size)
    : descriptor_(descriptor), max_piece_(line_size == unlimited ? unlimited : line_size - 1) {}

LineReader::LineReader(int descriptor, size_t line_size, const FileRange& range)
    : LineReader(descriptor, line_size) {
    has_range_ = true;
    range_ = range;
    end_offset_ = range.begin;
    if (range.begin != 0) {
        --end_offset_; // a line begins at the range's start if a line feed stands before it
        skip_first_line();
    }
}

void LineReader::require_whole(const char* file_name) const {
    if (error_ != 0) {
        fail("Failed to read file %s. Error = '%s'", file_name,
             std::generic_category().message(error_).c_str());
    }
}

LineReader::~LineReader() {
    std::free(buffer_);
}

bool LineReader::next(LineText& line) {
    if (cut_ != nullptr) {
        *cut_ = cut_character_;
        cut_ = nullptr;
    }
    if (is_past_range()) {
        return false;
    }
    char* const line_end = read_to_line_end();
    if (line_end == next_) {
        return false;
    }
    is_terminated_ = line_end[-1] == '\n';
    line = {next_, text_size(line_end)};
    char* const text_end = line.text + line.size;
    if (text_end == line_end) {
        cut_ = text_end;
        cut_character_ = *text_end;
    }
    *text_end = '\0';
    next_ = line_end;
    searched_ = std::max(searched_, next_);
    return true;
}

// A range ends where the next line would begin behind it.
bool LineReader::is_past_range() const {
    const uint64_t offset = end_offset_ - static_cast<uint64_t>(end_ - next_);
    return has_range_ && is_terminated_ && offset >= range_.end;
}

// Goes behind the first line feed, and not far past the range if there is none in it: the line then
// belongs to a range before this one.
void LineReader::skip_first_line() {
    do {
        next_ = end_;
        searched_ = end_;
        if (end_offset_ >= range_.end || !read_more()) {
            next_ = end_;
            return;
        }
        next_ = static_cast<char*>(std::memchr(next_, '\n', static_cast<size_t>(end_ - next_)));
    } while (next_ == nullptr);
    searched_ = ++next_;
}

// One past the last character of the line at next_, next_ itself at the end of the file.
char* LineReader::read_to_line_end() {
    char* line_end = find_line_end();
    while (line_end == nullptr && read_more()) {
        line_end = find_line_end();
    }
    return line_end == nullptr ? end_ : line_end;
}

// One past the last character of the line at next_, or null when more must be read to know.
char* LineReader::find_line_end() {
    const size_t available = static_cast<size_t>(end_ - next_);
    char* const piece_end = next_ + std::min(available, max_piece_);
    if (searched_ < piece_end) {
        void* line_feed = std::memchr(searched_, '\n', static_cast<size_t>(piece_end - searched_));
        if (line_feed != nullptr) {
            return static_cast<char*>(line_feed) + 1;
        }
        searched_ = piece_end;
    }
    return available >= max_piece_ ? piece_end : nullptr;
}

bool LineReader::read_more() {
    if (at_end_) {
        return false;
    }
    make_room();
    ssize_t count;
    do {
        count = read_block();
    } while (count == -1 && errno == EINTR);
    if (count <= 0) {
        error_ = count == 0 ? 0 : errno;
        at_end_ = true;
        return false;
    }
    end_ += count;
    end_offset_ += static_cast<uint64_t>(count);
    return true;
}

ssize_t LineReader::read_block() {
    if (!has_range_) {
        return read(descriptor_, end_, block_size);
    }
    constexpr uint64_t usual_rest = 4096; // of the last line, behind the range
    const uint64_t usual_end = std::min(range_.end, range_.file_size) + usual_rest;
    const uint64_t wanted = end_offset_ < usual_end ? usual_end - end_offset_ : block_size;
    const uint64_t left = range_.file_size - std::min(range_.file_size, end_offset_);
    return pread(descriptor_, end_, std::min({wanted, left, uint64_t{block_size}}),
                 static_cast<off_t>(end_offset_));
}

// Moves the unfinished line to the start of the buffer and sees to it that a block fits behind it,
// with one more byte for a terminator.
void LineReader::make_room() {
    const size_t kept = static_cast<size_t>(end_ - next_);
    const size_t searched = static_cast<size_t>(searched_ - next_);
    char* buffer = buffer_;
    if (kept + block_size + 1 > capacity_) {
        const size_t capacity = 2 * (kept + block_size) + 1;
        buffer = static_cast<char*>(std::malloc(capacity));
        if (buffer == nullptr) {
            out_of_memory(buffer_name, capacity);
        }
        capacity_ = capacity;
    }
    if (kept != 0 && buffer != next_) {
        std::memmove(buffer, next_, kept);
    }
    if (buffer != buffer_) {
        std::free(buffer_);
        buffer_ = buffer;
    }
    next_ = buffer_;
    searched_ = next_ + searched;
    end_ = next_ + kept;
    next_nul_ = nullptr;
}

// Length of the text of the line from next_ to `line_end`: without its line feed, up to its first
// NUL byte.
size_t LineReader::text_size(char* line_end) {
    if (next_nul_ < next_) {
        void* nul = std::memchr(next_, '\0', static_cast<size_t>(end_ - next_));
        next_nul_ = nul == nullptr ? end_ : static_cast<char*>(nul);
    }
    if (next_nul_ < line_end) {
        return static_cast<size_t>(next_nul_ - next_);
    }
    const bool has_line_feed = line_end[-1] == '\n';
    return static_cast<size_t>(line_end - next_) - (has_line_feed ? 1 : 0);
}
