#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

// What is in a packed file, one after the other.
struct PackedEntry {
    std::string path;        // in the archive; empty in a compressed file, which has one entry
    bool is_regular = false; // no link, device or folder, and not encrypted

    // Gives the next part of the contents; empty at their end. Fails when the file is damaged.
    std::function<std::string_view()> read;
};

// Reads a compressed file or an archive from an open file, which stays the caller's, and calls for
// each entry. Returns why it could not be read to its end; empty when it could. What `handle`
// throws goes through.
std::string read_packed_file(int descriptor,
                             const std::function<void(const PackedEntry& entry)>& handle);
