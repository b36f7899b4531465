#pragma once

#include "base/line_index.h"
#include "base/line_text.h"

#include <string_view>
#include <vector>

// A copy of a line in the form in which LineReader gives lines, for whoever has one from elsewhere
// and hands it to what reads logs.
class MarkedLine {
  public:
    MarkedLine(std::string_view line, char mark)
        : bytes_(line.begin(), line.end()), places_(line.size() + line_index_slack + 1) {
        bytes_.resize(line.size() + 1 + room_behind_line);
        std::vector<char*> line_feeds(places_.size());
        LineIndexEnds ends = {line_feeds.data(), places_.data()};
        char* const end = bytes_.data() + line.size();
        index_lines(bytes_.data(), end, mark, ends);
        *ends.marks = end;
        marks_.next = places_.data();
    }
    MarkedLine(const MarkedLine&) = delete;
    MarkedLine& operator=(const MarkedLine&) = delete;

    LineText text() { return {bytes_.data(), bytes_.size() - 1 - room_behind_line}; }
    MarkCursor& marks() { return marks_; }

  private:
    std::vector<char> bytes_;
    std::vector<char*> places_;
    MarkCursor marks_;
};
