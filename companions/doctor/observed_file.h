#pragma once

#include "base/line_observer.h"

#include <functional>
#include <string>
#include <vector>

// What a reader of settings, patterns or a scenario tells of a file, line by line.

struct LineRemark {
    ObservedKind kind;
    std::string name; // keyword, field, end of the period or pattern type, as far as known
    std::string text;
};

struct ReadLine {
    int number;
    std::vector<LineRemark> remarks; // in the order in which they were made
    LineRemark outcome;
    std::string failure; // the error line with which a run would end here; empty: it would not

    bool has(ObservedKind kind) const;
};

// Reads a file by `read`, with every line handed to `use` once it has had its effect. Lines at
// which a run would fail are passed over. Returns the message of a failure of the whole file, with
// which a run would end; empty when there is none.
std::string read_observed(const std::function<void()>& read,
                          const std::function<void(const ReadLine&)>& use);
