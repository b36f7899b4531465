#pragma once

#include <cstdint>

// Hashes by which hosts tell whether they have the same inputs. They are the same in all processes.

// Of samples of an open file's bytes, from its start to `size`: 16 blocks of 64 KB at even
// distances, the first and the last ones among them; of a smaller file all bytes. Fails, naming the
// file by `path`, when it cannot be read or is shorter.
uint64_t hash_log_samples(int descriptor, uint64_t size, const char* path);

// Of the offset from UTC of each day from 1970 to 2037 by the rules of the process's local time.
uint64_t hash_zone_rules();
