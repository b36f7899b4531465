#include "tools/patterns/unique_urls.h"

#include "tools/driver/allocation.h"
#include "tools/driver/logs.h"
#include "tools/load/request_table.h"
#include "tools/patterns/number_table.h"
#include "tools/patterns/request_selection.h"
#include "tools/patterns/text_hash.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <strings.h>
#include <utility>

UrlInfo* url_pattern = nullptr;
int url_pattern_count = 0;
int max_url_pattern = 0;

namespace {

constexpr const char* fname = "make_url_pattern_list";

std::string_view cut_url(const alInfo& request) {
    return {request.url, static_cast<size_t>(request.url_len)};
}

uint64_t hash_request(const alInfo& request) {
    char method[max_method_length];
    size_t length = 0;
    for (; request.method[length] != '\0'; ++length) {
        method[length] = static_cast<char>(request.method[length] | 0x20); // one for both cases
    }
    const uint64_t hash = hash_text({method, length}, hash_text(request.host_ip, hash_seed()));
    return hash_text(cut_url(request), hash);
}

bool is_same_url(const alInfo& a, const alInfo& b) {
    return cut_url(a) == cut_url(b) && strcasecmp(a.method, b.method) == 0 &&
           std::strcmp(a.host_ip, b.host_ip) == 0;
}

// A unique URL before it has its place in the table.
struct UniqueUrl {
    uint32_t first_request; // in session order
    uint32_t count;         // requests behind it
};

// The requests that count, by unique URL.
struct CollapsedRequests {
    std::vector<UniqueUrl> urls;
    std::vector<uint32_t> queried;        // requests with a query, in session order
    std::vector<uint32_t> url_of_queried; // number of the unique URL of each
};

CollapsedRequests collapse(const std::vector<uint32_t>& session_order, bool keep_queried) {
    CollapsedRequests collapsed;
    NumberTable numbers;
    for (const uint32_t index : session_order) {
        const alInfo& request = al_info_array[index];
        if (request.ignore_flag != 0) {
            continue;
        }
        bool is_new;
        const uint32_t number = numbers.number_of(
            hash_request(request),
            [&](uint32_t known) {
                return is_same_url(request, al_info_array[collapsed.urls[known].first_request]);
            },
            &is_new);
        if (is_new) {
            collapsed.urls.push_back({index, 0});
        }
        ++collapsed.urls[number].count;
        if (keep_queried && request.ignore_query_flag != 0) {
            collapsed.queried.push_back(index);
            collapsed.url_of_queried.push_back(number);
        }
    }
    return collapsed;
}

// Numbers of the unique URLs in the order of the table.
std::vector<uint32_t> sort_urls(const std::vector<UniqueUrl>& urls) {
    std::vector<uint32_t> numbers(urls.size());
    for (uint32_t i = 0; i < numbers.size(); ++i) {
        numbers[i] = i;
    }
    std::sort(numbers.begin(), numbers.end(), [&](uint32_t a, uint32_t b) {
        return sort_al_by_url_method_host(al_info_array[urls[a].first_request],
                                          al_info_array[urls[b].first_request]) < 0;
    });
    return numbers;
}

// Requests with a query grouped by unique URL, each group in session order. The group of URL number
// n ends before end_of_url[n].
struct QueriedByUrl {
    std::vector<uint32_t> requests;
    std::vector<uint32_t> end_of_url;
};

QueriedByUrl group_queried(const CollapsedRequests& collapsed) {
    QueriedByUrl grouped;
    grouped.end_of_url.resize(collapsed.urls.size());
    for (const uint32_t number : collapsed.url_of_queried) {
        ++grouped.end_of_url[number];
    }
    uint32_t start = 0;
    for (uint32_t& place : grouped.end_of_url) {
        start += std::exchange(place, start);
    }
    grouped.requests.resize(collapsed.queried.size());
    for (size_t i = 0; i < collapsed.queried.size(); ++i) {
        grouped.requests[grouped.end_of_url[collapsed.url_of_queried[i]]++] = collapsed.queried[i];
    }
    return grouped;
}

// Writes the full URLs of a unique URL's requests; returns the offset of the first.
int64_t write_queries(const QueriedByUrl& queried, uint32_t number, uint32_t count,
                      QueryList& query_list) {
    const int64_t offset = query_list.offset();
    const uint32_t end = queried.end_of_url[number];
    for (uint32_t i = end - count; i < end; ++i) {
        alInfo& request = al_info_array[queried.requests[i]];
        restore_url(request);
        query_list.add(request.url);
    }
    return offset;
}

void end_with_star(alInfo& request) {
    request.url[request.url_len] = '*';
    request.url[request.url_len + 1] = '\0';
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

int sort_al_by_url_method_host(const alInfo& a, const alInfo& b) {
    if (const int urls = std::strcmp(a.url, b.url); urls != 0) {
        return urls;
    }
    if (const int methods = strcasecmp(a.method, b.method); methods != 0) {
        return methods;
    }
    return std::strcmp(a.host_ip, b.host_ip);
}

int create_url_pattern() {
    constexpr int growth = 10240;
    if (url_pattern_count == max_url_pattern) {
        DEBUG_LOG(4, "create_url_pattern", "Allocating memory for url pattern list.");
        const int new_max = static_cast<int>(static_cast<unsigned>(max_url_pattern) + growth);
        url_pattern =
            static_cast<UrlInfo*>(grow_table("create_url_pattern", "url pattern list", url_pattern,
                                             max_url_pattern, new_max, sizeof(UrlInfo)));
        max_url_pattern = new_max;
    }
    return url_pattern_count++;
}

void make_url_pattern_list(const std::vector<uint32_t>& session_order, QueryList& query_list) {
    DEBUG_LOG(2, fname, "Method called");
    select_requests(session_order);
    const CollapsedRequests collapsed = collapse(session_order, query_list.is_open());
    const QueriedByUrl queried = group_queried(collapsed);
    for (const uint32_t number : sort_urls(collapsed.urls)) {
        const UniqueUrl& unique = collapsed.urls[number];
        alInfo& request = al_info_array[unique.first_request];
        UrlInfo& entry = add_entry(request, unique.count);
        entry.query_url_offset = -1;
        if (request.ignore_query_flag != 0) {
            if (query_list.is_open()) {
                entry.query_url_offset = write_queries(queried, number, unique.count, query_list);
            }
            end_with_star(request);
        }
        log_further_requests(entry);
    }
    query_list.close();
}
