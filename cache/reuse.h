#pragma once

// What a run may use again of the last results. The values are the exit statuses by which the
// checker command tells the tool; with any other one, nothing may be used.
enum class Reuse : unsigned char {
    everything = 0,    // the results are those of this very run
    nothing = 1,       // the logs must be read
    complete_list = 2, // only classification must be done again
    refused = 255      // another run is at work on the same results
};
