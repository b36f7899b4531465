#pragma once

#include "base/file_descriptor.h"

#include <sys/stat.h>

// Whether a file, link or directory is an "own" one: its owner is the process's effective user or
// root.
bool is_own(const struct stat& status);

// Opens an own regular file for reading, without following a link or waiting. Not open, with errno
// set, when there is none.
FileDescriptor open_own_file(int directory, const char* name);
