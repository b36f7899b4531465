#pragma once

#include "base/line_text.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <sys/types.h>

// A part of a file that is read by itself.
struct FileRange {
    uint64_t begin; // bytes
    uint64_t end;
    uint64_t file_size; // nothing from here on is read
};

// Reads the lines of a file from its descriptor in large blocks and cuts them in place. Lines are
// those that a line-by-line reader with a buffer of `line_size` bytes gives: a line of more than
// line_size - 1 characters comes in pieces of that length, each a line of its own, and the text of
// a line ends at its first NUL byte. One trailing line feed is removed. On request, the places of a
// character in each line are told, which are found together with the ends of lines.
class LineReader {
  public:
    static constexpr size_t unlimited = static_cast<size_t>(-1);

    // Bytes that are read at a time. Tests set it, before any reader is made.
    static size_t block_size;

    // Bytes that are indexed at a time: so few that they are still in the first-level cache when
    // their lines are given out. Likewise set by tests.
    static size_t chunk_size;

    static constexpr char no_mark = '\n'; // which is in no line

    // Reads from `descriptor`, which stays the caller's. With `unlimited`, every line comes whole.
    // `mark` is the character whose places are told.
    LineReader(int descriptor, size_t line_size, char mark = no_mark);

    // Reads the lines that begin in `range`, whole, wherever in the file `descriptor` stands. The
    // ranges of a file together give each of its lines once.
    LineReader(int descriptor, size_t line_size, const FileRange& range, char mark = no_mark);

    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    // Gives the next line, which stays valid until the next call and may be written to; returns
    // false at the end of the file or when reading fails. Behind its terminator, room_behind_line
    // bytes may be read.
    bool next(LineText& line);

    // At the first mark of the line given last; who passes marks moves it on. Stays at its address.
    MarkCursor& marks() { return marks_; }

    // Of the line given last: whether a line feed ended it, and otherwise whether the file did.
    bool is_terminated() const { return is_terminated_; }
    bool is_last_rest() const { return !is_terminated_ && at_end_ && next_ == end_; }

    // Where in the file the line given last begins; with a range only.
    uint64_t offset_of(const LineText& line) const {
        return end_offset_ - static_cast<uint64_t>(end_ - line.text);
    }

    // Fails when reading has stopped before the end of the file.
    void require_whole(const char* file_name) const;

  private:
    using Places = std::unique_ptr<char*[]>;

    bool is_past_range() const;
    void skip_first_line();
    char* read_to_line_end();
    ssize_t read_block();
    bool read_more();
    void make_room();
    void move_marks(char* to);
    void index_more();
    void make_room_for_marks();
    void pass_marks();
    char* find_nul(char* from) const;
    size_t text_size(char* line_end);

    int descriptor_;
    char mark_;
    size_t max_piece_;
    bool has_range_ = false;
    FileRange range_ = {};
    uint64_t end_offset_ = 0; // in the file, of end_; kept with a range only
    size_t capacity_ = 0;
    char* buffer_ = nullptr;
    char* next_ = nullptr;     // first character not yet given out
    char* indexed_ = nullptr;  // end of what was indexed
    char* end_ = nullptr;      // end of what was read
    char* next_nul_ = nullptr; // the first NUL byte from next_ to indexed_, null when there is
                               // none; not known when before next_
    char* cut_ = nullptr;      // where a terminator stands in place of a character of the next line
    char cut_character_ = '\0';
    Places line_feeds_; // of the chunk indexed last, and null
    char** next_line_feed_;
    size_t mark_capacity_;
    Places mark_places_; // of what was indexed from next_ on, and indexed_
    char** marks_end_;
    MarkCursor marks_;
    bool at_end_ = false;
    bool is_terminated_ = true; // the line given last
    int error_ = 0;             // errno of a failed read
};
