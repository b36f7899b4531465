#include "tools/patterns/request_collapse.h"

#include "tools/config/replay_settings.h"
#include "tools/load/request_table.h"
#include "tools/patterns/number_table.h"
#include "tools/patterns/text_hash.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <strings.h>
#include <utility>

namespace {

// Cuts the URL after its first query separator; the character behind it is kept in the record.
void cut_query(alInfo& request) {
    const size_t length = std::strlen(request.url);
    const size_t separator = ignore_query_flag != 0 ? std::strcspn(request.url, "?#;") : length;
    if (separator == length) {
        request.url_len = static_cast<int>(length);
        return;
    }
    request.url_len = static_cast<int>(separator) + 1;
    request.ignore_query_flag = 1;
    request.query_last_char = std::exchange(request.url[request.url_len], '\0');
}

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

// The unique URL of every record, as a number, in the order of the table, in which the texts lie in
// memory.
struct UrlNumbers {
    std::vector<uint32_t> of_record;
    uint32_t count = 0;
};

UrlNumbers number_urls() {
    UrlNumbers urls;
    urls.of_record.resize(g_valid_request);
    std::vector<uint32_t> first_records;
    NumberTable numbers;
    for (uint32_t i = 0; i < urls.of_record.size(); ++i) {
        alInfo& request = al_info_array[i];
        cut_query(request);
        bool is_new;
        urls.of_record[i] = numbers.number_of(
            hash_request(request),
            [&](uint32_t known) {
                return is_same_url(request, al_info_array[first_records[known]]);
            },
            &is_new);
        if (is_new) {
            first_records.push_back(i);
        }
    }
    urls.count = numbers.count();
    return urls;
}

std::vector<CollapsedUrl> count_requests(const std::vector<uint32_t>& requests,
                                         const UrlNumbers& numbers) {
    std::vector<CollapsedUrl> urls(numbers.count);
    for (const uint32_t index : requests) {
        CollapsedUrl& url = urls[numbers.of_record[index]];
        if (url.count++ == 0) {
            url.first_request = index;
        }
    }
    return urls;
}

// Groups the requests whose URL is cut by unique URL, and lets each URL know where its group ends.
std::vector<uint32_t> group_queried(const std::vector<uint32_t>& requests,
                                    const UrlNumbers& numbers, std::vector<CollapsedUrl>& urls) {
    uint32_t start = 0;
    for (CollapsedUrl& url : urls) {
        url.queries_end = start;
        const bool is_cut = url.count != 0 && al_info_array[url.first_request].ignore_query_flag;
        start += is_cut ? url.count : 0;
    }
    std::vector<uint32_t> queried(start);
    for (const uint32_t index : requests) {
        if (al_info_array[index].ignore_query_flag != 0) {
            queried[urls[numbers.of_record[index]].queries_end++] = index;
        }
    }
    return queried;
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

CollapsedRequests collapse_requests(const std::vector<uint32_t>& requests, bool keep_queried) {
    const UrlNumbers numbers = number_urls();
    CollapsedRequests collapsed;
    collapsed.urls = count_requests(requests, numbers);
    if (keep_queried) {
        collapsed.queried = group_queried(requests, numbers, collapsed.urls);
    }
    std::erase_if(collapsed.urls, [](const CollapsedUrl& url) { return url.count == 0; });
    std::sort(collapsed.urls.begin(), collapsed.urls.end(),
              [](const CollapsedUrl& a, const CollapsedUrl& b) {
                  return sort_al_by_url_method_host(al_info_array[a.first_request],
                                                    al_info_array[b.first_request]) < 0;
              });
    return collapsed;
}

void restore_url(alInfo& request) {
    request.url[request.url_len] = request.query_last_char;
}
