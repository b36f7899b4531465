#include "tools/patterns/classification.h"

#include "tests/properties/properties.h"
#include "tools/config/replay_settings.h"
#include "tools/patterns/pattern_files.h"
#include "tools/patterns/pattern_matcher.h"
#include "tools/patterns/pattern_regex.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <strings.h>
#include <vector>

namespace {

struct Pattern {
    std::string text;
    std::string method;
    std::string host;
    regex_t regex;
};

// Filter, inline, main, main without transaction; each sorted by pattern text.
using Tables = std::array<std::vector<Pattern>, 4>;

struct Url {
    std::string method;
    std::string host;
    std::string url;
    uint64_t count;
};

bool compile(Pattern& pattern) {
    return regcomp(&pattern.regex, encode_stars(pattern.text.c_str()).c_str(), REG_EXTENDED) == 0;
}

std::vector<Pattern> random_patterns(Choices& choices) {
    const char* plain_parts[] = {"a", "b", "/", "shop", "*", "*", "*", "."};
    const char* parts[] = {
        "a",           "b",   "shop", "/abab",       "*",       "*",    ".",        "?",
        "+",           "(",   ")",    "[ab]",        "]",       "\\",   "{2}",      "shop?",
        "shop{0,1}",   "$",   "[^a]", "^",           "[]a]",    "[](]", "\xe9",     "(ab)",
        "[[:alpha:]]", "\\1", "\\b",  "/[sS]hop\\.", "(shop)?", "[^?]", "[0-9]{2,}"};
    std::vector<Pattern> patterns;
    for (const size_t size = 1 + choices.below(12); patterns.size() < size;) {
        Pattern pattern = {"",
                           choices.of(std::array{"NA", "na", "GET", "post"}),
                           choices.of(std::array{"NA", "na", "h", "H"}),
                           {}};
        const bool is_plain = choices.one_in(2);
        for (size_t left = 1 + choices.below(7); left > 0; --left) {
            pattern.text += is_plain ? choices.of(plain_parts) : choices.of(parts);
        }
        if (choices.one_in(4) && !patterns.empty()) {
            pattern.text = choices.of(patterns).text;
        }
        if (!compile(pattern)) {
            continue;
        }
        if (library_may_err(encode_stars(pattern.text.c_str()))) {
            regfree(&pattern.regex);
            continue;
        }
        patterns.push_back(pattern);
    }
    std::stable_sort(patterns.begin(), patterns.end(),
                     [](const Pattern& a, const Pattern& b) { return a.text < b.text; });
    return patterns;
}

// URLs that the patterns cover, or nearly.
std::vector<Url> random_urls(Choices& choices, const Tables& tables) {
    std::vector<Url> urls(1 + choices.below(60));
    for (Url& url : urls) {
        url = {choices.of(std::array{"GET", "get", "POST"}), choices.of(std::array{"h", "H", "NA"}),
               "", choices.below(100)};
        for (const char c : choices.of(choices.of(tables)).text) {
            if (c == '*') {
                url.url += choices.text("ab/", 2);
            } else if (std::strchr("?+{", c) != nullptr && !url.url.empty()) {
                url.url.resize(url.url.size() - choices.below(2));
            } else if (std::strchr("(){}[]^$\\012,", c) == nullptr || choices.one_in(4)) {
                url.url += c == '.' ? choices.of(std::string_view("ab.\xe9")) : c;
            }
        }
        for (size_t edits = choices.below(4); edits > 1; --edits) {
            choices.edit(url.url, "ab/)");
        }
    }
    return urls;
}

bool is_any(const std::string& text) {
    return strcasecmp(text.c_str(), "na") == 0;
}

// Of all patterns that fit, in the table's order.
std::vector<int32_t> plain_indices(const std::vector<Pattern>& patterns, const Url& url) {
    std::vector<int32_t> indices;
    for (size_t i = 0; i < patterns.size(); ++i) {
        const auto& [text, method, host, regex] = patterns[i];
        regmatch_t match;
        const bool covers = regexec(&regex, url.url.c_str(), 1, &match, 0) == 0 &&
                            match.rm_so == 0 && match.rm_eo == static_cast<int>(url.url.size());
        if (covers && (is_any(method) || strcasecmp(method.c_str(), url.method.c_str()) == 0) &&
            (is_any(host) || host == url.host)) {
            indices.push_back(static_cast<int32_t>(i));
        }
    }
    return indices;
}

int32_t plain_index(const std::vector<Pattern>& patterns, const Url& url) {
    const std::vector<int32_t> indices = plain_indices(patterns, url);
    return indices.empty() ? no_pattern : indices.front();
}

using Entries = std::vector<std::pair<int, int32_t>>; // kind and index

Entries plain_entries(const Tables& tables, const Url& url) {
    Entries entries;
    for (size_t kind = 0; kind < tables.size(); ++kind) {
        for (const int32_t index : plain_indices(tables[kind], url)) {
            entries.emplace_back(kind, index);
        }
    }
    return entries;
}

Entries all_entries(PatternMatcher& matcher, const UrlInfo& url) {
    Entries entries;
    for (const auto& [kind, index] : matcher.find_all(url.url, url.method, url.host_hdr)) {
        entries.emplace_back(kind, index);
    }
    return entries;
}

// Type, index, filter flag and ignore flag.
using Outcome = std::array<int, 4>;

Outcome plain_outcome(const Tables& tables, const Url& url) {
    const Outcome inlined = inline_mode == INLINE_MODE_AS_PER_LOG
                                ? Outcome{REQUEST_TYPE_INLINE, plain_index(tables[1], url), 0, 0}
                                : Outcome{REQUEST_TYPE_MAIN, 0, 0, 1};
    return plain_index(tables[0], url) != -1   ? Outcome{0, plain_index(tables[0], url), 1, 0}
           : plain_index(tables[1], url) != -1 ? inlined
           : plain_index(tables[2], url) != -1 ? Outcome{0, plain_index(tables[2], url), 0, 0}
           : plain_index(tables[3], url) != -1 ? Outcome{1, plain_index(tables[3], url), 0, 0}
                                               : Outcome{0, -1, 0, 0};
}

void load(const Tables& tables) {
    const TemporaryDirectory directory;
    std::string filters;
    std::string patterns;
    for (const auto& [text, method, host, regex] : tables[0]) {
        filters += "active|" + method + "|-|" + host + "|" + text + "\n";
    }
    for (size_t i = 1; i < tables.size(); ++i) {
        const std::string type = i == 1 ? "inline" : i == 2 ? "main" : "main_without_tx";
        for (const auto& [text, method, host, regex] : tables[i]) {
            patterns += "active|" + type + "|" + method + "|-|T|" + host + "|-|NA|" + text + "\n";
        }
    }
    save_filter_url_pattern(directory.write("filters", filters).c_str());
    save_url_pattern(directory.write("patterns", patterns).c_str());
    sort_pattern_tables();
}

void fill_url_table(std::vector<Url>& urls) {
    for (Url& url : urls) {
        const int index = create_url_pattern();
        UrlInfo& entry = url_pattern[index];
        entry = {};
        std::strcpy(entry.method, url.method.c_str());
        entry.host_hdr = url.host.c_str();
        entry.url = url.url.data();
        entry.count = url.count;
    }
}

void expect_plain_classification(const Tables& tables, std::vector<Url>& urls) {
    load(tables);
    fill_url_table(urls);
    fill_pattern_index();
    const PatternIndex index;
    PatternMatcher matcher(index);
    uint64_t left_out = 0;
    std::vector<std::pair<int, const char*>> order;
    for (size_t i = 0; i < urls.size(); ++i) {
        const UrlInfo& entry = url_pattern[i];
        const Outcome expected = plain_outcome(tables, urls[i]);
        const Outcome outcome = {entry.request_type, entry.pattern_table_idx, entry.filter_flag,
                                 entry.ignore_flag};
        EXPECT_EQ(outcome, expected) << urls[i].method << " " << urls[i].host << urls[i].url;
        EXPECT_EQ(
            matcher.get_url_pattern_idx(PATTERN_MAIN, entry.url, entry.method, entry.host_hdr),
            plain_index(tables[2], urls[i]));
        EXPECT_EQ(all_entries(matcher, entry), plain_entries(tables, urls[i]));
        left_out += expected[3] != 0 ? urls[i].count : 0;
        order.emplace_back(expected[0], entry.url);
    }
    EXPECT_EQ(total_inline_filtered, left_out);
    std::stable_sort(order.begin(), order.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    sort_by_request_type();
    for (size_t i = 0; i < order.size(); ++i) {
        ASSERT_EQ(url_pattern[i].url, order[i].second) << "not sorted by type, stably";
    }
}

} // namespace

void check_classification(Choices& choices) {
    Tables tables;
    for (auto& patterns : tables) {
        patterns = random_patterns(choices);
    }
    std::vector<Url> urls = random_urls(choices, tables);
    inline_mode = INLINE_MODE_SKIP + static_cast<int>(choices.below(3));
    total_inline_filtered = 0;
    expect_plain_classification(tables, urls);
    forget_patterns();
    forget_unique_urls();
    for (auto& patterns : tables) {
        for (Pattern& pattern : patterns) {
            regfree(&pattern.regex);
        }
    }
}

void forget_patterns() {
    for (const auto& [name, entries, total, max] : pattern_tables) {
        for (int i = 0; i < max; ++i) { // also one that was left half filled
            regfree(&entries[i].url_ptrn_regex);
            for (char* text : {entries[i].url_ptrn_string, entries[i].post_data_file,
                               entries[i].host, entries[i].txn_name}) {
                std::free(text == na_string ? nullptr : text);
            }
        }
        std::free(std::exchange(entries, nullptr));
        total = max = 0;
    }
}
