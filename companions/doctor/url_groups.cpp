#include "companions/doctor/url_groups.h"

#include "tools/parse/counted_url.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <string_view>

namespace {

constexpr size_t many_paths = 8; // in one folder, with one extension

struct PathParts {
    std::string_view path;
    bool has_more; // the URL goes on behind its path
};

PathParts path_of(std::string_view url) {
    const auto separator = std::find_if(url.begin(), url.end(), is_query_separator);
    const auto size = static_cast<size_t>(separator - url.begin());
    return {url.substr(0, size), size != url.size()};
}

// The pattern of this path alone; patterns have a limited length.
std::string path_pattern(std::string_view path) {
    constexpr size_t longest_path = 500;
    return path.size() <= longest_path ? literal_pattern(path)
                                       : literal_pattern(path.substr(0, longest_path)) + "*";
}

// The pattern of all paths in the folder that end as this one does: "/img/*\.gif" for "/img/a.gif".
std::string folder_pattern(std::string_view path) {
    const size_t name = path.rfind('/') + 1; // 0 when there is no slash
    const size_t dot = path.rfind('.');
    const bool has_extension = dot != std::string_view::npos && dot > name;
    const std::string extension = has_extension ? path_pattern(path.substr(dot)) : "";
    return path_pattern(path.substr(0, name)) + "*" + extension;
}

struct Group {
    Hits hits;
    const UrlInfo* example = nullptr;
    bool has_more = false;

    void add(const UrlInfo& url, bool url_has_more) {
        hits.add(url);
        has_more = has_more || url_has_more;
        if (example == nullptr || example->count < url.count) {
            example = &url;
        }
    }
};

UrlGroup finished_group(const std::string& pattern, const Group& group) {
    const bool needs_star = group.has_more && !pattern.ends_with('*');
    return {pattern + (needs_star ? "*" : ""), group.hits, group.example};
}

std::map<std::string, size_t> count_paths_of_folders(std::span<const UrlInfo* const> urls) {
    std::map<std::string_view, int> paths;
    for (const UrlInfo* url : urls) {
        paths.emplace(path_of(url->url).path, 0);
    }
    std::map<std::string, size_t> counts;
    for (const auto& [path, unused] : paths) {
        ++counts[folder_pattern(path)];
    }
    return counts;
}

} // namespace

std::vector<UrlGroup> group_urls(std::span<const UrlInfo* const> urls) {
    const std::map<std::string, size_t> paths_of_folder = count_paths_of_folders(urls);
    std::map<std::string, Group> by_pattern;
    for (const UrlInfo* url : urls) {
        const PathParts parts = path_of(url->url);
        const std::string folder = folder_pattern(parts.path);
        const bool is_common = paths_of_folder.at(folder) >= many_paths;
        by_pattern[is_common ? folder : path_pattern(parts.path)].add(*url, parts.has_more);
    }
    std::vector<UrlGroup> groups;
    groups.reserve(by_pattern.size());
    for (const auto& [pattern, group] : by_pattern) {
        groups.push_back(finished_group(pattern, group));
    }
    std::stable_sort(groups.begin(), groups.end(), [](const UrlGroup& a, const UrlGroup& b) {
        return a.hits.requests > b.hits.requests;
    });
    return groups;
}

std::string literal_pattern(std::string_view text) {
    std::string pattern;
    for (const char c : text) {
        if (c == '*' || c == '|') {
            pattern += '.';
            continue;
        }
        if (std::strchr("\\.[]()+?{}^$", c) != nullptr) {
            pattern += '\\';
        }
        pattern += c;
    }
    return pattern;
}
