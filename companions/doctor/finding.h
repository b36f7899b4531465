#pragma once

#include <string>
#include <vector>

// Something about the inputs of a scenario that users should know.

enum class Severity {
    error,   // a run would fail, or give nothing
    warning, // a run gives something else than was most likely meant
    note     // good to know
};

struct Finding {
    std::string id; // a word for the kind of finding, as "unknown-keyword", by which programs go
    Severity severity;
    std::string file;    // path; empty: of no file
    int line = 0;        // from 1; 0: of the whole file
    std::string value;   // what the finding is about, as the file has it
    std::string meaning; // what a run makes of it
    std::string cure;    // what to do; empty: nothing has to be done
};

using Findings = std::vector<Finding>;
