#include "tools/patterns/pattern_automaton.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

namespace {

constexpr uint32_t unknown = std::numeric_limits<uint32_t>::max();
constexpr uint32_t dead_row = 0; // no way through the pattern is left

constexpr size_t bytes_in_set = 40; // that std::unordered_set takes for a row, about

} // namespace

PatternAutomaton::PatternAutomaton(PatternProgram program, size_t memory_bound)
    : program_(std::move(program)), steps_(program_, memory_bound),
      row_size_(program_.class_count + 1),
      max_rows_(memory_bound / (row_size_ * sizeof(Row) +
                                steps_.words_per_set() * sizeof(PositionWord) + bytes_in_set)),
      new_set_(steps_.words_per_set()), row_of_set_(0, SetHash{this}, SameSet{this}) {
    add_row(new_set_, dead_row);
    add_row(new_set_, full_row());
    steps_.make_start(new_set_.data());
    add_row(new_set_, unknown);
}

bool PatternAutomaton::covers(std::string_view url) {
    Row row = start_row();
    for (size_t i = 0; i < url.size(); ++i) {
        Row next = rows_[row + class_of(url[i])];
        if (next == unknown) {
            next = find_next(row, class_of(url[i]));
            if (next == unknown) {
                return simulate(row, url.substr(i));
            }
        }
        if (next <= full_row()) {
            return next == full_row();
        }
        row = next;
    }
    return rows_[row + program_.class_count] != 0;
}

// Adds a row for the set whose bytes all lead to the same.
void PatternAutomaton::add_row(const std::vector<PositionWord>& set, Row to) {
    sets_.insert(sets_.end(), set.begin(), set.end());
    rows_.insert(rows_.end(), program_.class_count, to);
    rows_.push_back(steps_.may_finish(set.data()) ? 1 : 0);
}

// Where a row leads by a byte that it has not been asked for yet; unknown when there is no memory
// left for that.
PatternAutomaton::Row PatternAutomaton::find_next(Row row, uint8_t byte_class) {
    std::vector<PositionWord>& set = new_set_;
    if (!steps_.step(set_of(row), byte_class, set.data())) {
        return rows_[row + byte_class] = dead_row;
    }
    if (steps_.takes_any_rest(set.data())) {
        return rows_[row + byte_class] = full_row();
    }
    const bool has_room = has_room_for_row();
    const auto new_row = static_cast<Row>(rows_.size());
    add_row(set, unknown);
    // Sets are compared where they are kept, so the new one is there before it is known to be new.
    const auto found = row_of_set_.find(new_row);
    if (found != row_of_set_.end() || !has_room) {
        rows_.resize(new_row);
        sets_.resize(sets_.size() - set.size());
        return found == row_of_set_.end() ? unknown : rows_[row + byte_class] = *found;
    }
    row_of_set_.insert(new_row);
    return rows_[row + byte_class] = new_row;
}

bool PatternAutomaton::simulate(Row row, std::string_view rest) {
    const PositionWord* start = set_of(row);
    std::vector<PositionWord> set(start, start + steps_.words_per_set());
    std::vector<PositionWord> next(set.size());
    for (const char c : rest) {
        if (!steps_.step(set.data(), class_of(c), next.data())) {
            return false;
        }
        set.swap(next);
    }
    return steps_.may_finish(set.data());
}

const PositionWord* PatternAutomaton::set_of(Row row) const {
    return &sets_[row / row_size_ * steps_.words_per_set()];
}

size_t PatternAutomaton::SetHash::operator()(Row row) const {
    const auto* set = reinterpret_cast<const char*>(automaton->set_of(row));
    return std::hash<std::string_view>()(
        {set, automaton->steps_.words_per_set() * sizeof(PositionWord)});
}

bool PatternAutomaton::SameSet::operator()(Row a, Row b) const {
    const PositionWord* set = automaton->set_of(a);
    return std::equal(set, set + automaton->steps_.words_per_set(), automaton->set_of(b));
}
