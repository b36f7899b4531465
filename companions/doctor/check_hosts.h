#pragma once

#include "companions/doctor/finding.h"

#include <string>
#include <vector>

// Patterns for hosts that the logs do not have.

struct HostOfPattern {
    std::string file;
    int line;
    std::string host;
};

// The hosts of the logs, as far as they are known.
struct KnownHosts {
    std::vector<std::string> hosts = {}; // in byte order; empty: none is known
    bool are_all = true;                 // none further can occur
    bool are_of_last_run = false;        // else of samples
};

// Those of the last run, from its hosts.list in the configuration directory, unless there is no
// such list or it is too long to be read in passing; else those of the samples.
KnownHosts choose_known_hosts(const std::string& config_directory, KnownHosts sampled);

// Adds which of the patterns' hosts are none of the known ones.
void check_hosts(Findings& findings, const std::vector<HostOfPattern>& hosts,
                 const KnownHosts& known);
