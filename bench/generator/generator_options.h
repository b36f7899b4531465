#pragma once

#include <cstdint>
#include <string>

// What to generate. The command line sets them before anything else happens; its table of options
// says what each of them means.
struct GeneratorOptions {
    std::string directory;
    uint64_t lines = 250'000;
    uint64_t instances = 4;
    uint64_t files = 0; // 0: one for each instance
    bool iis = false;
    bool client_address = false;
    bool many_urls = false;
    bool cut_queries = false;
    uint64_t unique = 0;   // 0: a usual number of URLs, not all of them asked for
    uint64_t patterns = 0; // 0: the mixed ones
    bool waiting = false;
    bool one_session = false;
    bool session_per_request = false;
    bool one_url = false;
    bool url_per_request = false;
    bool long_urls = false;
};
