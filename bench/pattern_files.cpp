#include "pattern_files.h"

#include "url_catalogue.h"

#include <vector>

namespace bench {

namespace {

enum class Kind { filter, inline_object, main, main_without_transaction };

struct Pattern {
    Kind kind;
    std::string text;
    std::string_view method = "NA";
    std::string_view host = "NA";
};

using Patterns = std::vector<Pattern>;

std::string word(std::size_t index) {
    return std::string(url_words[index % url_words.size()]);
}

void add_filters(Patterns& patterns) {
    for (const char* literal : {"/favicon.ico", "/robots.txt", "/health/check", "/crossdomain.xml"})
        patterns.push_back({Kind::filter, literal});
    for (const char* wildcard : {"/admin/*", "/internal/*/status", "*.swf", "*.ico", "*/probe/*"})
        patterns.push_back({Kind::filter, wildcard});
    for (std::size_t index = 0; index < 9; ++index)
        patterns.push_back({Kind::filter, "/static/" + word(index) + "/legacy-*"});
    patterns.push_back({Kind::filter, "/monitor/[a-z]+/[0-9]+"});
    patterns.push_back({Kind::filter, "/(probe/)?v[0-9]/.+", "GET"});
}

void add_inline_objects(Patterns& patterns) {
    for (std::size_t index = 0; index < 24; ++index)
        patterns.push_back({Kind::inline_object, "/images/products/" + word(index) + "/*.jpg"});
    for (std::size_t index = 0; index < 24; ++index)
        patterns.push_back({Kind::inline_object, "/static/" + word(index) + "/*.css"});
    for (std::size_t index = 0; index < 6; ++index)
        patterns.push_back({Kind::inline_object, "/images/banner/" + word(index) + ".png"});
    patterns.push_back({Kind::inline_object, "/static/[a-z]+/[a-z]+\\.[0-9]+\\.js"});
    patterns.push_back(
        {Kind::inline_object, "/images/products/[a-m][a-z]+/[a-z]+-[0-9]+_small\\.gif"});
    patterns.push_back(
        {Kind::inline_object, "/images/products/[n-z][a-z]+/[a-z]+-[0-9]+_small\\.gif"});
    patterns.push_back({Kind::inline_object, "/images/(large/)?[a-z]+/.+\\.png"});
    patterns.push_back({Kind::inline_object, "/fonts/[a-z]+\\.woff2?"});
    patterns.push_back({Kind::inline_object, "/media/[0-9]{4}/[0-9]{2}/.+"});
}

void add_main_pages(Patterns& patterns) {
    for (std::size_t index = 0; index < 24; ++index)
        patterns.push_back({Kind::main, "/shop/" + word(index) + "/" + word(index + 1) + "/*"});
    for (std::size_t index = 0; index < 24; ++index)
        patterns.push_back(
            {Kind::main, "/shop/" + word(index) + "/*" + word(index + 8) + "-*.html"});
    for (const char* literal : {"/", "/index.html", "/login.do", "/logout.do", "/account/start"})
        patterns.push_back({Kind::main, literal});
    // Entries with one text and different methods share the test of the text.
    for (const char* method : {"GET", "POST", "NA"})
        patterns.push_back({Kind::main, "/cart/view", method});
    for (std::size_t index = 0; index < 14; ++index)
        patterns.push_back(
            {Kind::main, "/shop/" + word(index) + "/index.html", "GET", host_names[0]});
    for (std::size_t index = 0; index < 6; ++index)
        patterns.push_back({Kind::main, "/api/v[0-9]+/" + word(index) + "/[0-9]+/[a-z]+", "POST"});
    patterns.push_back({Kind::main, "/cart/update\\.do;step=[0-9]\\?item=[0-9]+.+", "POST"});
    patterns.push_back({Kind::main, "/shop/product/view\\.jsp\\?category=[a-k][a-z]+&.+"});
    patterns.push_back({Kind::main, "/search/results\\.do\\?q=[a-z]+\\+[a-z]+&page=[0-9]&.+"});
    patterns.push_back({Kind::main, "/shop/[l-o][a-z]+/[a-z]+/[a-z]+-[0-9]+\\.html"});
}

void add_main_pages_without_transaction(Patterns& patterns) {
    for (std::size_t index = 0; index < 24; ++index)
        patterns.push_back({Kind::main_without_transaction, "/api/v2/" + word(index) + "/*"});
    for (std::size_t index = 0; index < 14; ++index)
        patterns.push_back({Kind::main_without_transaction, "/help/" + word(index) + ".html"});
    patterns.push_back(
        {Kind::main_without_transaction, "/shop/[p-z][a-z]+/[a-z]+/.+-[0-9]+\\.html"});
    patterns.push_back({Kind::main_without_transaction, "/shop/product/view\\.jsp\\?.+"});
}

Patterns mixed_patterns() {
    Patterns patterns;
    add_filters(patterns);
    add_inline_objects(patterns);
    add_main_pages(patterns);
    add_main_pages_without_transaction(patterns);
    return patterns;
}

Kind kind_of(std::size_t index) {
    if (index % 20 == 19)
        return Kind::filter;
    switch (index % 4) {
    case 0:
        return Kind::inline_object;
    case 1:
        return Kind::main_without_transaction;
    default:
        return Kind::main;
    }
}

// The first 24 fit the images of one directory each; of the others most fit no URL.
std::string wildcard_text(std::size_t index) {
    const std::string number = std::to_string(index);
    if (index < url_words.size())
        return "/images/products/" + word(index) + "/*";
    switch (index % 5) {
    case 0:
        return "/shop/" + word(index) + "/*/" + word(index / 5) + "-" + number + "/*.html";
    case 1:
        return "*/" + word(index) + "-" + number + "_thumb.jpg";
    case 2:
        return "/api/v2/" + word(index) + "/" + number + "/*";
    case 3:
        return "/static/" + word(index) + "/*." + number + ".css";
    default:
        return "/shop/product/view.jsp*item=" + number + "&*";
    }
}

Patterns all_patterns(const GeneratorOptions& options) {
    if (options.wildcard_patterns == 0)
        return mixed_patterns();
    Patterns patterns;
    for (std::size_t index = 0; index < options.wildcard_patterns; ++index)
        patterns.push_back({kind_of(index), wildcard_text(index)});
    return patterns;
}

std::string_view type_name(Kind kind) {
    switch (kind) {
    case Kind::inline_object:
        return "inline";
    case Kind::main:
        return "main";
    default:
        return "MAIN_WITHOUT_TX";
    }
}

} // namespace

std::string url_patterns(const GeneratorOptions& options) {
    std::string text = "status|type|method|group|transaction|host|port|post data|pattern\n";
    std::size_t transaction = 0;
    for (const Pattern& pattern : all_patterns(options)) {
        if (pattern.kind == Kind::filter)
            continue;
        text.append("active|").append(type_name(pattern.kind)).append("|").append(pattern.method);
        text.append("|NA|transaction_").append(std::to_string(++transaction));
        text.append("|").append(pattern.host).append("|NA|");
        const bool posts = pattern.kind == Kind::main && pattern.method == "POST";
        text.append(posts ? order_data_file : "NA").append("|").append(pattern.text).append("\n");
    }
    return text;
}

std::string filter_patterns(const GeneratorOptions& options) {
    std::string text = "status|method|group|host|pattern\n";
    for (const Pattern& pattern : all_patterns(options)) {
        if (pattern.kind != Kind::filter)
            continue;
        text.append("active|").append(pattern.method).append("|NA|").append(pattern.host);
        text.append("|").append(pattern.text).append("\n");
    }
    return text;
}

} // namespace bench
