#pragma once

#include "base/line_reader.h"
#include "tools/parse/request_batch.h"

#include <cstddef>
#include <cstdint>
#include <functional>

constexpr size_t log_line_size = 102400; // of the line buffer whose limit lines are held to

// The part of an access log that is loaded at a time.
struct LogPart {
    const char* file_name;    // for messages
    int64_t lines_before;     // in the file
    int64_t max_lines;        // no more are read
    bool ends_with_rest;      // characters behind the file's last line feed are a line
    bool takes_notes = false; // of what becomes of each line; never in the tool
    bool takes_tally = false; // likewise
    uint64_t begin = 0;       // bytes of the file before it, for the notes
};

// Called after each line; returns false when no further one is to be read. Empty: nobody asks.
using AfterLine = std::function<bool()>;

// Parses the lines that `lines` gives, whose mark is field_quote, and appends the accepted requests
// with their sessions to `batch`, which also gets what happened to them and, counted, all lines.
// Fails when the file cannot be read.
void load_url_info(ParsingThread& thread, LineReader& lines, const LogPart& part,
                   RequestBatch& batch, const AfterLine& after_line);
