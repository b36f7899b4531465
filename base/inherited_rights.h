#pragma once

#include <sys/types.h>

// What a directory passes on to the files and directories that are made in it, an access control
// list or a group, is for its owner to say, who could let others write into a result while a run
// does. So it is taken back.

// Gives a file that has just been made, and that so far only its owner may open, the process's
// group and `permissions` less the mask that the process was started with. Where the file cannot
// lose its list or group, the group, and with it everybody whom the list names, gets no permission.
// A file system that keeps no permissions has its own for all files.
void set_rights(int file, mode_t permissions);

// Takes back the list that a directory passes on. Returns false, with errno set, when it cannot.
bool pass_no_rights_on(int directory);
