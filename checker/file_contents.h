#pragma once

#include "base/file_descriptor.h"
#include "base/line_text.h"

#include <functional>
#include <optional>
#include <string>

// Size and a hash value of the content; nothing when the file cannot be read.
std::optional<std::string> file_digest(const FileDescriptor& file);

// Whether both files can be read and hold the same bytes.
bool have_same_bytes(const FileDescriptor& a, const FileDescriptor& b);

// Calls `take` for each line as a reader with a buffer of `line_size` bytes gives them. Returns
// false when the file cannot be read to its end.
bool read_lines(const FileDescriptor& file, size_t line_size,
                const std::function<void(LineText)>& take);
