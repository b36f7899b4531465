#pragma once

#include "tools/patterns/pattern_tables.h"
#include "tools/urls/unique_urls.h"

#include <cstdint>

// Classification of the unique URLs by the tester's patterns. The first table of filter, inline,
// main and main without transaction that holds a fitting pattern decides.

constexpr char REQUEST_TYPE_MAIN = 0;
constexpr char REQUEST_TYPE_MAIN_WITHOUT_TX = 1;
constexpr char REQUEST_TYPE_INLINE = 2;

// Requests behind the inline URLs that were left out. Counted by fill_pattern_index.
extern uint64_t total_inline_filtered;

// Sets pattern_table_idx, request_type, filter_flag and ignore_flag of every entry of url_pattern.
// The pattern tables must have been through sort_pattern_tables.
void fill_pattern_index();

// The pattern that decided what a classified URL is; null when none fits it. Not to be asked of a
// URL that is left out.
const UPInfo* deciding_pattern(const UrlInfo& entry);

// Order of two unique URLs by request type. Less than, equal to or greater than 0.
int bring_main_url_first(const UrlInfo& a1, const UrlInfo& a2);

// Sorts url_pattern by request type; URLs of one type stay in their order.
void sort_by_request_type();
