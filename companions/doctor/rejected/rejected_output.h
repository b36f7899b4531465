#pragma once

#include "companions/doctor/rejected/explained_logs.h"
#include "companions/doctor/rejected/rejected_lines.h"

#include <cstdint>
#include <cstdio>

// The rejected lines and their counts, in three forms: for people, as tab-separated text, and as
// JSON, one object a line.

struct RejectedOutput {
    enum class Form { table, tsv, json };

    Form form;
    uint64_t limit;    // lines that are listed at most
    size_t text_width; // characters that are shown of a line
};

// Writes lines, counts by log and reason (for people before the lines, which may be many), and the
// totals of the run, which has to have loaded the logs. Fails when `stream` does not take all.
void write_rejected(FILE* stream, const ExplainedLogs& logs, const RejectedOutput& output);
