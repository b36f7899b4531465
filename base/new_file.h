#pragma once

#include "base/file_descriptor.h"

#include <sys/types.h>

// Removes what stands under `name` in an open directory and creates a file there for reading and
// writing, with the process's group and `permissions` less the mask that the process was started
// with, whatever the directory passes on (see set_rights). What another user plants under the name
// in the meantime is removed, too; nothing is followed or waited for. Where the old file cannot be
// removed, it is emptied and used instead, if it is a regular file of the effective user's with no
// other name. Not open when neither can be done.
FileDescriptor create_new_file(int directory, const char* name, mode_t permissions);

// Removes what stands under `name` in an open directory, if anything does. Where it cannot be
// removed, it is emptied instead under the same conditions. Returns false when neither can be done.
bool clear_file(int directory, const char* name);
