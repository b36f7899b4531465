#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

// State of an input file (see state_text), taken so that every later change of the file gives
// another text: file times advance in steps, so the state of a file that was changed a moment ago
// is taken again a step later. "missing" for a file that does not exist. Nothing when the file
// keeps changing, and for what is no regular file, whose content a state does not tell.
std::optional<std::string> settled_file_state(const std::filesystem::path& path);

// Time of the last change of the file, of its content or its status; nothing when it cannot be had.
std::optional<int64_t> change_time(const std::filesystem::path& path);
