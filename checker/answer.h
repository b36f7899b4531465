#pragma once

#include "cache/reuse.h"

#include <string>
#include <sys/types.h>

struct Answer {
    Reuse reuse;
    std::string reason;
};

// Answers the run with this process id, whose replay profile it names. When the run itself asks,
// leaves a manifest in its backup directory, makes its input cache directory, and takes out of that
// what describes the results that the run is about to replace.
Answer answer_run(const std::string& profile_argument, pid_t pid);
