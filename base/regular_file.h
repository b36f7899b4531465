#pragma once

#include "base/file_descriptor.h"

// Opens a regular file for reading, or a directory, which can then not be read. Not open when there
// is none, when it is of another kind or may not be read, or when other processes keep leases on
// the files that this process opens for longer than most_lease_wait in all. Nothing of another kind
// is opened, whatever takes the file's place meanwhile: a pipe's writer would lose what it writes,
// and some devices act when they are opened. Without /proc, only what takes it in that very moment.
FileDescriptor open_regular_file(const char* path);

// Seconds. File servers give a lease up at once when somebody else opens the file; the system takes
// it from others much later.
constexpr int most_lease_wait = 2;
