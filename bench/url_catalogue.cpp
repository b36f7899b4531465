#include "url_catalogue.h"

#include "random_source.h"

#include <algorithm>

namespace bench {

namespace {

constexpr std::uint64_t catalogue_seed = 20'251'006;
// Numbers in URLs begin here, so that they all have at least five digits.
constexpr std::size_t first_item = 10'000;

constexpr std::array<std::string_view, 10> entry_pages = {
    "/",          "/index.html",    "/login.do",   "/logout.do",    "/favicon.ico",
    "/cart/view", "/account/start", "/robots.txt", "/health/check", "/search/start.jsp"};

struct Draft {
    std::string text;
    std::size_t host = 0;
    std::size_t content_type = 0;
    std::string_view method = "GET";
};

std::string_view any_word(RandomSource& random) {
    return url_words[random.below(url_words.size())];
}

Draft make_page(RandomSource& random, const std::string& item) {
    Draft draft;
    draft.text.append("/shop/").append(any_word(random)).append("/").append(any_word(random));
    draft.text.append("/").append(any_word(random)).append("-").append(item).append(".html");
    draft.host = random.chance(800) ? 0 : 5;
    return draft;
}

Draft make_image(RandomSource& random, const std::string& item) {
    constexpr std::array<std::string_view, 3> endings = {"_large.jpg", "_small.gif", ".png"};
    const std::size_t kind = random.below(endings.size());
    Draft draft;
    draft.text.append("/images/products/").append(any_word(random)).append("/");
    draft.text.append(any_word(random)).append("-").append(item).append(endings[kind]);
    draft.host = 1;
    draft.content_type = 1 + kind;
    return draft;
}

Draft make_static_file(RandomSource& random, const std::string& item) {
    const bool style = random.chance(500);
    Draft draft;
    draft.text.append("/static/").append(any_word(random)).append("/").append(any_word(random));
    draft.text.append(".").append(item).append(style ? ".css" : ".js");
    draft.host = 2;
    draft.content_type = style ? 4 : 5;
    return draft;
}

Draft make_service_call(RandomSource& random, const std::string& item) {
    Draft draft;
    draft.text.append("/api/v2/").append(any_word(random)).append("/").append(item);
    draft.text.append("/").append(any_word(random));
    draft.host = 3;
    draft.content_type = 6;
    draft.method = random.chance(300) ? "POST" : "GET";
    return draft;
}

Draft make_product_view(RandomSource& random, const std::string& item) {
    Draft draft;
    draft.text.append("/shop/product/view.jsp?category=").append(any_word(random));
    draft.text.append("&item=").append(item).append("&view=").append(any_word(random));
    draft.host = random.chance(700) ? 0 : 4;
    return draft;
}

Draft make_search(RandomSource& random, const std::string& item) {
    Draft draft;
    draft.text.append("/search/results.do?q=").append(any_word(random)).append("+");
    draft.text.append(any_word(random)).append("&page=").append(std::to_string(random.below(20)));
    draft.text.append("&sort=price&direction=ascending&session_reference=").append(item);
    draft.host = 6;
    return draft;
}

Draft make_cart_update(RandomSource& random, const std::string& item) {
    Draft draft;
    draft.text.append("/cart/update.do;step=").append(std::to_string(random.below(4)));
    draft.text.append("?item=").append(item).append("&quantity=1&colour=").append(any_word(random));
    draft.host = 7;
    draft.method = "POST";
    return draft;
}

// Every URL but the entry pages holds its own item number, which keeps them distinct.
Draft make_url(RandomSource& random, std::size_t index, std::uint64_t queries_per_thousand) {
    if (index < entry_pages.size())
        return {std::string(entry_pages[index]), 0, 0, "GET"};
    const std::string item = std::to_string(first_item + index);
    if (random.chance(queries_per_thousand)) {
        switch (random.below(4)) {
        case 0:
            return make_search(random, item);
        case 1:
            return make_cart_update(random, item);
        default:
            return make_product_view(random, item);
        }
    }
    switch (random.below(8)) {
    case 0:
    case 1:
    case 2:
        return make_image(random, item);
    case 3:
        return make_static_file(random, item);
    case 4:
        return make_service_call(random, item);
    default:
        return make_page(random, item);
    }
}

CatalogueUrl describe(const Draft& draft, std::string_view text) {
    const std::size_t mark = std::min(text.find('?'), text.size());
    CatalogueUrl url;
    url.method = draft.method;
    url.path = text.substr(0, mark);
    url.query = mark < text.size() ? text.substr(mark + 1) : std::string_view();
    url.host = host_names[draft.host];
    url.content_type = content_types[draft.content_type];
    url.slashes = static_cast<unsigned>(std::count(url.path.begin(), url.path.end(), '/'));
    return url;
}

} // namespace

UrlCatalogue::UrlCatalogue(const GeneratorOptions& options) {
    RandomSource random(catalogue_seed);
    const std::size_t count = options.unique_urls;
    const std::uint64_t queries = options.many_urls || options.cut_queries ? 700 : 250;
    texts_.reserve(count);
    urls_.reserve(count);
    for (std::size_t index = 0; index < count; ++index) {
        Draft draft = make_url(random, index, queries);
        texts_.push_back(std::move(draft.text));
        urls_.push_back(describe(draft, texts_.back()));
    }
}

} // namespace bench
