#include "companions/doctor/init/unpacked_names.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace {

constexpr size_t max_name_length = 200; // so that the number of a second one fits behind it

char name_character(char c) {
    const bool is_fit = std::isalnum(static_cast<unsigned char>(c)) != 0 ||
                        std::string_view("._-+=@,~").find(c) != std::string_view::npos;
    return is_fit ? c : '-';
}

// What is too long loses its middle: the beginning tells servers apart, the end their rotated
// files.
std::string shortened(std::string_view text, size_t size) {
    const size_t kept = std::min(text.size(), size);
    const size_t kept_end = kept == text.size() ? 0 : kept / 2;
    return std::string(text.substr(0, kept - kept_end)) +
           std::string(text.substr(text.size() - kept_end));
}

std::string name_text(std::string_view text) {
    std::string name = shortened(text, max_name_length);
    std::ranges::transform(name, name.begin(), name_character);
    return name;
}

std::string_view without_ending(std::string_view name) {
    constexpr std::array endings = {".gz", ".bz2", ".xz", ".lzma", ".zst", ".lz4", ".lz", ".Z"};
    for (const std::string_view ending : endings) {
        if (name.size() > ending.size() && name.ends_with(ending)) {
            return name.substr(0, name.size() - ending.size());
        }
    }
    return name;
}

} // namespace

std::string folder_label(std::string_view folder) {
    std::string label;
    while (!folder.empty()) {
        const std::string_view part = folder.substr(0, folder.find('/'));
        folder.remove_prefix(std::min(part.size() + 1, folder.size()));
        if (!part.empty() && part != "." && part != "..") {
            label = join_labels(label, name_text(part));
        }
    }
    std::ranges::replace(label, '_', '-');
    return shortened(label, max_name_length / 2);
}

std::string archive_label(std::string_view path) {
    std::string_view name = without_ending(path.substr(path.find_last_of('/') + 1));
    for (const std::string_view ending : {".tar", ".tgz", ".tbz2", ".txz", ".zip", ".7z"}) {
        if (name.ends_with(ending)) {
            name.remove_suffix(ending.size());
            break;
        }
    }
    return folder_label(name);
}

std::string join_labels(std::string_view a, std::string_view b) {
    const std::string separator = a.empty() || b.empty() ? "" : "-";
    return std::string(a) + separator + std::string(b);
}

std::string distinct_part(const std::string& path, const std::set<std::string>& paths) {
    const std::string& first = *paths.begin();
    const std::string& last = *paths.rbegin(); // what these two share all share, as they are sorted
    const auto [end, ignored] = std::ranges::mismatch(first, last);
    size_t shared = static_cast<size_t>(end - first.begin());
    if (shared < first.size() || (shared < last.size() && last[shared] != '/')) {
        const size_t slash = first.rfind('/', shared == 0 ? 0 : shared - 1);
        shared = slash == std::string::npos ? 0 : slash + 1;
    }
    return path.substr(std::min(shared, path.size()));
}

std::string flat_name(std::string_view path, std::string_view label, bool is_packed) {
    std::string_view last = path.substr(path.find_last_of('/') + 1);
    last = is_packed ? without_ending(last) : last;
    std::string name = name_text(last);
    if (name.empty() || name.front() == '.') {
        name.insert(0, "log");
    }
    if (label.empty()) {
        return name;
    }
    const bool has_prefix = name.find('_') != std::string::npos;
    return shortened(shortened(label, max_name_length / 2 - 1) + (has_prefix ? "-" : "_") + name,
                     max_name_length);
}
