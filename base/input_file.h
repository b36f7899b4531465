#pragma once

#include "base/file_descriptor.h"

// Opens a file of the installation that decides what a run does, but for its logs, for reading,
// without waiting (see open_regular_file). Not open when there is none, when it may not be read, or
// when it is neither a regular file, nor a directory, which can then not be read, nor the null
// device, which stands for an empty file: a pipe would keep the run waiting for its writer, and
// some devices have no end.
FileDescriptor open_input_file(const char* path);

// Whether each path that this process opened so was in one state every time, or could not be opened
// any time. A file may be exchanged between its reading and its copying, as when a link on the way
// to it is made to lead elsewhere; then the copy does not tell what was read.
bool inputs_held_still();
