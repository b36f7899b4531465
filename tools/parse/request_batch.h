#pragma once

#include "tools/parse/line_outcome.h"
#include "tools/parse/line_tally.h"
#include "tools/parse/parsing_thread.h"
#include "tools/parse/request_interner.h"
#include "tools/parse/request_record.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

// A request that has to do with those whose session is not known yet: it waits for its session, or
// its response sets the session that others with its secondary cookie wait for.
struct SessionEvent {
    uint32_t row;                        // of the request in its batch
    int64_t line_num;                    // in the batch, from 1
    char akaau_id[max_cookie_length];    // value of its secondary cookie, not empty
    char jsession_id[max_cookie_length]; // value that the response sets
    bool waits;                          // else its response sets a session
    const char* url;                     // as logged, with debug lines that tell it; else null
};

// What a part of a log has given, in the order of its lines.
struct RequestBatch {
    RequestRows rows;
    std::deque<SessionEvent> events;
    std::vector<LineNote> notes;      // one for each line read, where they are asked for
    std::unique_ptr<LineTally> tally; // of the lines read; null where none is asked for
    threadCounter counters = {};
    int64_t line_count = 0;       // lines read, empty ones and comments included
    bool has_line_pieces = false; // a line was longer than the limit and came in pieces
};
