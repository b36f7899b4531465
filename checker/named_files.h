#pragma once

#include "base/file_descriptor.h"

#include <string>
#include <vector>

// Files that input files name, read as the tool reads them.

// Paths of the logs of a scenario, in its order. Returns false when it cannot be read.
bool read_scenario_logs(const FileDescriptor& scenario, std::vector<std::string>& logs);

// Post-data files of the active main patterns, each once, as the pattern file names them. Returns
// false when it cannot be read.
bool read_post_data_files(const FileDescriptor& patterns, std::vector<std::string>& files);
