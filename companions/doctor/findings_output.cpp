#include "companions/doctor/findings_output.h"

#include "companions/common/counted.h"
#include "companions/common/shown_text.h"

#include <algorithm>
#include <fmt/core.h>
#include <map>

namespace {

constexpr size_t value_width = 200;
constexpr size_t most_printed = 50; // of one id

const char* name_of(Severity severity) {
    return severity == Severity::error     ? "error"
           : severity == Severity::warning ? "warning"
                                           : "note";
}

std::string styled_name(Severity severity, const Style& style) {
    const char* const name = name_of(severity);
    return severity == Severity::error     ? style.error(name)
           : severity == Severity::warning ? style.warning(name)
                                           : style.note(name);
}

Findings errors_first(Findings findings) {
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.severity < b.severity; });
    return findings;
}

size_t count_of(const Findings& findings, Severity severity) {
    return static_cast<size_t>(
        std::count_if(findings.begin(), findings.end(),
                      [severity](const Finding& finding) { return finding.severity == severity; }));
}

// File and line as compilers write them, so that editors can go there; empty without a file.
std::string place_of(const Finding& finding) {
    const std::string file = shown_text(finding.file);
    return file.empty()        ? file
           : finding.line == 0 ? file + ": "
                               : fmt::format("{}:{}: ", file, finding.line);
}

void print_finding(FILE* stream, const Finding& finding, const Style& style) {
    const std::string value = shown_text(finding.value, value_width);
    fmt::print(stream, "{}{}: {}{}[{}]\n", style.heading(place_of(finding)),
               styled_name(finding.severity, style), value, value.empty() ? "" : " ", finding.id);
    fmt::print(stream, "    {}\n", shown_text(finding.meaning));
    if (!finding.cure.empty()) {
        fmt::print(stream, "    Cure: {}\n", shown_text(finding.cure));
    }
}

nlohmann::json as_json(const Finding& finding) {
    return {{"id", finding.id},
            {"severity", name_of(finding.severity)},
            {"file", valid_utf8(finding.file)},
            {"line", finding.line},
            {"value", valid_utf8(finding.value)},
            {"meaning", valid_utf8(finding.meaning)},
            {"cure", valid_utf8(finding.cure)}};
}

} // namespace

int exit_status_of(const Findings& findings) {
    return count_of(findings, Severity::error) > 0     ? 2
           : count_of(findings, Severity::warning) > 0 ? 1
                                                       : 0;
}

void print_findings(FILE* stream, const Findings& findings) {
    const Style style(stream);
    std::map<std::string, size_t> counts;
    for (const Finding& finding : errors_first(findings)) {
        if (++counts[finding.id] <= most_printed) {
            print_finding(stream, finding, style);
        }
    }
    for (const auto& [id, count] : counts) {
        if (count > most_printed) {
            fmt::print(stream, "{} more [{}]; --json lists all.\n", count - most_printed, id);
        }
    }
    fmt::print(stream, "{}, {}, {}\n", counted(count_of(findings, Severity::error), "error"),
               counted(count_of(findings, Severity::warning), "warning"),
               counted(count_of(findings, Severity::note), "note"));
}

nlohmann::json findings_as_json(const Findings& findings) {
    nlohmann::json list = nlohmann::json::array();
    for (const Finding& finding : errors_first(findings)) {
        list.push_back(as_json(finding));
    }
    return {{"findings", list},
            {"errors", count_of(findings, Severity::error)},
            {"warnings", count_of(findings, Severity::warning)},
            {"notes", count_of(findings, Severity::note)},
            {"exit_status", exit_status_of(findings)}};
}

void print_json(FILE* stream, const nlohmann::json& json) {
    constexpr int one_line = -1;
    constexpr bool in_ascii = true;
    fmt::print(stream, "{}\n", json.dump(one_line, ' ', in_ascii));
}
