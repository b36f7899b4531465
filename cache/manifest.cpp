#include "cache/manifest.h"

#include "base/file_state.h"
#include "base/new_file.h"
#include "base/own_file.h"

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <sstream>
#include <string_view>

namespace {

constexpr std::string_view format_line = "zvr_al_gen_url_list cache manifest 2";
constexpr std::string_view directory_key = "config_directory ";
constexpr std::string_view loading_line = "[loading]";
constexpr std::string_view classification_line = "[classification]";
constexpr std::string_view results_line = "[results]";
constexpr std::string_view end_line = "[end]";
constexpr mode_t permissions = 0600; // it holds lines of inputs that others may not read
constexpr std::string_view sealed_key = "sealed "; // and the time of the file system; last line

constexpr size_t max_size = size_t{1} << 24;

// The next line, which must begin with `key`; gives what follows it.
bool next_value(std::istream& text, std::string_view key, std::string& value) {
    if (!std::getline(text, value) || !value.starts_with(key)) {
        return false;
    }
    value.erase(0, key.size());
    return true;
}

// The lines up to the one that ends the part.
bool next_part(std::istream& text, std::string_view part_end, std::string& part) {
    for (std::string line; std::getline(text, line);) {
        if (line == part_end) {
            return true;
        }
        part += line + "\n";
    }
    return false;
}

std::optional<Manifest> parse(std::istream& text) {
    Manifest manifest;
    std::string rest;
    const bool is_whole = next_value(text, format_line, rest) && rest.empty() &&
                          next_value(text, directory_key, manifest.config_directory) &&
                          next_value(text, loading_line, rest) &&
                          next_part(text, classification_line, manifest.loading) &&
                          next_part(text, results_line, manifest.classification) &&
                          next_part(text, end_line, manifest.results);
    return is_whole ? std::optional(manifest) : std::nullopt;
}

// The time at which the manifest was sealed, from what follows its end; nothing when it was not.
std::optional<int64_t> parse_seal(std::istream& text) {
    std::string value;
    int64_t time = 0;
    if (!next_value(text, sealed_key, value) || text.eof()) {
        return std::nullopt;
    }
    const char* end = value.data() + value.size();
    return std::from_chars(value.data(), end, time).ptr == end ? std::optional(time) : std::nullopt;
}

// Content and status of the file have changed together, and within the time that sealing takes.
bool is_untouched(const FileDescriptor& file, int64_t sealed) {
    constexpr int64_t sealing_time = 2'000'000'000;
    struct stat status;
    return fstat(file.get(), &status) == 0 &&
           nanoseconds(status.st_mtim) == nanoseconds(status.st_ctim) &&
           nanoseconds(status.st_ctim) - sealed <= sealing_time;
}

std::string text_of(const Manifest& manifest) {
    std::ostringstream text;
    text << format_line << '\n'
         << directory_key << manifest.config_directory << '\n'
         << loading_line << '\n'
         << manifest.loading << classification_line << '\n'
         << manifest.classification << results_line << '\n'
         << manifest.results << end_line << '\n';
    return text.str();
}

} // namespace

std::string log_line(const std::string& path, const std::string& state) {
    return "log " + path + " " + state + "\n";
}

std::string zone_line(int64_t zone) {
    return "replay zone " + std::to_string(zone) + "\n";
}

std::string result_line(const std::string& name, const std::string& state) {
    return name + " " + state + "\n";
}

bool has_line(const std::string& text, const std::string& line) {
    return ("\n" + text).find("\n" + line) != std::string::npos;
}

std::optional<Manifest> read_manifest(int directory) {
    const FileDescriptor file = open_own_file(directory, manifest_name);
    std::istringstream text(read_whole(file, max_size).value_or(""));
    std::optional<Manifest> manifest = parse(text);
    return text.peek() == std::istream::traits_type::eof() ? manifest : std::nullopt;
}

std::optional<Manifest> read_sealed_manifest(int directory, std::string& fault) {
    const FileDescriptor file = open_own_file(directory, manifest_name);
    if (!file.is_open()) {
        fault = errno == ENOENT
                    ? "no run is on record here that has ended well and left a list that can be "
                      "read back"
                    : "the record of the last run is no regular file of this user";
        return std::nullopt;
    }
    std::istringstream text(read_whole(file, max_size).value_or(""));
    std::optional<Manifest> manifest = parse(text);
    const std::optional<int64_t> sealed = parse_seal(text);
    if (!manifest || !sealed) {
        fault = "the record of the last run is not whole, or of another version";
        return std::nullopt;
    }
    if (!is_untouched(file, *sealed)) {
        fault = "the record of the last run was changed after that run";
        return std::nullopt;
    }
    return manifest;
}

bool write_manifest(int directory, const Manifest& manifest) {
    FileDescriptor file = create_new_file(directory, manifest_name, permissions);
    return file.is_open() && write_whole(file.get(), text_of(manifest)) && file.close();
}

bool write_sealed_manifest(int directory, const Manifest& manifest) {
    FileDescriptor file = create_new_file(directory, manifest_name, permissions);
    struct stat created;
    if (!file.is_open() || fstat(file.get(), &created) != 0) {
        return false;
    }
    const std::string seal =
        std::string(sealed_key) + std::to_string(nanoseconds(created.st_ctim)) + "\n";
    return write_whole(file.get(), text_of(manifest) + seal) && file.close();
}
