#include "companions/shard/collapse/url_counts.h"

#include "companions/shard/exchange/url_table.h"
#include "tools/parse/url_key.h"
#include "tools/urls/url_order.h"

#include <utility>

void UrlCounts::add(const ExchangedRow& row) {
    CountedUrl& url = find_url(row.url_key);
    const OwnTexts& own = row.own_texts;
    if (url.count++ == 0 && own.method != nullptr) {
        url.own_method = texts_.copy("method", own.method);
    }
    if (keeps_queries_ && own.full_url != nullptr) {
        add_query(url, std::string_view(own.full_url).substr(UrlKey(row.url_key).url.size()));
    }
}

UrlCounts::CountedUrl& UrlCounts::find_url(std::string_view key) {
    const uint32_t id = keys_.intern(key, hash_url_key(key));
    if (id == urls_.size()) {
        urls_.emplace_back();
    }
    return urls_[id];
}

void UrlCounts::add_query(CountedUrl& url, std::string_view rest) {
    queries_.push_back({texts_.copy("query", rest), nullptr});
    Query& query = queries_.back();
    if (url.last_query == nullptr) {
        url.first_query = &query;
    } else {
        url.last_query->next = &query;
    }
    url.last_query = &query;
}

size_t UrlCounts::held_size() const {
    return keys_.held_size() + texts_.held_size() + urls_.capacity() * sizeof(CountedUrl) +
           queries_.size() * sizeof(Query);
}

void UrlCounts::write(FrameWriter& frames, uint64_t table) {
    UrlTableWriter writer(frames, table);
    for (const uint32_t id : order()) {
        const CountedUrl& url = urls_[id];
        writer.add_url({.key = keys_.text(id),
                        .count = url.count,
                        .own_method = url.own_method == nullptr ? "" : url.own_method,
                        .query_count = url.first_query == nullptr ? 0 : url.count});
        for (const Query* query = url.first_query; query != nullptr; query = query->next) {
            writer.add_query(query->rest);
        }
    }
    writer.finish();
    keys_.release();
    texts_.release();
    urls_ = {};
    queries_ = {};
}

std::vector<uint32_t> UrlCounts::order() const {
    std::vector<SortableText> texts;
    texts.reserve(urls_.size());
    for (uint32_t id = 0; id < urls_.size(); ++id) {
        const std::string_view url = UrlKey(keys_.text(id)).url;
        texts.push_back({url.data(), static_cast<uint32_t>(url.size()), id});
    }
    sort_unique_urls(texts, [&](uint32_t id) { return UrlKey(keys_.text(id)); });
    std::vector<uint32_t> ids;
    ids.reserve(texts.size());
    for (const SortableText& text : texts) {
        ids.push_back(text.number);
    }
    return ids;
}
