#include "tools/urls/request_collapse.h"

#include "tools/load/request_table.h"
#include "tools/urls/text_sort.h"

#include <algorithm>
#include <cstring>
#include <strings.h>
#include <utility>

namespace {

// Ends the text of a URL where its counted part ends; the character there is kept in the record.
void cut_url(alInfo& request) {
    request.query_last_char = std::exchange(request.url[request.url_len], '\0');
}

std::vector<CollapsedUrl> count_requests(const OrderedRequests& requests, uint32_t url_count) {
    std::vector<CollapsedUrl> urls(url_count);
    for (const OrderedRequest& request : requests) {
        CollapsedUrl& url = urls[request.url];
        if (url.count++ == 0) {
            url.first_request = request.record;
        }
    }
    return urls;
}

// Groups the requests whose URL is cut by unique URL, and lets each URL know where its group ends.
std::vector<uint32_t> group_queried(const OrderedRequests& requests,
                                    std::vector<CollapsedUrl>& urls) {
    uint32_t start = 0;
    for (CollapsedUrl& url : urls) {
        url.queries_end = start;
        const bool is_cut = url.count != 0 && al_info_array[url.first_request].ignore_query_flag;
        start += is_cut ? url.count : 0;
    }
    std::vector<uint32_t> queried(start);
    for (const OrderedRequest& request : requests) {
        if (al_info_array[request.record].ignore_query_flag != 0) {
            queried[urls[request.url].queries_end++] = request.record;
        }
    }
    return queried;
}

// Brings the URLs into the order of sort_al_by_url_method_host. Their texts are sorted first; only
// those of one text are compared by the rest.
void sort_urls(std::vector<CollapsedUrl>& urls) {
    std::vector<SortableText> texts;
    texts.reserve(urls.size());
    for (const CollapsedUrl& url : urls) {
        texts.push_back(
            {al_info_array[url.first_request].url, static_cast<uint32_t>(texts.size()), 0});
    }
    sort_texts(texts);
    std::vector<CollapsedUrl> sorted;
    sorted.reserve(urls.size());
    for (size_t i = 0; i < texts.size();) {
        const size_t same_begin = i;
        do {
            sorted.push_back(urls[texts[i].number]);
        } while (++i < texts.size() && std::strcmp(texts[i].text, texts[same_begin].text) == 0);
        std::sort(sorted.begin() + static_cast<ptrdiff_t>(same_begin), sorted.end(),
                  [](const CollapsedUrl& a, const CollapsedUrl& b) {
                      return sort_al_by_url_method_host(al_info_array[a.first_request],
                                                        al_info_array[b.first_request]) < 0;
                  });
    }
    urls = std::move(sorted);
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

CollapsedRequests collapse_requests(const OrderedRequests& requests, uint32_t url_count,
                                    bool keep_queried) {
    CollapsedRequests collapsed;
    collapsed.urls = count_requests(requests, url_count);
    if (keep_queried) {
        collapsed.queried = group_queried(requests, collapsed.urls);
    }
    std::erase_if(collapsed.urls, [](const CollapsedUrl& url) { return url.count == 0; });
    for (const CollapsedUrl& url : collapsed.urls) {
        cut_url(al_info_array[url.first_request]);
    }
    sort_urls(collapsed.urls);
    return collapsed;
}

void restore_url(alInfo& request) {
    request.url[request.url_len] = request.query_last_char;
}
