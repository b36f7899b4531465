#include "bench/generator/site.h"

#include "bench/generator/text_form.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array<std::string_view, url_word_count> url_words = {
    "garden", "kitchen", "lighting", "bathroom", "outdoor", "bedroom",  "office",    "storage",
    "chairs", "tables",  "lamps",    "carpets",  "curtain", "mirrors",  "shelves",   "textiles",
    "oak",    "walnut",  "steel",    "marble",   "cotton",  "ceramics", "wallpaper", "tools"};

constexpr std::string_view host_names[] = {
    "www.homestore.example.com",    "images.homestore.example.com",  "static.homestore.example.com",
    "api.homestore.example.com",    "m.homestore.example.com",       "www.homestore.example.org",
    "search.homestore.example.com", "checkout.homestore.example.com"};

constexpr std::string_view html = "text/html;charset=UTF-8";

constexpr const char* entry_pages[] = {
    "/",          "/index.html",    "/login.do",   "/logout.do",    "/favicon.ico",
    "/cart/view", "/account/start", "/robots.txt", "/health/check", "/search/start.jsp"};

struct Ending {
    const char* text;
    std::string_view content_type;
};

struct Server {
    size_t host;
    const char* method = "GET";
};

struct UrlKind {
    uint64_t share;              // among those of its table
    const char* form;            // %w a word, %i the item, %p a page below 20, %s a step below 4
    std::vector<Ending> endings; // each as frequent as the others
    Server server;
    uint64_t tenths = 10; // of the URLs are on that server, the rest on the other
    Server other = {};
};

using UrlKinds = std::vector<UrlKind>;

const UrlKinds plain_kinds = {
    {3,
     "/images/products/%w/%w-%i",
     {{"_large.jpg", "image/jpeg"}, {"_small.gif", "image/gif"}, {".png", "image/png"}},
     {1}},
    {1, "/static/%w/%w.%i", {{".css", "text/css"}, {".js", "text/javascript"}}, {2}},
    {1, "/api/v2/%w/%i/%w", {{"", "application/json"}}, {3, "POST"}, 3, {3}},
    {3, "/shop/%w/%w/%w-%i", {{".html", html}}, {0}, 8, {5}},
};

const UrlKinds query_kinds = {
    {1,
     "/search/results.do?q=%w+%w&page=%p&sort=price&direction=ascending&session_reference=%i",
     {{"", html}},
     {6}},
    {1, "/cart/update.do;step=%s?item=%i&quantity=1&colour=%w", {{"", html}}, {7, "POST"}},
    {2, "/shop/product/view.jsp?category=%w&item=%i&view=%w", {{"", html}}, {0}, 7, {4}},
};

const UrlKind& pick_kind(const UrlKinds& kinds, RandomSource& random) {
    uint64_t total = 0;
    for (const UrlKind& kind : kinds) {
        total += kind.share;
    }
    uint64_t draw = random.below(total);
    auto kind = kinds.begin();
    for (; draw >= kind->share; ++kind) {
        draw -= kind->share;
    }
    return *kind;
}

std::string open_part(char letter, size_t item, RandomSource& random) {
    switch (letter) {
    case 'w':
        return std::string(url_word(random.below(url_word_count)));
    case 'p':
        return std::to_string(random.below(20));
    case 's':
        return std::to_string(random.below(4));
    default:
        return std::to_string(item);
    }
}

SiteUrl describe(const std::string& text, const Server& server, std::string_view content_type) {
    const size_t mark = std::min(text.find('?'), text.size());
    return {text.substr(0, mark), text.substr(std::min(mark + 1, text.size())), server.method,
            host_name(server.host), content_type};
}

SiteUrl make_url(const UrlKind& kind, size_t item, RandomSource& random) {
    const size_t count = kind.endings.size();
    const Ending& ending = kind.endings[count == 1 ? 0 : random.below(count)];
    std::string text;
    append_form(text, kind.form, [&](char letter) { text += open_part(letter, item, random); });
    text += ending.text;
    const bool is_other = kind.tenths < 10 && random.below(10) >= kind.tenths;
    return describe(text, is_other ? kind.other : kind.server, ending.content_type);
}

// Every URL but the entry pages holds its own item number, which keeps them distinct.
std::vector<SiteUrl> make_urls(size_t count, uint64_t queries_per_thousand) {
    constexpr uint64_t seed = 20'251'006;
    constexpr size_t first_item = 10'000; // so that they all have five digits or more
    RandomSource random(seed);
    std::vector<SiteUrl> urls;
    for (size_t index = 0; index < count; ++index) {
        if (index < std::size(entry_pages)) {
            urls.push_back(describe(entry_pages[index], {0}, html));
            continue;
        }
        const bool has_query = random.chance(queries_per_thousand);
        const UrlKind& kind = pick_kind(has_query ? query_kinds : plain_kinds, random);
        urls.push_back(make_url(kind, first_item + index, random));
    }
    return urls;
}

} // namespace

std::string_view url_word(size_t index) {
    return url_words[index % url_word_count];
}

std::string_view host_name(size_t number) {
    return host_names[number];
}

Site::Site(const GeneratorOptions& options)
    : urls(make_urls(options.unique == 0 ? 20'000 : options.unique,
                     options.many_urls || options.cut_queries ? 700 : 250)),
      popularity(urls.size()) {}
