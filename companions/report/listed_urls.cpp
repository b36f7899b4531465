#include "companions/report/listed_urls.h"

#include "companions/common/text_map.h"
#include "tools/parse/own_texts.h"
#include "tools/parse/url_key.h"
#include "tools/patterns/classification.h"
#include "tools/results/url_list.h"

#include <algorithm>
#include <string_view>

namespace {

std::string_view text_or_none(const char* text) {
    return text == na_string ? std::string_view() : text;
}

UrlKind kind_of(const UrlInfo& entry) {
    constexpr UrlKind kinds[] = {UrlKind::main, UrlKind::main_without_transaction,
                                 UrlKind::inline_object};
    const bool is_decided = deciding_pattern(entry) != nullptr;
    return is_decided ? kinds[static_cast<unsigned char>(entry.request_type)] : UrlKind::main;
}

std::string_view query_of(const RequestTable& table, uint32_t row, size_t counted_size) {
    const std::string_view url = read_own_texts(table.rows[row].own_texts).full_url;
    return url.substr(counted_size);
}

// The requests of a URL lie apart: what reading this one and those behind it will look at.
void prefetch_queries(const RequestTable& table, const std::vector<uint32_t>& queried, size_t i) {
    constexpr size_t ahead = 8;
    if (i + 2 * ahead < queried.size()) {
        __builtin_prefetch(&table.rows[queried[i + 2 * ahead]]);
        __builtin_prefetch(table.rows[queried[i + ahead]].own_texts);
    }
}

bool comes_first(const QueryCount& a, const QueryCount& b) {
    return a.requests != b.requests ? a.requests > b.requests : a.query < b.query;
}

// `counted_size`: characters of the URL that count, the separator included.
UrlQueries queries_of(const RequestTable& table, const CollapsedRequests& collapsed,
                      const CollapsedUrl& url, size_t counted_size, size_t limit) {
    TextMap<uint64_t> counts;
    for (uint32_t i = url.queries_end - url.count; i < url.queries_end; ++i) {
        prefetch_queries(table, collapsed.queried, i);
        ++counts[query_of(table, collapsed.queried[i], counted_size)];
    }
    std::vector<QueryCount> queries;
    queries.reserve(counts.size());
    for (const auto& [query, count] : counts) {
        queries.push_back({query, count});
    }
    const size_t kept = std::min(limit, queries.size());
    std::partial_sort(queries.begin(), queries.begin() + static_cast<ptrdiff_t>(kept),
                      queries.end(), comes_first);
    queries.resize(kept);
    return {0, counts.size(), std::move(queries)};
}

} // namespace

std::vector<uint32_t> listed_entries() {
    std::vector<uint32_t> entries;
    for (int i = 0; i < url_pattern_count; ++i) {
        if (url_pattern[i].ignore_flag == 0) {
            entries.push_back(static_cast<uint32_t>(i));
        }
    }
    std::stable_sort(entries.begin(), entries.end(), [](uint32_t a, uint32_t b) {
        return bring_main_url_first(url_pattern[a], url_pattern[b]) < 0;
    });
    return entries;
}

std::vector<ListedUrl> list_urls(const std::vector<uint32_t>& entries) {
    std::vector<ListedUrl> urls;
    urls.reserve(entries.size());
    for (const uint32_t entry : entries) {
        const UrlListRow row = url_list_row(url_pattern[entry]);
        urls.push_back({.url = row.url,
                        .method = row.method,
                        .host = row.host,
                        .pattern = text_or_none(row.pattern),
                        .transaction = text_or_none(row.transaction),
                        .body_file = text_or_none(row.post_data_file),
                        .kind = kind_of(url_pattern[entry]),
                        .is_filtered = row.is_filtered,
                        .sends_body = sends_body(row.method),
                        .requests = row.count});
    }
    return urls;
}

std::vector<UrlQueries> count_queries(const RequestTable& table, const CollapsedRequests& collapsed,
                                      const std::vector<uint32_t>& entries, size_t limit) {
    std::vector<UrlQueries> all;
    for (size_t row = 0; row < entries.size(); ++row) {
        const CollapsedUrl& url = collapsed.urls[entries[row]];
        const UrlKey key(table.texts.urls.text(table.rows[url.first_row].url));
        if (key.has_ignored_query()) {
            all.push_back(queries_of(table, collapsed, url, key.url.size(), limit));
            all.back().url = row;
        }
    }
    return all;
}
