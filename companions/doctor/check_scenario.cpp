#include "companions/doctor/check_scenario.h"

#include "companions/doctor/check_log_files.h"
#include "companions/doctor/check_zone.h"
#include "companions/doctor/content_form.h"
#include "companions/doctor/input_file.h"
#include "companions/doctor/near_word.h"
#include "companions/doctor/observed_file.h"
#include "companions/doctor/value_findings.h"
#include "tools/config/log_files.h"
#include "tools/config/replay_period.h"
#include "tools/config/scenario_file.h"
#include "tools/driver/paths.h"

#include <fmt/core.h>
#include <string>
#include <vector>

namespace {

constexpr const char* date_form = "mm/dd/yyyy hh:mm:ss, as 03/10/2026 18:00:00";
constexpr const char* log_form = "REPLAY_LOG_FILE PATH x 0 HTTP, with no blank in the path";

const ValueHelp type_help = {"HTTP, HTTPS or POST for a file of request bodies",
                             "a log like any other",
                             {"HTTP", "HTTPS", "POST"}};
const ValueHelp count_help = {
    "a number of lines to take, or 0 for all, and no blank in the path", "0, which is all", {}};
const ValueHelp period_help = {
    "REPLAY_PERIOD START or REPLAY_PERIOD END, and a date", "nothing", {"START", "END"}};
const ValueHelp date_help = {date_form, "another time", {}};

const ValueHelp& help_of(const LineRemark& remark) {
    if (remark.name == log_file_keyword) {
        return remark.kind == ObservedKind::value_unknown ? type_help : count_help;
    }
    return remark.name == "REPLAY_PERIOD" ? period_help : date_help;
}

class ScenarioLines {
  public:
    explicit ScenarioLines(FileFindings& findings) : findings_(findings) {}

    void look_at(const ReadLine& line) {
        if (line.has(ObservedKind::line_cut)) {
            add_cut_line_finding(findings_, line.number, scenario_line_size - 1);
        }
        if (line.outcome.kind == ObservedKind::unknown_keyword) {
            look_at_unknown(line);
        } else if (!line.failure.empty()) {
            report_failure(line);
        } else if (line.outcome.kind == ObservedKind::taken) {
            look_at_value(line);
        }
    }

    // What is known once all lines are read.
    void finish() {
        if (period_.start != 0 && period_.end != 0 && start_time_stamp > end_time_stamp) {
            findings_.add(Severity::error, "period-empty", period_.end,
                          shown_moment(end_time_stamp),
                          fmt::format("The period ends before it starts (line {}), so that no "
                                      "request counts.",
                                      period_.start),
                          "Correct one of its ends.");
        }
        if (logs_.empty()) {
            findings_.add(Severity::error, "no-logs", 0, "",
                          "The scenario names no log, so that a run gives nothing.",
                          fmt::format("Give lines as {}.", log_form));
        }
        if (other_keywords_ > 0) {
            findings_.add(
                Severity::note, "other-keywords", first_other_line_, first_other_keyword_,
                fmt::format("{} of other programs, or of none, which a run passes over.",
                            other_keywords_ == 1
                                ? "This is a line"
                                : fmt::format("This is the first of {} lines", other_keywords_)));
        }
    }

    const std::vector<NamedLog>& logs() const { return logs_; }
    const PeriodLines& period() const { return period_; }

  private:
    // Of a line that names a log no more than the path is told with the line itself.
    static std::string text_of(const ReadLine& line, const LineRemark& remark) {
        const std::string text = line.outcome.name + " " + line.outcome.text;
        return line.outcome.name == log_file_keyword ? text + " ... " + remark.text : text;
    }

