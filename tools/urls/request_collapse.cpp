#include "tools/urls/request_collapse.h"

#include "tools/load/request_table.h"
#include "tools/parse/counted_url.h"
#include "tools/urls/text_sort.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <strings.h>
#include <utility>

namespace {

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

// Groups the requests with an ignored query by unique URL, and lets each URL know where its group
// ends.
std::vector<uint32_t> group_queried(const OrderedRequests& requests,
                                    std::vector<CollapsedUrl>& urls) {
    uint32_t start = 0;
    for (CollapsedUrl& url : urls) {
        url.queries_end = start;
        const bool is_queried =
            url.count != 0 && has_ignored_query(al_info_array[url.first_request]);
        start += is_queried ? url.count : 0;
    }
    std::vector<uint32_t> queried(start);
    for (const OrderedRequest& request : requests) {
        if (has_ignored_query(al_info_array[request.record])) {
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
        const std::string_view text = counted_url(al_info_array[url.first_request]);
        texts.push_back(
            {text.data(), static_cast<uint32_t>(text.size()), static_cast<uint32_t>(texts.size())});
    }
    sort_texts(texts);
    std::vector<CollapsedUrl> sorted;
    sorted.reserve(urls.size());
    for (size_t i = 0; i < texts.size();) {
        const size_t same_begin = i;
        do {
            sorted.push_back(urls[texts[i].number]);
        } while (++i < texts.size() && texts[i].text() == texts[same_begin].text());
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
    if (const int urls = counted_url(a).compare(counted_url(b)); urls != 0) {
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
    sort_urls(collapsed.urls);
    return collapsed;
}
