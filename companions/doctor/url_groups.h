#pragma once

#include "companions/doctor/pattern_use.h"

#include <span>
#include <string>
#include <vector>

// URLs that belong together by their paths, and patterns that take them.

struct UrlGroup {
    std::string pattern; // takes all URLs of the group
    Hits hits;
    const UrlInfo* example = nullptr; // the one with most requests
};

// Groups by the path before the query, and paths in one folder with one extension together once
// there are many of them. Most requests first.
std::vector<UrlGroup> group_urls(std::span<const UrlInfo* const> urls);

// The pattern that takes this text and no other, as far as patterns can say it: '*' and '|' have no
// spelling of their own in a pattern file, and are asked for as any character.
std::string literal_pattern(std::string_view text);
