#pragma once

#include <cstdint>
#include <optional>
#include <string>

// The record of a run by which a later one knows whether it may use the results again. The checker
// writes it beside the copies of the run's inputs in the backup directory; a run that has come to
// its end adds the states in which it leaves its results, and writes it sealed into the input cache
// directory. A sealed manifest therefore always describes results that a run has completed.
//
// Each part is a text of lines, to be compared as a whole.
struct Manifest {
    std::string config_directory; // of the results
    std::string loading;          // everything that decides what complete_url.list holds
    std::string classification;   // everything else that decides what url.list holds
    std::string results;          // for each result a line of result_line; before the end of the
                                  // run only those that it takes over from the run before
};

// Name of the file in either directory.
constexpr const char* manifest_name = "cache_manifest.txt";

// The line for a log in this state (see state_text), by its absolute path, among what decides
// loading.
std::string log_line(const std::string& path, const std::string& state);

// The line for the zone of the replay, as get_timezone_from_default_setting gives it, among what
// decides loading.
std::string zone_line(int64_t zone);

// The line for a result in this state.
std::string result_line(const std::string& name, const std::string& state);

// Whether the text has this line, which ends in a line feed.
bool has_line(const std::string& text, const std::string& line);

// Reads the manifest that is not sealed yet from an open directory. Nothing when there is none, not
// the whole of one, or one of another format.
std::optional<Manifest> read_manifest(int directory);

// Reads the sealed one. Nothing when it cannot be believed, for instance as somebody has changed
// it, its mode or its owner since it was sealed; then `fault` says why.
std::optional<Manifest> read_sealed_manifest(int directory, std::string& fault);

// Create the file anew. They return false when they cannot; then no manifest can be read from it.
bool write_manifest(int directory, const Manifest& manifest);
bool write_sealed_manifest(int directory, const Manifest& manifest);
