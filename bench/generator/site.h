#pragma once

#include "bench/generator/generator_options.h"
#include "bench/generator/random_source.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// One of the words that URLs and the patterns for them are made of; any index has one.
std::string_view url_word(size_t index);
inline constexpr size_t url_word_count = 24;

// The host with this number: 0 is the one that most pages are on.
std::string_view host_name(size_t number);

struct SiteUrl {
    std::string path;
    std::string query; // without the question mark; empty when there is none
    std::string_view method;
    std::string_view host;
    std::string_view content_type;

    // Whether other requests may name it as their referer.
    bool is_page() const { return content_type.starts_with("text/html"); }
};

// The distinct URLs of a site, most popular first.
struct Site {
    explicit Site(const GeneratorOptions& options);

    std::vector<SiteUrl> urls;
    ZipfDistribution popularity; // of the indexes of urls
};

// A URL as one request writes it: an index of the site's URLs and the number that distinguishes
// this use from others where the shape of the log asks for it.
struct UrlUse {
    size_t index = 0;
    uint64_t number = 0;
};
