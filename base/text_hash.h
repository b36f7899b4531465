#pragma once

#include <cstdint>
#include <string_view>

// Hash of a text, or of all texts when it goes on from the hash of those `before`. Different in
// every process, so that nobody can write texts into a log that all meet in one place of a table;
// nothing that a run gives out depends on it.
uint64_t hash_text(std::string_view text, uint64_t before = 0);
