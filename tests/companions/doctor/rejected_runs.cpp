#include "tests/companions/doctor/rejected_runs.h"

#include <gtest/gtest.h>
#include <tuple>

namespace {

// By counter of the summary: the reasons that are counted in it.
const std::map<std::string, Lines> counters = {
    {"BadRequest",
     {"unclosed-field", "too-few-fields", "invalid-client-address", "invalid-request-line",
      "invalid-time", "missing-fields"}},
    {"TimeBasedFiltered", {"before-period", "after-period"}},
    {"NonSessionRequest",
     {"no-session-cookie", "session-cookie-empty", "session-never-set", "no-client-address"}},
    {"Redirected", {"redirect-follow-up"}},
};

// Keys of the totals in JSON.
const std::map<std::string, std::string> keys = {{"Total", "total"},
                                                 {"BadRequest", "bad_request"},
                                                 {"TimeBasedFiltered", "time_based_filtered"},
                                                 {"NonSessionRequest", "non_session_request"},
                                                 {"Redirected", "redirected"}};

void add_line(RejectedRun& rejected, const nlohmann::json& line) {
    const ListedLine next = {line["file"], line["line"], line["reason"], line["text"]};
    if (!rejected.lines.empty()) {
        const ListedLine& last = rejected.lines.back();
        EXPECT_LT(std::tie(last.log, last.line_num), std::tie(next.log, next.line_num));
    }
    rejected.lines.push_back(next);
}

void expect_counts_of_lines(const RejectedRun& rejected) {
    std::map<std::string, long> listed;
    for (const ListedLine& line : rejected.lines) {
        ++listed[line.reason];
    }
    EXPECT_EQ(listed, rejected.counts);
}

} // namespace

Lines RejectedRun::reasons(const std::string& log) const {
    Lines reasons;
    for (const ListedLine& line : lines) {
        if (line.log == log) {
            reasons.push_back(std::to_string(line.line_num) + " " + line.reason);
        }
    }
    return reasons;
}

RejectedRun parse_rejected(const std::string& json_lines, bool is_whole) {
    RejectedRun rejected;
    for (const std::string& text : lines_of(json_lines)) {
        const nlohmann::json record = nlohmann::json::parse(text);
        EXPECT_TRUE(rejected.totals.is_null()) << "behind the totals: " << text;
        if (record["record"] == "line") {
            add_line(rejected, record);
        } else if (record["record"] == "count") {
            rejected.counts[record["reason"]] += record["count"].get<long>();
        } else {
            rejected.totals = record;
        }
    }
    if (is_whole) {
        expect_counts_of_lines(rejected);
    }
    return rejected;
}

RejectedRun rejected(const TestInstallation& installation, const Lines& words) {
    Lines all = words;
    all.push_back("--json");
    const RunResult listed = run_doctor(installation, "rejected", all);
    EXPECT_EQ(listed.errors, "");
    EXPECT_EQ(listed.status, 0);
    const RejectedRun parsed = parse_rejected(listed.output);
    expect_sums_of_run(parsed, installation.run(words));
    return parsed;
}

void expect_sums_of_run(const RejectedRun& rejected, const RunResult& run) {
    const auto count = [&](const std::string& reason) {
        const auto found = rejected.counts.find(reason);
        return found == rejected.counts.end() ? 0 : found->second;
    };
    long requests = rejected.totals["counted"].get<long>() + count("waiting-limit-reached");
    for (const auto& [counter, reasons] : counters) {
        long sum = 0;
        for (const std::string& reason : reasons) {
            sum += count(reason);
        }
        EXPECT_EQ(sum, run.counter(counter)) << counter << " of " << run.output;
        requests += sum;
    }
    EXPECT_EQ(requests, run.counter("Total")) << run.output;
    for (const auto& [counter, key] : keys) {
        EXPECT_EQ(rejected.totals[key], run.counter(counter)) << counter;
    }
}
