#include "companions/doctor/value_findings.h"

#include "companions/doctor/near_word.h"

#include <cctype>
#include <fmt/core.h>

namespace {

std::string write_expected(const ValueHelp& help) {
    return fmt::format("Write {}.", help.expected);
}

void add_separator_finding(FileFindings& findings, int line, const std::string& value,
                           const LineRemark& remark) {
    const char separator = remark.text[0];
    if (std::isalnum(static_cast<unsigned char>(separator)) == 0 && separator != '_') {
        findings.add(
            Severity::note, "separator", line, value,
            fmt::format("The character after {} is passed over, whatever it is.", remark.name),
            "Write a blank there.");
        return;
    }
    findings.add(
        Severity::warning, "keyword-prefix", line, value,
        fmt::format("The line only begins like {0}, but counts for it: its value is read "
                    "one character after {0}.",
                    remark.name),
        fmt::format("Write {} and a blank if that is meant, else take the line out.", remark.name));
}

void add_spacing_finding(FileFindings& findings, int line, const std::string& value,
                         const LineRemark& remark) {
    const bool is_return = remark.text.find('\r') != std::string::npos;
    findings.add(Severity::warning, is_return ? "carriage-return-in-value" : "tab-in-value", line,
                 value,
                 is_return ? "The carriage return at the end of the line belongs to the value, "
                             "which then fits nothing."
                           : "Only blanks end this value: the tab belongs to it, and so does what "
                             "follows.",
                 is_return ? "Take it out." : "Write a blank in its place.");
}

// A comment behind a value does no harm.
void add_rest_finding(FileFindings& findings, int line, const std::string& value,
                      const LineRemark& remark, const ValueHelp& help) {
    const size_t start = remark.text.find_first_not_of(" \t");
    const bool is_comment = start > 0 && remark.text.substr(start).starts_with('#');
    findings.add(is_comment ? Severity::note : Severity::warning, "rest-ignored", line, value,
                 fmt::format("Only what stands before '{}' is read.", remark.text),
                 is_comment ? "" : cure_by_words(value.substr(value.find(' ') + 1), help));
}

} // namespace

std::string first_word(const std::string& text) {
    return text.substr(0, text.find_first_of(" \t\r=:"));
}

std::string cure_by_words(const std::string& text, const ValueHelp& help) {
    const std::string near = nearest_word(first_word(text), help.words);
    return near.empty() ? write_expected(help)
                        : fmt::format("Write {} if that is meant, else {}.", near, help.expected);
}

void add_cut_line_finding(FileFindings& findings, int line, size_t longest) {
    findings.add(Severity::warning, "line-cut", line, "",
                 fmt::format("The line has more than {} characters. What is beyond them counts as "
                             "a line of its own, also in the numbers of the lines that follow.",
                             longest),
                 "Make the line shorter.");
}

void add_value_finding(FileFindings& findings, int line, const std::string& value,
                       const LineRemark& remark, const ValueHelp& help) {
    const auto warn = [&](const char* id, const std::string& meaning, const std::string& cure) {
        findings.add(Severity::warning, id, line, value, meaning, cure);
    };
    switch (remark.kind) {
    case ObservedKind::separator_skipped:
        add_separator_finding(findings, line, value, remark);
        break;
    case ObservedKind::value_missing:
        warn("value-missing", fmt::format("There is no value; it counts as {}.", help.otherwise),
             write_expected(help));
        break;
    case ObservedKind::value_unknown:
        warn("unknown-value",
             fmt::format("This is none of the words that are known here; it counts as {}.",
                         help.otherwise),
             cure_by_words(remark.text, help));
        break;
    case ObservedKind::not_a_number:
        warn("not-a-number", fmt::format("This is no number; it counts as {}.", help.otherwise),
             write_expected(help));
        break;
    case ObservedKind::number_out_of_range:
        warn("number-out-of-range",
             "The number is not one that can stand here; another one is taken, or the run fails.",
             write_expected(help));
        break;
    case ObservedKind::number_not_decimal:
        warn("number-not-decimal",
             "A number that begins with 0 is octal, and one that begins with 0x hexadecimal.",
             "Write it without the 0 at its beginning.");
        break;
    case ObservedKind::text_not_read:
        add_rest_finding(findings, line, value, remark, help);
        break;
    case ObservedKind::spacing_kept:
        add_spacing_finding(findings, line, value, remark);
        break;
    default:
        break; // says nothing of the value by itself
    }
}
