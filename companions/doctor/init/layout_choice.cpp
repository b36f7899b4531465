#include "companions/doctor/init/layout_choice.h"

#include "base/file_descriptor.h"
#include "companions/doctor/init/further_fields.h"
#include "companions/doctor/init/log_format.h"
#include "companions/doctor/init/w3c_choice.h"

#include <algorithm>
#include <fmt/core.h>
#include <string_view>
#include <utility>

namespace {

constexpr double least_share = 0.1; // of lines, for a log to belong to a scenario
constexpr size_t shown_value = 300; // characters of a line

bool has_errors(const Findings& findings) {
    return std::ranges::any_of(
        findings, [](const Finding& finding) { return finding.severity == Severity::error; });
}

void append(Findings& findings, const Findings& more) {
    findings.insert(findings.end(), more.begin(), more.end());
}

Finding left_out(const LogSample& sample, const LayoutScore& score, const char* id,
                 const std::string& meaning) {
    return {id,
            Severity::warning,
            sample.path,
            0,
            score.refused_line.substr(0, shown_value),
            fmt::format("{} It is left out: {}.", meaning, main_reason(score)),
            "If it is an access log, make a scenario of its own for it, with --log-format."};
}

// Logs in which no layout finds requests, such as error logs in the same folder; none when that is
// said of all.
void leave_out_other_files(std::vector<LogSample>& samples, LayoutChoice& choice) {
    std::vector<LogSample> kept;
    Findings findings;
    for (const LogSample& sample : samples) {
        const std::vector<LayoutScore> scores = score_known_layouts({sample});
        if (scores.front().share() >= least_share) {
            kept.push_back(sample);
        } else {
            findings.push_back(left_out(sample, scores.front(), "no-access-log",
                                        "No known layout finds requests in this file."));
        }
    }
    if (!kept.empty()) {
        samples = std::move(kept);
        append(choice.findings, findings);
    }
}

void leave_out_other_layouts(std::vector<LogSample>& samples, const KnownLayout& known,
                             LayoutChoice& choice) {
    std::erase_if(samples, [&](const LogSample& sample) {
        const LayoutScore score = score_layout(known, {sample});
        if (score.share() >= least_share) {
            return false;
        }
        choice.findings.push_back(
            left_out(sample, score, "other-layout", "The log has another layout than the others."));
        return true;
    });
}

std::string reason_of(const LayoutScore& score) {
    return fmt::format("Layout of the logs: {}. {} of {} lines that were tried fit.",
                       score.layout.name, score.fitting_count, score.line_count);
}

// Takes a layout whose score is good; else says what is wrong with it.
void take(std::vector<LogSample>& samples, const KnownLayout& known, LayoutChoice& choice) {
    leave_out_other_layouts(samples, known, choice);
    const LayoutScore score = score_layout(known, samples);
    choice.layout = known.layout;
    choice.reason = reason_of(score);
    if (choice.scores.empty()) {
        choice.scores.push_back(score);
    }
}

// Whether a time such as 2026-03-10T05:09:58 stands in the line.
bool has_iso_time(std::string_view line) {
    constexpr std::string_view form = "dddd-dd-ddTdd:dd";
    const auto matches = [&](size_t at) {
        return std::ranges::equal(line.substr(at, form.size()), form, [](char c, char expected) {
            return expected == 'd' ? c >= '0' && c <= '9' : c == expected;
        });
    };
    for (size_t at = line.find('T'); at != std::string_view::npos; at = line.find('T', at + 1)) {
        if (at >= form.find('T') && matches(at - form.find('T'))) {
            return true;
        }
    }
    return false;
}

// What is known to be wrong with such a line; else `otherwise`.
std::string meaning_of(std::string_view line, const std::string& otherwise) {
    if (line.starts_with('{')) {
        return "The log is JSON, which the tool cannot read.";
    }
    return has_iso_time(line) ? "The times have a form that the tool cannot read; it reads those "
                                "that servers write by themselves, 10/Mar/2026:05:09:58 +0000."
                              : otherwise;
}

void fail_to_choose(LayoutChoice& choice, const char* id, const std::string& otherwise) {
    const std::string line = choice.scores.empty() ? "" : choice.scores.front().refused_line;
    choice.findings.push_back(
        {id, Severity::error, "", 0, line.substr(0, shown_value), meaning_of(line, otherwise),
         "Give the server's format: --log-format and the string of LogFormat (Apache) or "
         "log_format (nginx). Logs of different layouts need a scenario each."});
}

void choose_given(std::vector<LogSample>& samples, const std::string& log_format,
                  LayoutChoice& choice) {
    const FormatReading reading = read_log_format(log_format);
    append(choice.findings, reading.findings);
    if (has_errors(reading.findings)) {
        return;
    }
    const KnownLayout known = {reading.layout, reading.layout.field_count()};
    choice.scores = {score_layout(known, samples)};
    if (is_clear(choice.scores)) {
        take(samples, known, choice);
        return;
    }
    const double share = choice.scores.front().share();
    choice.scores = score_known_layouts(samples);
    choice.scores.insert(choice.scores.begin(), score_layout(known, samples));
    fail_to_choose(choice, "format-does-not-fit",
                   fmt::format("The given format fits {:.0f} % of the lines: {}.", share * 100,
                               main_reason(choice.scores.front())));
}

void choose_known(std::vector<LogSample>& samples, LayoutChoice& choice) {
    leave_out_other_files(samples, choice);
    choice.scores = score_known_layouts(samples);
    if (!is_clear(choice.scores)) {
        fail_to_choose(choice, "no-clear-layout", "No known layout fits most of the lines.");
        return;
    }
    KnownLayout known = {choice.scores.front().layout, choice.scores.front().line_fields};
    leave_out_other_layouts(samples, known, choice);
    append(choice.findings, add_further_fields(samples, known.layout));
    take(samples, known, choice);
    append(choice.findings, missing_fields(known.layout));
}

void choose_w3c(std::vector<LogSample>& samples, LayoutChoice& choice) {
    const W3cChoice w3c = choose_w3c_layout(samples);
    append(choice.findings, w3c.findings);
    append(choice.findings, missing_fields(w3c.layout));
    if (!has_errors(choice.findings)) {
        take(samples, {w3c.layout, w3c.layout.field_count()}, choice);
    }
}

} // namespace

LayoutChoice choose_layout(std::vector<LogSample>& samples, const std::string& log_format) {
    LayoutChoice choice;
    if (!samples.empty() && !log_format.empty()) {
        choose_given(samples, log_format, choice);
    } else if (!samples.empty() && are_w3c_logs(samples)) {
        choose_w3c(samples, choice);
    } else if (!samples.empty()) {
        choose_known(samples, choice);
    }
    if (samples.empty()) { // as no log was, or none that fits the layout
        choice.findings.push_back({"no-logs", Severity::error, "", 0, "",
                                   "No log is left of what was named: no scenario is written.",
                                   "Name other logs."});
        choice.layout.reset();
    }
    return choice;
}
