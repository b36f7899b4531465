#pragma once

#include <string>
#include <sys/types.h>

// What a run may use again of the last results.
enum class Reuse : unsigned char {
    everything = 0,    // the results are those of this very run
    nothing = 1,       // the logs must be read
    complete_list = 2, // only classification must be done again
    refused = 255      // another run is at work on the same results
};

struct Answer {
    Reuse reuse;
    std::string reason;
};

// Answers the run with this process id, whose replay profile it names. When the run itself asks,
// leaves a manifest in its backup directory, makes its input cache directory, and takes out of that
// what describes the results that the run is about to replace.
Answer answer_run(const std::string& profile_argument, pid_t pid);
