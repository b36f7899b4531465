#include "companions/shard/merge/merge_tables.h"

#include "base/text_arena.h"
#include "companions/shard/exchange/url_table.h"
#include "tools/urls/unique_urls.h"
#include "tools/urls/url_order.h"

#include <deque>
#include <queue>
#include <string>
#include <vector>

namespace {

// A table at its next URL.
class Cursor {
  public:
    Cursor(const TableSpool& spool, size_t table)
        : table_(table), reader_([&spool, table, part = size_t{0}]() mutable {
              return spool.part(table, part++);
          }) {}

    bool next() { return reader_.next_url(); }
    size_t table() const { return table_; }
    UrlTableReader& reader() { return reader_; }

    // Of two tables with one URL, the earlier one comes first.
    bool comes_after(const Cursor& other) const {
        const UrlKey key(reader_.url().key);
        const UrlKey other_key(other.reader_.url().key);
        return stands_before(other_key, key) ||
               (!stands_before(key, other_key) && table_ > other.table_);
    }

  private:
    size_t table_;
    UrlTableReader reader_;
};

struct ComesAfter {
    bool operator()(const Cursor* a, const Cursor* b) const { return a->comes_after(*b); }
};

using Cursors = std::priority_queue<Cursor*, std::vector<Cursor*>, ComesAfter>;

void put_back(Cursors& cursors, Cursor* cursor) {
    if (cursor->next()) {
        cursors.push(cursor);
    }
}

Cursor* take_next(Cursors& cursors) {
    Cursor* const next = cursors.top();
    cursors.pop();
    return next;
}

// Writes the queries that one table has for a URL, where they are wanted.
void write_queries(UrlTableReader& reader, std::string_view url, QueryList& query_list) {
    std::string query(url);
    for (uint64_t left = reader.url().query_count; left != 0; --left) {
        query.resize(url.size());
        query += reader.next_query();
        query_list.add(query);
    }
}

// Adds a URL that is next in the first of the tables, with what all tables have for it.
void add_url(Cursors& cursors, TextArena& texts, QueryList& query_list) {
    Cursor* cursor = take_next(cursors);
    const TabledUrl& first = cursor->reader().url();
    const std::string_view key(texts.copy("host_hdr", first.key), first.key.size());
    const std::string own_method(first.own_method);
    UrlInfo& entry =
        add_unique_url(texts, key, own_method.empty() ? nullptr : own_method.c_str(), 0);
    const bool has_queries = begin_queries(entry, key, query_list);
    while (cursor != nullptr) {
        entry.count += cursor->reader().url().count;
        if (has_queries) {
            write_queries(cursor->reader(), UrlKey(key).url, query_list);
        }
        put_back(cursors, cursor);
        const bool has_more = !cursors.empty() && cursors.top()->reader().url().key == key;
        cursor = has_more ? take_next(cursors) : nullptr;
    }
}

} // namespace

void merge_tables(const TableSpool& spool, QueryList& query_list) {
    std::deque<Cursor> all;
    Cursors cursors;
    for (size_t table = 0; table < spool.table_count(); ++table) {
        put_back(cursors, &all.emplace_back(spool, table));
    }
    TextArena texts;
    while (!cursors.empty()) {
        add_url(cursors, texts, query_list);
    }
    query_list.close();
}
