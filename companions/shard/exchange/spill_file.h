#pragma once

#include "base/file_descriptor.h"

#include <string>

// The directory for what does not fit in memory: that which the environment names in TMPDIR, or
// else /tmp.
std::string spill_directory();

// An empty file without a name in that directory, open for reading and writing. It is gone once it
// is closed. Fails when none can be made.
FileDescriptor open_spill_file();
