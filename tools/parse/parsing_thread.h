#pragma once

#include "base/line_text.h"
#include "base/text_arena.h"
#include "tools/parse/line_outcome.h"
#include "tools/parse/request_interner.h"
#include "tools/parse/request_parts.h"

#include <cstdint>
#include <string>

// Requests of one worker thread, by outcome; one row of the table that is summed up after the
// threads have ended.
struct threadCounter {
    uint64_t total_req;         // lines handed to a parser
    uint64_t time_filtered_req; // of these, outside the replay period
    uint64_t bad_req;           // of these, not to be parsed into a request
};
static_assert(sizeof(threadCounter) == 24);

// What one worker thread carries from line to line. No other thread touches it.
struct ParsingThread {
    MarkCursor* quotes = nullptr;       // of the current line; the reader's
    RequestFields fields = {};          // of the current line
    alInfo request = {};                // likewise, when it is accepted
    RequestInterner interner = {};      // of its requests
    TextArena own_texts = {};           // of its requests
    threadCounter counters = {};        // of the lines since somebody has cleared them
    LineOutcome outcome = {};           // of the line parsed last
    std::string joined_url = {};        // URL and query string of the current line
    std::string resolved_location = {}; // of the current line
};
