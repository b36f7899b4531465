#pragma once

#include <cstdint>
#include <fmt/core.h>
#include <string>

// A number with what it counts: "1 URL", "2 URLs".
inline std::string counted(uint64_t count, const char* noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}
