#pragma once

#include "companions/doctor/init/log_layout.h"

#include <vector>

// A layout that servers have when nobody has changed it, or that many give them.
struct KnownLayout {
    LogLayout layout;
    int line_fields; // that a line of this layout has
};

// Those whose fields stand in other places come first where they ask for more; of those that read
// the same, the one with more fields in a line.
std::vector<KnownLayout> known_layouts();
