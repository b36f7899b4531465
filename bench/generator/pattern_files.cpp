#include "bench/generator/pattern_files.h"

#include "bench/generator/site.h"
#include "bench/generator/text_form.h"

#include <iterator>
#include <string_view>

namespace {

// Types as the file writes them; filters go to a file of their own.
constexpr std::string_view filter = "filter";
constexpr std::string_view inline_object = "inline";
constexpr std::string_view main_page = "main";
constexpr std::string_view without_transaction = "MAIN_WITHOUT_TX";

// A row stands for `count` patterns with the indexes 0, 1, ... In the form, %i is the index, %0 to
// %9 is the word so many places behind it, and %d the word that changes with every fifth index.
struct PatternRow {
    std::string_view type;
    size_t count;
    const char* form;
    std::string_view method = "NA";
    std::string_view host = "NA";
};

const PatternRow mixed_rows[] = {
    {filter, 1, "/favicon.ico"},
    {filter, 1, "/robots.txt"},
    {filter, 1, "/health/check"},
    {filter, 1, "/crossdomain.xml"},
    {filter, 1, "/admin/*"},
    {filter, 1, "/internal/*/status"},
    {filter, 1, "*.swf"},
    {filter, 1, "*.ico"},
    {filter, 1, "*/probe/*"},
    {filter, 9, "/static/%0/legacy-*"},
    {filter, 1, "/monitor/[a-z]+/[0-9]+"},
    {filter, 1, "/(probe/)?v[0-9]/.+", "GET"},
    {inline_object, 24, "/images/products/%0/*.jpg"},
    {inline_object, 24, "/static/%0/*.css"},
    {inline_object, 6, "/images/banner/%0.png"},
    {inline_object, 1, "/static/[a-z]+/[a-z]+\\.[0-9]+\\.js"},
    {inline_object, 1, "/images/products/[a-m][a-z]+/[a-z]+-[0-9]+_small\\.gif"},
    {inline_object, 1, "/images/products/[n-z][a-z]+/[a-z]+-[0-9]+_small\\.gif"},
    {inline_object, 1, "/images/(large/)?[a-z]+/.+\\.png"},
    {inline_object, 1, "/fonts/[a-z]+\\.woff2?"},
    {inline_object, 1, "/media/[0-9]{4}/[0-9]{2}/.+"},
    {main_page, 24, "/shop/%0/%1/*"},
    {main_page, 24, "/shop/%0/*%8-*.html"},
    {main_page, 1, "/"},
    {main_page, 1, "/index.html"},
    {main_page, 1, "/login.do"},
    {main_page, 1, "/logout.do"},
    {main_page, 1, "/account/start"},
    // Entries with one text and different methods share the test of the text.
    {main_page, 1, "/cart/view", "GET"},
    {main_page, 1, "/cart/view", "POST"},
    {main_page, 1, "/cart/view", "NA"},
    {main_page, 14, "/shop/%0/index.html", "GET", host_name(0)},
    {main_page, 6, "/api/v[0-9]+/%0/[0-9]+/[a-z]+", "POST"},
    {main_page, 1, "/cart/update\\.do;step=[0-9]\\?item=[0-9]+.+", "POST"},
    {main_page, 1, "/shop/product/view\\.jsp\\?category=[a-k][a-z]+&.+"},
    {main_page, 1, "/search/results\\.do\\?q=[a-z]+\\+[a-z]+&page=[0-9]&.+"},
    {main_page, 1, "/shop/[l-o][a-z]+/[a-z]+/[a-z]+-[0-9]+\\.html"},
    {without_transaction, 24, "/api/v2/%0/*"},
    {without_transaction, 14, "/help/%0.html"},
    {without_transaction, 1, "/shop/[p-z][a-z]+/[a-z]+/.+-[0-9]+\\.html"},
    {without_transaction, 1, "/shop/product/view\\.jsp\\?.+"},
};

// Of the wildcard patterns the first fit the images of one directory each, of the others, which
// take these forms in turn, most fit no URL.
constexpr const char* fitting_form = "/images/products/%0/*";
constexpr const char* wildcard_forms[] = {"/shop/%0/*/%d-%i/*.html", "*/%0-%i_thumb.jpg",
                                          "/api/v2/%0/%i/*", "/static/%0/*.%i.css",
                                          "/shop/product/view.jsp*item=%i&*"};
constexpr std::string_view wildcard_types[] = {inline_object, without_transaction, main_page,
                                               main_page};

PatternRow wildcard_row(size_t index) {
    return {index % 20 == 19 ? filter : wildcard_types[index % std::size(wildcard_types)], 1,
            index < url_word_count ? fitting_form
                                   : wildcard_forms[index % std::size(wildcard_forms)]};
}

std::string pattern_text(const PatternRow& row, size_t index) {
    std::string text;
    append_form(text, row.form, [&](char letter) {
        if (letter == 'i') {
            text += std::to_string(index);
        } else {
            text += url_word(letter == 'd' ? index / 5 : index + static_cast<size_t>(letter - '0'));
        }
    });
    return text;
}

// Calls use(row, text) for each pattern.
template <typename Use> void for_each_pattern(uint64_t wildcards, Use use) {
    for (size_t index = 0; index < wildcards; ++index) {
        const PatternRow row = wildcard_row(index);
        use(row, pattern_text(row, index));
    }
    if (wildcards > 0) {
        return;
    }
    for (const PatternRow& row : mixed_rows) {
        for (size_t index = 0; index < row.count; ++index) {
            use(row, pattern_text(row, index));
        }
    }
}

} // namespace

std::string url_patterns(uint64_t wildcards) {
    std::string text = "status|type|method|group|transaction|host|port|post data|pattern\n";
    size_t transaction = 0;
    for_each_pattern(wildcards, [&](const PatternRow& row, const std::string& pattern) {
        if (row.type == filter) {
            return;
        }
        const bool posts = row.type == main_page && row.method == "POST";
        text.append("active|").append(row.type).append("|").append(row.method);
        text.append("|NA|transaction_").append(std::to_string(++transaction)).append("|");
        text.append(row.host).append("|NA|").append(posts ? order_data_file : "NA");
        text.append("|").append(pattern).append("\n");
    });
    return text;
}

std::string filter_patterns(uint64_t wildcards) {
    std::string text = "status|method|group|host|pattern\n";
    for_each_pattern(wildcards, [&](const PatternRow& row, const std::string& pattern) {
        if (row.type == filter) {
            text.append("active|").append(row.method).append("|NA|").append(row.host);
            text.append("|").append(pattern).append("\n");
        }
    });
    return text;
}
