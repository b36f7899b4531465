#include "tools/urls/request_collapse.h"

#include "tools/parse/url_key.h"
#include "tools/urls/text_sort.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace {

UrlKey key_of(const RequestTable& table, const CollapsedUrl& url) {
    return UrlKey(table.texts.urls.text(table.rows[url.first_row].url));
}

std::vector<CollapsedUrl> count_requests(const OrderedRequests& requests, uint32_t url_count) {
    std::vector<CollapsedUrl> urls(url_count);
    for (const OrderedRequest& request : requests) {
        CollapsedUrl& url = urls[request.url];
        if (url.count++ == 0) {
            url.first_row = request.row;
        }
    }
    return urls;
}

// Groups the requests with an ignored query by unique URL, and lets each URL know where its group
// ends.
std::vector<uint32_t> group_queried(const RequestTable& table, const OrderedRequests& requests,
                                    std::vector<CollapsedUrl>& urls) {
    constexpr uint32_t not_queried = UINT32_MAX;
    uint32_t start = 0;
    for (CollapsedUrl& url : urls) {
        const bool is_queried = url.count != 0 && key_of(table, url).has_ignored_query();
        url.queries_end = is_queried ? start : not_queried;
        start += is_queried ? url.count : 0;
    }
    std::vector<uint32_t> queried(start);
    for (const OrderedRequest& request : requests) {
        uint32_t& end = urls[request.url].queries_end;
        if (end != not_queried) {
            queried[end++] = request.row;
        }
    }
    return queried;
}

bool is_before(const UrlKey& a, const UrlKey& b) {
    const int methods = a.method.compare(b.method);
    return methods != 0 ? methods < 0 : std::strcmp(a.host, b.host) < 0;
}

// Brings the URLs into the order of URL, method and host. Their texts are sorted first; only those
// of one text are compared by the rest.
void sort_urls(const RequestTable& table, std::vector<CollapsedUrl>& urls) {
    std::vector<SortableText> texts;
    texts.reserve(urls.size());
    for (const CollapsedUrl& url : urls) {
        const std::string_view text = key_of(table, url).url;
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
                  [&](const CollapsedUrl& a, const CollapsedUrl& b) {
                      return is_before(key_of(table, a), key_of(table, b));
                  });
    }
    urls = std::move(sorted);
}

} // namespace

CollapsedRequests collapse_requests(const RequestTable& table, const OrderedRequests& requests,
                                    bool keep_queried) {
    CollapsedRequests collapsed;
    collapsed.urls = count_requests(requests, table.texts.urls.count());
    if (keep_queried) {
        collapsed.queried = group_queried(table, requests, collapsed.urls);
    }
    std::erase_if(collapsed.urls, [](const CollapsedUrl& url) { return url.count == 0; });
    sort_urls(table, collapsed.urls);
    return collapsed;
}
