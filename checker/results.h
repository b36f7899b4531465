#pragma once

#include "checker/inputs.h"

#include <filesystem>
#include <string>

// Why the results in the configuration directory are not, or may not be, those of the run that a
// manifest in the input cache directory describes, whole and untouched. Empty when they are.
std::string result_fault(const RunPlace& place, const Manifest& cached,
                         const ExpectedResults& expected);

// The lines of a manifest for the results that a run takes over which only classifies anew. Empty
// when they cannot be told.
std::string describe_kept_results(const RunPlace& place, const ExpectedResults& expected);
