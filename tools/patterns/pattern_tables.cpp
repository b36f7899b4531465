#include "tools/patterns/pattern_tables.h"

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
