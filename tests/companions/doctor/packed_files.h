#pragma once

#include <string>
#include <vector>

// An entry of an archive that a test makes.
struct MadeEntry {
    std::string path;
    std::string contents = "";
    std::string link = "";      // a symbolic link to it
    std::string hard_link = ""; // a link to an entry before it
    bool is_pipe = false;
};

// Contents of a tar, with this filter ("", "gzip", "bzip2", "xz", "zstd"), or of a zip.
std::string made_tar(const std::vector<MadeEntry>& entries, const std::string& filter = "");
std::string made_zip(const std::vector<MadeEntry>& entries);

// A text compressed with a filter.
std::string compressed(const std::string& text, const std::string& filter);
