#pragma once

#include "base/file_descriptor.h"

#include <string>

// Opens a log for reading, or whatever stands in its place: without waiting for the writer of a
// pipe, and without making a terminal that of this process, which who holds its other end could
// interrupt then. Not open and errno set when that fails.
FileDescriptor open_log_at_once(const std::string& path);
