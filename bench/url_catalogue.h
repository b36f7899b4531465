#pragma once

#include "generator_options.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

// Words that URLs and the patterns for them are made of.
inline constexpr std::array<std::string_view, 24> url_words = {
    "garden", "kitchen", "lighting", "bathroom", "outdoor", "bedroom",  "office",    "storage",
    "chairs", "tables",  "lamps",    "carpets",  "curtain", "mirrors",  "shelves",   "textiles",
    "oak",    "walnut",  "steel",    "marble",   "cotton",  "ceramics", "wallpaper", "tools"};

inline constexpr std::array<std::string_view, 8> host_names = {
    "www.homestore.example.com",    "images.homestore.example.com",  "static.homestore.example.com",
    "api.homestore.example.com",    "m.homestore.example.com",       "www.homestore.example.org",
    "search.homestore.example.com", "checkout.homestore.example.com"};

inline constexpr std::array<std::string_view, 7> content_types = {
    "text/html;charset=UTF-8", "image/jpeg",      "image/gif", "image/png", "text/css",
    "text/javascript",         "application/json"};

struct CatalogueUrl {
    std::string_view method;
    std::string_view path;
    // Without the question mark; empty when the URL has no query.
    std::string_view query;
    std::string_view host;
    std::string_view content_type;
    // Number of '/' in the path.
    unsigned slashes = 0;
};

// The distinct URLs of a site, most popular first. The texts live as long as the catalogue.
class UrlCatalogue {
  public:
    explicit UrlCatalogue(const GeneratorOptions& options);
    UrlCatalogue(const UrlCatalogue&) = delete;
    UrlCatalogue& operator=(const UrlCatalogue&) = delete;

    std::size_t size() const { return urls_.size(); }
    const CatalogueUrl& operator[](std::size_t index) const { return urls_[index]; }

  private:
    std::vector<std::string> texts_;
    std::vector<CatalogueUrl> urls_;
};

} // namespace bench
