#pragma once

#include "base/text_hash.h"

#include <cstddef>
#include <string_view>
#include <unordered_map>

struct TextHash {
    size_t operator()(std::string_view text) const { return hash_text(text); }
};

// By texts of logs, which nobody can choose so that they all meet in one place. The texts have to
// outlive it.
template <typename Value> using TextMap = std::unordered_map<std::string_view, Value, TextHash>;
