#pragma once

#include "tools/patterns/pattern_program.h"

#include <cstddef>

// Whether one pattern takes all URLs that another one takes.

enum class Inclusion { all_taken, not_all_taken, not_decided };

// `budget`: how many pairs of states may still be looked at, of which this takes its share; nothing
// is decided once it is used up.
Inclusion compare_languages(const PatternProgram& taker, const PatternProgram& taken,
                            size_t& budget);
