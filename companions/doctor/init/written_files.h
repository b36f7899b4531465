#pragma once

#include "base/own_directory.h"

#include <string>
#include <string_view>

// Files and directories that the doctor makes, as carefully as the tool makes its results: where
// others may write, nothing of theirs is followed (see base/own_directory.h), and what cannot be
// written whole is taken away again. All fail with what the system says.

// Makes the directories of an absolute path, as far as they are not there, with permission 0777
// less the mask, and opens the last one.
OwnDirectory make_directories(const std::string& path);

// Whether anything stands under the name.
bool is_taken(const OwnDirectory& directory, const std::string& name);

// Writes a file anew, with permission 0666 less the mask.
void write_file(const OwnDirectory& directory, const std::string& name, std::string_view text);
