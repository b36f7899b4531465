#pragma once

#include "tools/patterns/position_sets.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_set>
#include <vector>

// Whether a pattern covers a whole URL, in a time that grows with the length of the URL only.
//
// The described rule asks for the leftmost match and the longest of those that start there, and
// takes the URL when that match starts at 0 and ends at the URL's length. It does so exactly when
// some way through the pattern consumes the whole URL: that way is then a match at 0, so the
// leftmost match starts at 0, and no match is longer than the URL; and a match that covers the URL
// is such a way. Which group matches what does not matter, as long as no back-reference asks for
// it.
//
// The states of a deterministic automaton, sets of positions, are made as URLs ask for them. When
// they have taken up their memory, what is left of a URL is read with one set after the other, of
// which none is kept.
class PatternAutomaton {
  public:
    // `memory_bound`: greatest size in bytes of the states, and as much again for the tables that
    // find them; beyond it, URLs cost more time.
    PatternAutomaton(PatternProgram program, size_t memory_bound);
    PatternAutomaton(const PatternAutomaton&) = delete;
    PatternAutomaton& operator=(const PatternAutomaton&) = delete;

    // Not for several threads: each has an automaton of its own.
    bool covers(std::string_view url);

  private:
    // A row holds the row that each class of bytes leads to, and whether the URL may end there.
    using Row = uint32_t; // index into rows_

    struct SetHash {
        const PatternAutomaton* automaton;
        size_t operator()(Row row) const;
    };
    struct SameSet {
        const PatternAutomaton* automaton;
        bool operator()(Row a, Row b) const;
    };

    const PositionWord* set_of(Row row) const;
    uint8_t class_of(char c) const { return program_.class_of_byte[static_cast<unsigned char>(c)]; }
    Row full_row() const { return static_cast<Row>(row_size_); } // any rest is taken
    Row start_row() const { return static_cast<Row>(2 * row_size_); }
    bool has_room_for_row() const { return rows_.size() < max_rows_ * row_size_; }
    void add_row(const std::vector<PositionWord>& set, Row to);
    Row find_next(Row row, uint8_t byte_class);
    bool simulate(Row row, std::string_view rest);

    const PatternProgram program_;
    PositionSteps steps_;
    size_t row_size_;
    size_t max_rows_;
    std::vector<Row> rows_;
    std::vector<PositionWord> sets_;    // of each row
    std::vector<PositionWord> new_set_; // the one at work
    std::unordered_set<Row, SetHash, SameSet> row_of_set_;
};
