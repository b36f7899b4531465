#pragma once

#include "companions/report/export/export_notes.h"
#include "companions/report/export/load_target.h"

#include <string>

// The targets that the results of the last run list.

struct TargetChoice {
    std::string base_url;    // without "/" at its end; empty: http:// and the logged host
    std::string transaction; // the only one; empty: all
};

// Calls `use` with the targets of all rows of url.list that are not filtered, in its order, a row
// whose query was cut off with each of its full URLs. Notes what can be no target. The scenario's
// inputs are read. Fails when a list or a body file is missing or the lists do not fit each other.
void for_each_listed_target(const TargetChoice& choice, ExportNotes& notes,
                            const std::function<void(LoadTarget&)>& use);
