#include "tools/patterns/pattern_tables.h"

#include "base/allocation.h"

#include <algorithm>
#include <cstring>

UPInfo* filter_url_pattern = nullptr;
int total_filter_url_pattern = 0;
int max_filter_url_pattern = 0;

UPInfo* inline_url_pattern = nullptr;
int total_inline_url_pattern = 0;
int max_inline_url_pattern = 0;

UPInfo* main_url_pattern = nullptr;
int total_main_url_pattern = 0;
int max_main_url_pattern = 0;

UPInfo* main_wotx_url_pattern = nullptr;
int total_main_wotx_url_pattern = 0;
int max_main_wotx_url_pattern = 0;

const PatternTable pattern_tables[pattern_kind_count] = {
    {"filter_url_pattern", filter_url_pattern, total_filter_url_pattern, max_filter_url_pattern},
    {"inline_url_pattern", inline_url_pattern, total_inline_url_pattern, max_inline_url_pattern},
    {"main_url_pattern", main_url_pattern, total_main_url_pattern, max_main_url_pattern},
    {"main_wotx_url_pattern", main_wotx_url_pattern, total_main_wotx_url_pattern,
     max_main_wotx_url_pattern},
};

UPInfo& next_pattern(const PatternTable& table) {
    constexpr int growth = 1000;
    if (table.total == table.max) {
        table.entries = static_cast<UPInfo*>(grow_table(table.name, table.entries, table.total,
                                                        table.total + growth, sizeof(UPInfo)));
        table.max += growth;
    }
    return table.entries[table.total];
}

void sort_pattern_tables() {
    for (const PatternTable& table : pattern_tables) {
        fill_seq_in_url_pattern_table(table.entries, table.total);
    }
}

int sort_url_pattern_table(const UPInfo& a, const UPInfo& b) {
    return std::strcmp(a.url_ptrn_string, b.url_ptrn_string);
}

void fill_seq_in_url_pattern_table(UPInfo* pattern_table, int pattern_count) {
    std::stable_sort(
        pattern_table, pattern_table + pattern_count,
        [](const UPInfo& a, const UPInfo& b) { return sort_url_pattern_table(a, b) < 0; });
    int parent = 0;
    for (int i = 0; i < pattern_count; ++i) {
        if (sort_url_pattern_table(pattern_table[parent], pattern_table[i]) != 0) {
            parent = i;
        }
        pattern_table[i].parent_seq = parent;
    }
}
