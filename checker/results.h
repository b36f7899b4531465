#pragma once

#include "base/own_directory.h"
#include "checker/inputs.h"

#include <string>

// Why the results in the configuration directory are not, or may not be, those of the run that a
// sealed manifest describes, whole and untouched. Empty when they are.
std::string result_fault(const OwnDirectory& config_dir, const Manifest& cached,
                         const ExpectedResults& expected);

// The lines of that manifest for the results that a run takes over which only classifies anew.
std::string kept_results(const Manifest& cached, const ExpectedResults& expected);
