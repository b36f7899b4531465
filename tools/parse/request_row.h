#pragma once

#include <cstdint>

// What is kept of an accepted request until it is counted: the rows of a run are its request table.
struct RequestRow {
    uint64_t time_stamp;      // seconds, on the scale of tools/parse/timestamps.h
    uint32_t session;         // id of its session's text (tools/parse/request_interner.h)
    uint32_t url : 31;        // id of its URL key (tools/parse/url_key.h)
    uint32_t is_redirect : 1; // its response sends the browser to another location
    const char* own_texts;    // tools/parse/own_texts.h; null: none
};
static_assert(sizeof(RequestRow) == 24);

constexpr uint32_t max_requests = 0x7fffffff; // of a run: so many ids a URL has the bits for