    void look_at_unknown(const ReadLine& line) {
        std::string text = line.outcome.text;
        if (line.number == 1 && text.starts_with(utf8_mark)) {
            text.erase(0, utf8_mark.size());
        }
        const size_t start = text.find_first_not_of(" \t\r");
        const std::string word = start == std::string::npos ? "" : first_word(text.substr(start));
        const std::string near = nearest_word(word, {"REPLAY_LOG_FILE", "REPLAY_PERIOD"});
        if (!near.empty()) {
            findings_.add(Severity::warning, "unknown-keyword", line.number, line.outcome.text,
                          "No keyword stands at the start of the line, which a run passes over.",
                          fmt::format("Write {} at the start of the line if that is meant.", near));
        } else if (!word.empty() && word[0] != '#' && other_keywords_++ == 0) {
            first_other_keyword_ = word;
            first_other_line_ = line.number;
        }
    }

    void report_failure(const ReadLine& line) {
        const bool is_date = line.outcome.kind == ObservedKind::value_malformed;
        if (line.outcome.kind == ObservedKind::too_many_logs && has_too_many_logs_++ > 0) {
            return; // one line says it
        }
        findings_.add(Severity::error, is_date ? "period-malformed" : "log-line-refused",
                      line.number, line.outcome.text, line.failure + ": a run fails.",
                      is_date ? fmt::format("Write {}, or NA for no bound.", date_form)
                      : has_too_many_logs_ > 0
                          ? "Join logs of one server into one file, oldest first."
                          : fmt::format("Write {}.", log_form));
    }

    void look_at_value(const ReadLine& line) {
        for (const LineRemark& remark : line.remarks) {
            if (remark.kind == ObservedKind::date_out_of_range) {
                report_odd_date(line, remark);
            } else if (remark.kind == ObservedKind::value_set) {
                report_bound(line, remark);
            } else {
                add_value_finding(findings_, line.number, text_of(line, remark), remark,
                                  help_of(remark));
            }
        }
        if (line.outcome.name == log_file_keyword) {
            const InputFileInfo& file = seq_file_path[num_al_files - 1];
            logs_.push_back({file.input_file, line.number, file.body_flag != 0, file.num_req});
        }
    }

    void report_odd_date(const ReadLine& line, const LineRemark& remark) {
        findings_.add(Severity::warning, "date-out-of-range", line.number, remark.text,
                      "There is no such date, or it is before 1970; the time that counts is "
                      "another.",
                      fmt::format("Write {}.", date_form));
    }

    void report_bound(const ReadLine& line, const LineRemark& remark) {
        const bool is_start = remark.name == "START";
        int& bound_line = is_start ? period_.start : period_.end;
        if (bound_line != 0) {
            findings_.add(Severity::warning, "period-twice", bound_line, remark.name,
                          fmt::format("Line {} sets it again; the last line counts.", line.number),
                          "Take one of the lines out.");
        }
        bound_line = line.number;
        findings_.add(Severity::note, is_start ? "period-start" : "period-end", line.number,
                      remark.text,
                      fmt::format("The period {} with {}.", is_start ? "starts" : "ends",
                                  shown_moment(is_start ? start_time_stamp : end_time_stamp)));
    }

    FileFindings& findings_;
    std::vector<NamedLog> logs_;
    PeriodLines period_;
    int has_too_many_logs_ = 0;
    int other_keywords_ = 0;
    int first_other_line_ = 0;
    std::string first_other_keyword_;
};

} // namespace

PeriodLines check_scenario(Findings& findings) {
    FileFindings own(findings, scenario_file_path());
    const InputForm form = check_input_file(own);
    if (!form.is_readable || form.is_utf16) {
        return {};
    }
    ScenarioLines lines(own);
    const std::string failure = read_observed([&] { read_scenario_file(own.file()); },
                                              [&](const ReadLine& line) { lines.look_at(line); });
    if (!failure.empty()) {
        own.add(Severity::error, "scenario-refused", 0, "", failure + ": a run fails.");
    }
    lines.finish();
    check_log_files(own, lines.logs());
    check_instances(own);
    return lines.period();
}
