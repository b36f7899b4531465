#pragma once

#include "base/file_descriptor.h"

// An empty file without a name, open for reading and writing, for what does not fit in memory: in
// the directory that the environment names in TMPDIR, or else in /tmp. It is gone once it is
// closed. Fails when none can be made.
FileDescriptor open_spill_file();
