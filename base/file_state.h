#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <sys/stat.h>

// A time of a file in nanoseconds since the epoch.
int64_t nanoseconds(const timespec& time);

// What tells whether a file is what it was: its size, the times of the last change of its content
// and of its status, its inode and the device that has it, as one text without line feed.
std::string state_text(const struct stat& status);

// That of an open file; nothing when it cannot be had.
std::optional<std::string> file_state(int descriptor);
