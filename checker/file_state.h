#pragma once

#include "base/file_descriptor.h"
#include "tools/parse/field_splitter.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

// Telling whether files are what they were.

// State of an input file (see state_text), taken so that every later change of the file gives
// another text: file times advance in steps, so the state of a file that was changed a moment ago
// is taken again a step later. "missing" for a file that does not exist. Nothing when the file
// keeps changing, and for what is no regular file, whose content a state does not tell.
std::optional<std::string> settled_file_state(const std::filesystem::path& path);

// Time of the last change of the file, of its content or its status; nothing when it cannot be had.
std::optional<int64_t> change_time(const std::filesystem::path& path);

// Size and a hash value of the content; nothing when the file cannot be read.
std::optional<std::string> file_digest(const FileDescriptor& file);

// Whether both files can be read and hold the same bytes.
bool have_same_bytes(const FileDescriptor& a, const FileDescriptor& b);

// Calls `take` for each line as a reader with a buffer of `line_size` bytes gives them. Returns
// false when the file cannot be read to its end.
bool read_lines(const FileDescriptor& file, size_t line_size,
                const std::function<void(LineText)>& take);
