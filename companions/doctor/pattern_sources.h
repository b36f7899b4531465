#pragma once

#include "base/line_observer.h"
#include "tools/patterns/pattern_tables.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

// Where in the pattern files the entries of the pattern tables stand, which the tables do not say.

struct PatternSource {
    std::string file; // path as the reader was given it
    int line_num = 0; // from 1
};

class PatternSources {
  public:
    // To be told of each line that the readers of pattern files tell the line observer of, when
    // the table holds what it says.
    void note(const ObservedLine& line);

    // Brings what was noted into the order of the tables; after sort_pattern_tables.
    void sort();

    const PatternSource& of(PatternKind kind, int32_t index) const {
        return taken_[kind][static_cast<size_t>(index)].source;
    }

  private:
    struct Taken {
        std::string pattern;
        PatternSource source;
    };
    std::array<std::vector<Taken>, pattern_kind_count> taken_;
};
