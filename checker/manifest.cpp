#include "checker/manifest.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <sstream>
#include <string_view>
#include <vector>

namespace {

constexpr std::string_view format_line = "zvr_al_gen_url_list cache manifest 1";
constexpr std::string_view directory_key = "config_directory ";
constexpr std::string_view created_key = "created ";
constexpr std::string_view loading_line = "[loading]";
constexpr std::string_view classification_line = "[classification]";
constexpr std::string_view kept_results_line = "[kept results]";
constexpr std::string_view end_line = "[end]";

// The next line, which must begin with `key`; gives what follows it.
bool next_value(std::istream& file, std::string_view key, std::string& value) {
    if (!std::getline(file, value) || !value.starts_with(key)) {
        return false;
    }
    value.erase(0, key.size());
    return true;
}

// The lines up to the one that ends the part.
bool next_part(std::istream& file, std::string_view part_end, std::string& part) {
    for (std::string line; std::getline(file, line);) {
        if (line == part_end) {
            return true;
        }
        part += line + "\n";
    }
    return false;
}

std::vector<std::string> sorted_lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

} // namespace

std::optional<Manifest> read_manifest(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    Manifest manifest;
    std::string rest;
    std::string created;
    const bool is_whole = next_value(file, format_line, rest) && rest.empty() &&
                          next_value(file, directory_key, manifest.config_directory) &&
                          next_value(file, created_key, created) &&
                          next_value(file, loading_line, rest) &&
                          next_part(file, classification_line, manifest.loading) &&
                          next_part(file, kept_results_line, manifest.classification) &&
                          next_part(file, end_line, manifest.kept_results);
    const char* created_end = created.data() + created.size();
    if (!is_whole ||
        std::from_chars(created.data(), created_end, manifest.created).ptr != created_end) {
        return std::nullopt;
    }
    return manifest;
}

bool write_manifest(const std::filesystem::path& path, const Manifest& manifest) {
    std::ofstream file;
    if (!std::filesystem::exists(std::filesystem::symlink_status(path))) {
        file.open(path, std::ios::binary);
    }
    file << format_line << '\n'
         << directory_key << manifest.config_directory << '\n'
         << created_key << manifest.created << '\n'
         << loading_line << '\n'
         << manifest.loading << classification_line << '\n'
         << manifest.classification << kept_results_line << '\n'
         << manifest.kept_results << end_line << '\n';
    file.close();
    return !file.fail();
}

std::string first_difference(const std::string& before, const std::string& now) {
    const std::vector<std::string> before_lines = sorted_lines(before);
    const std::vector<std::string> now_lines = sorted_lines(now);
    std::vector<std::string> differing;
    std::set_symmetric_difference(now_lines.begin(), now_lines.end(), before_lines.begin(),
                                  before_lines.end(), std::back_inserter(differing));
    return differing.empty() ? "" : differing[0];
}
