#pragma once

#include <string>
#include <vector>

// The hosts that the last run has found, from its hosts.list in the configuration directory, in
// byte order; none when there is no such list or when it is too long to be read in passing.
std::vector<std::string> read_known_hosts(const std::string& config_directory);
