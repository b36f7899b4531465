#include "tools/urls/request_collapse.h"

#include "tools/parse/url_key.h"
#include "tools/urls/url_order.h"

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

void sort_urls(const RequestTable& table, std::vector<CollapsedUrl>& urls) {
    std::vector<SortableText> texts;
    texts.reserve(urls.size());
    for (const CollapsedUrl& url : urls) {
        const std::string_view text = key_of(table, url).url;
        texts.push_back(
            {text.data(), static_cast<uint32_t>(text.size()), static_cast<uint32_t>(texts.size())});
    }
    sort_unique_urls(texts, [&](uint32_t number) { return key_of(table, urls[number]); });
    std::vector<CollapsedUrl> sorted;
    sorted.reserve(urls.size());
    for (const SortableText& text : texts) {
        sorted.push_back(urls[text.number]);
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
