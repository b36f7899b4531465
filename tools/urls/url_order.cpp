#include "tools/urls/url_order.h"

#include <algorithm>
#include <cstring>

namespace {

// Of the same URL.
bool stands_before_by_rest(const UrlKey& a, const UrlKey& b) {
    const int methods = a.method.compare(b.method);
    return methods != 0 ? methods < 0 : std::strcmp(a.host, b.host) < 0;
}

} // namespace

bool stands_before(const UrlKey& a, const UrlKey& b) {
    const int urls = a.url.compare(b.url);
    return urls != 0 ? urls < 0 : stands_before_by_rest(a, b);
}

// The texts are sorted first; only those of one text are compared by the rest.
void sort_unique_urls(std::vector<SortableText>& urls,
                      const std::function<UrlKey(uint32_t number)>& key_of) {
    sort_texts(urls);
    for (auto begin = urls.begin(); begin != urls.end();) {
        auto end = begin + 1;
        while (end != urls.end() && end->text() == begin->text()) {
            ++end;
        }
        std::sort(begin, end, [&](const SortableText& a, const SortableText& b) {
            return stands_before_by_rest(key_of(a.number), key_of(b.number));
        });
        begin = end;
    }
}
