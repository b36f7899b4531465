#pragma once

#include <cstdint>
#include <functional>
#include <string>

// A request that is to be made, and how often.
struct LoadTarget {
    std::string method;      // as logged: letters, digits and what else a method may be made of
    std::string url;         // where to send it: absolute; or a path, where no host is known
    std::string host;        // for header Host; empty: none is known
    std::string transaction; // empty: none
    std::string body_file;   // path; empty: none
    uint64_t count = 0;      // requests
};

using TargetUse = std::function<void(const LoadTarget&)>;

// Calls what it is given with each target, one after the other, so that none is kept. Once.
using Targets = std::function<void(const TargetUse& use)>;
