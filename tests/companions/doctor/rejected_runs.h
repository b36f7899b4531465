#pragma once

#include "tests/companions/doctor/doctor_runs.h"

#include <map>
#include <string>
#include <vector>

// What "rejected" lists.

struct ListedLine {
    std::string log;
    long line_num;
    std::string reason;
    std::string text;
};

struct RejectedRun {
    std::vector<ListedLine> lines;
    std::map<std::string, long> counts; // by reason, in all logs
    nlohmann::json totals;

    // The lines of a log in short, as "3 blank".
    Lines reasons(const std::string& log) const;
};

// Takes the JSON lines apart. They have to be in the order of logs and lines and, unless only a
// part is listed, to be as many as the counts say.
RejectedRun parse_rejected(const std::string& json_lines, bool is_whole = true);

// Runs the command, and the tool likewise, whose summary has to say the same as the counts.
RejectedRun rejected(const TestInstallation& installation, const Lines& words = {});

// Expects the counters of a run of the tool to be the sums of the counts.
void expect_sums_of_run(const RejectedRun& rejected, const RunResult& run);
