#include "tools/urls/unique_urls.h"

#include "base/allocation.h"
#include "base/logs.h"
#include "tools/parse/own_texts.h"
#include "tools/parse/url_key.h"
#include "tools/urls/request_selection.h"

#include <cstring>
#include <string_view>
#include <utility>

UrlInfo* url_pattern = nullptr;
int url_pattern_count = 0;
int max_url_pattern = 0;

namespace {

constexpr const char* fname = "make_url_pattern_list";

void write_queries(const RequestTable& table, const CollapsedRequests& collapsed,
                   const CollapsedUrl& url, QueryList& query_list) {
    for (uint32_t i = url.queries_end - url.count; i < url.queries_end; ++i) {
        query_list.add(read_own_texts(table.rows[collapsed.queried[i]].own_texts).full_url);
    }
}

// A copy that ends with a star in place of an ignored query. Those of all URLs stand together in
// their order, which later phases go through.
char* copy_url(TextArena& texts, const UrlKey& key) {
    char* const url = texts.copy("url", key.url, 1);
    if (key.has_ignored_query()) {
        std::memcpy(url + key.url.size(), "*", 2);
    }
    return url;
}

void log_further_requests(const UrlInfo& entry) {
    if (debug_wanted(4)) {
        for (uint64_t i = 1; i < entry.count; ++i) {
            debug_log(4, fname, "Current Url matched with url %s, increasing count", entry.url);
        }
    }
}

} // namespace

int create_url_pattern() {
    constexpr int growth = 10240;
    if (url_pattern_count == max_url_pattern) {
        DEBUG_LOG(4, "create_url_pattern", "Allocating memory for url pattern list.");
        const int new_max = static_cast<int>(static_cast<unsigned>(max_url_pattern) + growth);
        url_pattern = static_cast<UrlInfo*>(
            grow_table("url pattern list", url_pattern, max_url_pattern, new_max, sizeof(UrlInfo)));
        max_url_pattern = new_max;
    }
    return url_pattern_count++;
}

UrlInfo& add_unique_url(TextArena& texts, std::string_view url_key, const char* own_method,
                        uint64_t count) {
    DEBUG_LOG(3, fname, "New url found , adding in url pattern list");
    const int index = create_url_pattern(); // may move the table
    UrlInfo& entry = url_pattern[index];
    const UrlKey key(url_key);
    standard_method(url_key, entry.method);
    if (own_method != nullptr) {
        std::memcpy(entry.method, own_method, std::strlen(own_method) + 1);
    }
    entry.count = count;
    entry.host_hdr = key.host;
    entry.url = copy_url(texts, key);
    entry.query_url_offset = -1;
    return entry;
}

bool begin_queries(UrlInfo& entry, std::string_view url_key, const QueryList& query_list) {
    const bool are_listed = query_list.is_open() && UrlKey(url_key).has_ignored_query();
    if (are_listed) {
        entry.query_url_offset = query_list.offset();
    }
    return are_listed;
}

void fill_url_patterns(const RequestTable& table, const CollapsedRequests& collapsed,
                       QueryList& query_list) {
    TextArena texts;
    for (const CollapsedUrl& url : collapsed.urls) {
        const RequestRow& first = table.rows[url.first_row];
        const std::string_view key = table.texts.urls.text(first.url);
        UrlInfo& entry =
            add_unique_url(texts, key, read_own_texts(first.own_texts).method, url.count);
        if (begin_queries(entry, key, query_list)) {
            write_queries(table, collapsed, url, query_list);
        }
        log_further_requests(entry);
    }
    query_list.close();
}

void make_url_pattern_list(const RequestTable& table, SessionOrder session_order,
                           QueryList& query_list) {
    DEBUG_LOG(2, fname, "Method called");
    fill_url_patterns(table,
                      collapse_requests(table, select_requests(table, std::move(session_order)),
                                        query_list.is_open()),
                      query_list);
}
