#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

// What a run found when it started, written beside the copies of its inputs in the backup
// directory. A run that has come to its end copies it into the input cache directory, so that the
// one there always describes the run whose results stand in the configuration directory.
//
// Each part is a text of lines, to be compared as a whole.
struct Manifest {
    std::string config_directory; // of the results
    int64_t created = 0;          // time on the clock of the files, nanoseconds since the epoch
    std::string loading;          // everything that decides what complete_url.list holds
    std::string classification;   // everything else that decides what url.list holds
    std::string kept_results;     // results that the run takes over from the run before, if any
};

// Names of the files in the backup and input cache directories.
constexpr const char* manifest_name = "cache_manifest.txt";
constexpr const char* answer_name = "cache_answer.txt"; // the last answer with its reason

// Nothing when there is no manifest of this format or not the whole of one.
std::optional<Manifest> read_manifest(const std::filesystem::path& path);

// Creates the file; returns false, and leaves nothing whole, when that fails or it exists.
bool write_manifest(const std::filesystem::path& path, const Manifest& manifest);

// The first line that stands in only one of two texts; empty when there is none.
std::string first_difference(const std::string& before, const std::string& now);
