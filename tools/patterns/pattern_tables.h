#pragma once

#include "base/request_values.h"

#include <cstdint>
#include <regex.h>

// The tester's URL patterns, in one table for each kind.

struct UrlPatternInfo {
    char* txn_name;                     // transaction of a main pattern, owned; else na_string
    char* host;                         // the only host it fits, owned; na_string: any host
    regex_t url_ptrn_regex;             // the compiled pattern
    char* url_ptrn_string;              // the pattern as written, owned
    char* post_data_file;               // path, owned; null: none
    char method[max_method_length + 1]; // the only method it fits; "NA": any method
    char pattern_type;                  // not used; the table tells the kind
    int parent_seq;                     // index of the first entry with the same pattern text
};
using UPInfo = UrlPatternInfo;
static_assert(sizeof(UPInfo) == 120);

// The tables with their entries in use and allocated. Filled by save_filter_url_pattern and
// save_url_pattern, sorted by fill_seq_in_url_pattern_table, all on the main thread before logs are
// loaded; only read afterwards.
extern UPInfo* filter_url_pattern; // URLs marked as filtered in url.list
extern int total_filter_url_pattern;
extern int max_filter_url_pattern;

extern UPInfo* inline_url_pattern; // objects that a page brings along
extern int total_inline_url_pattern;
extern int max_inline_url_pattern;

extern UPInfo* main_url_pattern; // pages with a transaction
extern int total_main_url_pattern;
extern int max_main_url_pattern;

extern UPInfo* main_wotx_url_pattern; // pages without a transaction
extern int total_main_wotx_url_pattern;
extern int max_main_wotx_url_pattern;

constexpr int32_t no_pattern = -1; // in place of an index into a table

// The kinds in the order in which their tables decide what a URL is.
enum PatternKind {
    PATTERN_FILTER,
    PATTERN_INLINE,
    PATTERN_MAIN,
    PATTERN_MAIN_WITHOUT_TX,
    pattern_kind_count
};

// One of the tables above, for code that treats them all alike.
struct PatternTable {
    const char* name; // as messages about memory have it
    UPInfo*& entries;
    int& total; // entries in use
    int& max;   // entries allocated
};
extern const PatternTable pattern_tables[pattern_kind_count]; // by kind

// The zeroed entry after the last one in use, for the caller to fill and to count in `total`. The
// table, which may move, grows by 1,000 entries at a time.
UPInfo& next_pattern(const PatternTable& table);

// Makes all tables ready to be searched: fill_seq_in_url_pattern_table of each.
void sort_pattern_tables();

// Sorts a table by pattern text, entries of equal text in file order, and gives the entries of each
// text the index of the first of them as parent_seq.
void fill_seq_in_url_pattern_table(UPInfo* pattern_table, int pattern_count);

// Order of two entries: byte-wise by pattern text. Less than, equal to or greater than 0.
int sort_url_pattern_table(const UPInfo& a, const UPInfo& b);
