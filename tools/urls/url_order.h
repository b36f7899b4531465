#pragma once

#include "tools/parse/url_key.h"
#include "tools/urls/text_sort.h"

#include <cstdint>
#include <functional>
#include <vector>

// The order of unique URLs: by URL, method and host, each byte-wise.

bool stands_before(const UrlKey& a, const UrlKey& b);

// Brings unique URLs into that order. `urls`: the URL of each, as far as it counts, with the number
// by which `key_of` gives its key.
void sort_unique_urls(std::vector<SortableText>& urls,
                      const std::function<UrlKey(uint32_t number)>& key_of);
