#include "base/line_reader.h"

#include "base/allocation.h"
#include "base/failure.h"
#include "base/line_index.h"
#include "base/logs.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <unistd.h>

namespace {

constexpr const char* buffer_name = "line buffer";
constexpr size_t more_room = 1 + room_behind_line; // of the buffer, behind a block

} // namespace

size_t LineReader::block_size = size_t{256} << 10;
size_t LineReader::chunk_size = size_t{8} << 10;

LineReader::LineReader(int descriptor, size_t line_size, char mark)
    : descriptor_(descriptor), mark_(mark),
      max_piece_(line_size == unlimited ? unlimited : line_size - 1),
      line_feeds_(new char*[chunk_size + line_index_slack]), next_line_feed_(line_feeds_.get()),
      mark_capacity_(chunk_size + line_index_slack), mark_places_(new char*[mark_capacity_]),
      marks_end_(mark_places_.get()), marks_{marks_end_} {
    *next_line_feed_ = nullptr;
}

LineReader::LineReader(int descriptor, size_t line_size, const FileRange& range, char mark)
    : LineReader(descriptor, line_size, mark) {
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
    next_line_feed_ += is_terminated_ ? 1 : 0;
    pass_marks();
    line = {next_, text_size(line_end)};
    char* const text_end = line.text + line.size;
    if (text_end == line_end) {
        cut_ = text_end;
        cut_character_ = *text_end;
    }
    *text_end = '\0';
    next_ = line_end;
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
        indexed_ = end_;
        if (end_offset_ >= range_.end || !read_more()) {
            next_ = end_;
            return;
        }
        next_ = static_cast<char*>(std::memchr(next_, '\n', static_cast<size_t>(end_ - next_)));
    } while (next_ == nullptr);
    indexed_ = ++next_;
}

// One past the last character of the line at next_, next_ itself at the end of the file.
char* LineReader::read_to_line_end() {
    while (true) {
        char* const line_feed = *next_line_feed_;
        char* const known_end = line_feed == nullptr ? indexed_ : line_feed + 1;
        if (static_cast<size_t>(known_end - next_) >= max_piece_) {
            return next_ + max_piece_;
        }
        if (line_feed != nullptr) {
            return known_end;
        }
        if (indexed_ != end_) {
            index_more();
        } else if (!read_more()) {
            return end_;
        }
    }
}

// Indexes the next chunk of what was read, when no line feed is left of the one before. Not
// inlined: what it needs would be saved and restored for every line.
[[gnu::noinline]] void LineReader::index_more() {
    make_room_for_marks();
    char* const chunk = indexed_;
    indexed_ += std::min(chunk_size, static_cast<size_t>(end_ - chunk));
    LineIndexEnds ends = {line_feeds_.get(), marks_end_};
    const bool has_nul = index_lines(chunk, indexed_, mark_, ends);
    *ends.line_feeds = nullptr;
    *ends.marks = indexed_;
    next_line_feed_ = line_feeds_.get();
    marks_end_ = ends.marks;
    if (has_nul && (next_nul_ == nullptr || next_nul_ < next_)) {
        next_nul_ = find_nul(next_);
    }
}

// Moves the marks of the unfinished line to the start of their list and sees to it that those of a
// chunk fit behind them.
void LineReader::make_room_for_marks() {
    pass_marks();
    const size_t kept = static_cast<size_t>(marks_end_ - marks_.next);
    Places larger;
    if (kept + chunk_size + line_index_slack > mark_capacity_) {
        mark_capacity_ = 2 * (kept + chunk_size) + line_index_slack;
        larger.reset(new char*[mark_capacity_]);
    }
    char** const places = larger == nullptr ? mark_places_.get() : larger.get();
    if (places != marks_.next) {
        std::copy(marks_.next, marks_.next + kept, places);
    }
    if (larger != nullptr) {
        mark_places_ = std::move(larger);
    }
    marks_.next = places;
    marks_end_ = places + kept;
}

// Goes to the marks of the line at next_.
void LineReader::pass_marks() {
    while (marks_.next != marks_end_ && *marks_.next < next_) {
        ++marks_.next;
    }
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

// Moves the unfinished line, all indexed, to the start of the buffer and sees to it that a block
// fits behind it, with room for a terminator and for those who read behind it.
void LineReader::make_room() {
    const size_t kept = static_cast<size_t>(end_ - next_);
    char* buffer = buffer_;
    if (kept + block_size + more_room > capacity_) {
        const size_t capacity = 2 * (kept + block_size) + more_room;
        buffer = static_cast<char*>(std::malloc(capacity));
        if (buffer == nullptr) {
            out_of_memory(buffer_name, capacity);
        }
        capacity_ = capacity;
    }
    move_marks(buffer);
    if (kept != 0 && buffer != next_) {
        std::memmove(buffer, next_, kept);
    }
    if (buffer != buffer_) {
        std::free(buffer_);
        buffer_ = buffer;
    }
    next_ = buffer_;
    end_ = next_ + kept;
    indexed_ = end_;
    *marks_end_ = end_;
    if (next_nul_ != nullptr) {
        next_nul_ = find_nul(next_);
    }
}

// Of the unfinished line, which is about to move.
void LineReader::move_marks(char* to) {
    pass_marks();
    for (char** mark = marks_end_; mark != marks_.next;) {
        --mark;
        *mark = to + (*mark - next_);
    }
}

// The first NUL byte of what was indexed, or null.
char* LineReader::find_nul(char* from) const {
    return static_cast<char*>(std::memchr(from, '\0', static_cast<size_t>(indexed_ - from)));
}

// Length of the text of the line from next_ to `line_end`: without its line feed, up to its first
// NUL byte.
size_t LineReader::text_size(char* line_end) {
    if (next_nul_ != nullptr) {
        next_nul_ = next_nul_ < next_ ? find_nul(next_) : next_nul_;
        if (next_nul_ != nullptr && next_nul_ < line_end) {
            return static_cast<size_t>(next_nul_ - next_);
        }
    }
    return static_cast<size_t>(line_end - next_) - (is_terminated_ ? 1 : 0);
}
