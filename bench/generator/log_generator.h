#pragma once

#include "bench/generator/site.h"

#include <cstdint>
#include <filesystem>
#include <vector>

// What the part with this number gets of `total` when it is shared out evenly.
uint64_t share(uint64_t total, uint64_t parts, uint64_t part);

// Writes the log files of one instance (a web server) one after the other, with its share of the
// lines: visitors come, make about 20 requests each among those of the others, and leave. Throws
// std::ios::failure.
void write_instance(const GeneratorOptions& options, const Site& site, uint64_t instance,
                    const std::vector<std::filesystem::path>& files);
