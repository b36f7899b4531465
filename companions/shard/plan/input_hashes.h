#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Hashes of the content of the four input files, in the order of input_names, and that of
// sys/replay_settings.default; 0 for one that does not exist. `settings` gets the content of the
// settings file. The same in all processes. Fails when one of them cannot be read.
std::vector<uint64_t> hash_inputs(std::string& settings);
