#pragma once

#include <filesystem>

// The tool's program on this host: beside this one, else on the command path. Empty when there is
// none.
std::filesystem::path find_tool();
