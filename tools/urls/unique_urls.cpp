#include "tools/urls/unique_urls.h"

#include "base/allocation.h"
#include "base/logs.h"
#include "tools/load/request_table.h"
#include "tools/parse/counted_url.h"
#include "tools/urls/request_collapse.h"
#include "tools/urls/request_selection.h"

#include <cstring>
#include <utility>

UrlInfo* url_pattern = nullptr;
int url_pattern_count = 0;
int max_url_pattern = 0;

namespace {

constexpr const char* fname = "make_url_pattern_list";

// Writes the full URLs of a unique URL's requests; returns the offset of the first.
int64_t write_queries(const CollapsedRequests& collapsed, const CollapsedUrl& url,
                      QueryList& query_list) {
    const int64_t offset = query_list.offset();
    for (uint32_t i = url.queries_end - url.count; i < url.queries_end; ++i) {
        query_list.add(al_info_array[collapsed.queried[i]].url);
    }
    return offset;
}

UrlInfo& add_entry(const alInfo& request, uint32_t count) {
    DEBUG_LOG(3, fname, "New url found , adding in url pattern list");
    const int index = create_url_pattern(); // may move the table
    UrlInfo& entry = url_pattern[index];
    std::memcpy(entry.method, request.method, sizeof entry.method);
    entry.count = count;
    entry.request_type = request.request_type;
    entry.pattern_table_idx = request.pattern_table_idx;
    entry.filter_flag = static_cast<char>(request.filter_flag);
    entry.host_hdr = request.host_ip;
    entry.ignore_flag = 0;
    entry.url = request.url;
    return entry;
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

void make_url_pattern_list(SessionOrder session_order, uint32_t url_count, QueryList& query_list) {
    DEBUG_LOG(2, fname, "Method called");
    const CollapsedRequests collapsed = collapse_requests(select_requests(std::move(session_order)),
                                                          url_count, query_list.is_open());
    for (const CollapsedUrl& url : collapsed.urls) {
        alInfo& request = al_info_array[url.first_request];
        UrlInfo& entry = add_entry(request, url.count);
        entry.query_url_offset = -1;
        if (has_ignored_query(request)) {
            if (query_list.is_open()) {
                entry.query_url_offset = write_queries(collapsed, url, query_list);
            }
            replace_query_by_star(request);
        }
        log_further_requests(entry);
    }
    query_list.close();
}
