#pragma once

#include "companions/doctor/rejected/explained_logs.h"
#include "companions/doctor/rejected/log_texts.h"

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

// The lines that do not count, with their texts, in the order of logs and lines.

struct RejectedLine {
    int file;         // index into seq_file_path
    int64_t line_num; // in the log, from 1
    Rejection why;
    LogText text;
};

struct ChosenLines {
    uint64_t limit;   // the first ones, so many
    size_t text_size; // bytes that are needed of each line's text
};

// Appends a line of output. Called by several threads at a time.
using RejectedLineForm = std::function<void(std::string& output, const RejectedLine& line)>;

// Writes lines, reading their texts from the logs once more. Fails when `stream` does not take all.
void write_rejected_lines(FILE* stream, const ExplainedLogs& logs, const ChosenLines& chosen,
                          const RejectedLineForm& form);

// Writes all of a text, or fails.
void write_output(FILE* stream, std::string_view text);
