#include "companions/doctor/check_logs.h"

#include "base/failure.h"
#include "cache/input_copies.h"
#include "companions/doctor/check_zone.h"
#include "companions/doctor/field_view.h"
#include "companions/doctor/near_word.h"
#include "companions/doctor/parsed_sample.h"
#include "companions/doctor/rejected/rejection.h"
#include "tools/config/field_layout.h"
#include "tools/config/log_files.h"
#include "tools/config/replay_period.h"
#include "tools/config/replay_settings.h"
#include "tools/driver/paths.h"

#include <algorithm>
#include <fmt/core.h>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr const char* layout_cure =
    "Let the AL_FIELD lines name the fields as this log has them; zvr_al_doctor init finds out.";

constexpr size_t most_characters = 500; // of a line of a log

double percent(uint64_t part, uint64_t whole) {
    return whole == 0 ? 0.0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole);
}

std::string share(uint64_t part, uint64_t whole) {
    return fmt::format("{} of {} ({:.3g} %)", part, whole, percent(part, whole));
}

// ------------------------------------------------------------------- lines that are rejected

std::string cure_of(LineKind kind) {
    switch (kind) {
    case LineKind::invalid_client_address:
        return "Let sessions go by a cookie, USER_SESSION_KEY cookie, or name the field that "
               "holds an IPv4 address.";
    case LineKind::invalid_time:
        return al_type == AL_TYPE_APACHE
                   ? "Let AL_FIELD DATE_AND_TIME name the field that holds the time, as "
                     "[10/Oct/2000:13:55:36 -0700]."
                   : "Let AL_FIELD DATE and AL_FIELD TIME name the fields that hold date and "
                     "time, as 2000-10-10 and 13:55:36.";
    default:
        return layout_cure;
    }
}

std::string place_of(const SampledLine& line) {
    return line.line_num == 0 ? "" : fmt::format("line {}: ", line.line_num);
}

Severity severity_of(const ParsedSample& sample, uint64_t rejected) {
    constexpr double usual_percent = 5; // that scanners and broken clients give
    const bool counts_none = sample.accepted + sample.before + sample.after == 0;
    return counts_none                                          ? Severity::error
           : percent(rejected, sample.requests) > usual_percent ? Severity::warning
                                                                : Severity::note;
}

void report_reason(FileFindings& findings, const ParsedSample& sample, LineKind kind,
                   const RejectedSample& rejected, Severity severity) {
    const RejectionText& why = text_of(rejection_of_line(kind));
    std::string meaning =
        fmt::format("{} requests in the sample are bad, {}: {}.",
                    share(rejected.count, sample.requests), why.name, why.meaning);
    SampledLine first = {0, ""};
    if (!rejected.examples.empty()) {
        first = rejected.examples.front();
        meaning += " " + fields_as_seen(first.text);
    }
    const size_t shown = severity == Severity::note ? 1 : rejected.examples.size();
    for (size_t i = 1; i < shown; ++i) {
        meaning += fmt::format(" Also {}{}", place_of(rejected.examples[i]),
                               rejected.examples[i].text.substr(0, most_characters));
    }
    findings.add(severity, "log-lines-rejected", static_cast<int>(first.line_num),
                 first.text.substr(0, most_characters), meaning,
                 severity == Severity::note ? "" : cure_of(kind));
}

// Adds a finding for each reason. One of which there are few is shown by the first log that has it.
void report_rejected(FileFindings& findings, const ParsedSample& sample,
                     std::set<LineKind>& reasons_noted) {
    for (const auto& [kind, rejected] : sample.rejected) {
        const Severity severity = severity_of(sample, rejected.count);
        if (severity != Severity::note || reasons_noted.insert(kind).second) {
            report_reason(findings, sample, kind, rejected, severity);
        }
    }
}

// Numbers by reason, as " (3 too-few-fields)"; empty when there are none.
std::string rejected_by_reason(const ParsedSample& sample) {
    std::string list;
    for (const auto& [kind, rejected] : sample.rejected) {
        list += fmt::format("{}{} {}", list.empty() ? " (" : ", ", rejected.count,
                            text_of(rejection_of_line(kind)).name);
    }
    return list.empty() ? list : list + ")";
}

// ------------------------------------------------------------------------------------- times

std::string bound(unsigned long time, const char* none) {
    return time == 0 ? none : shown_moment(time);
}

std::string moments(uint64_t first, uint64_t last) {
    return first == last ? shown_moment(first) : shown_moment(first) + " to " + shown_moment(last);
}

bool is_outside_period(const ParsedSample& sample) {
    return sample.accepted == 0 && sample.before + sample.after != 0;
}

std::string period_cure(const DecidingLines& lines) {
    return fmt::format("Correct REPLAY_PERIOD, whose times are in the zone of the replay, {}, or "
                       "name logs of that time.",
                       lines.zone == 0 ? "which is the local one"
                                       : fmt::format("GMT_OFFSET in line {} of {}", lines.zone,
                                                     replay_zone_file()));
}

std::string outside_text(const char* what, uint64_t before, uint64_t after) {
    return fmt::format("All requests in the sample{} with a time are outside the replay period, "
                       "which is from {} to {}: {} before, {} after it.",
                       what, bound(start_time_stamp, "any time"), bound(end_time_stamp, "any time"),
                       before, after);
}

void report_outside(FileFindings& findings, const ParsedSample& sample,
                    const DecidingLines& lines) {
    findings.add(Severity::warning, "log-outside-period", 0,
                 moments(sample.first_time, sample.last_time),
                 outside_text("", sample.before, sample.after), period_cure(lines));
}

// Of all logs, which is a mistake of the scenario: told at the bound that leaves out the most.
void report_all_outside(Findings& findings, const std::vector<ParsedSample>& samples,
                        const DecidingLines& lines) {
    ParsedSample all = samples.front();
    for (size_t i = 1; i < samples.size(); ++i) {
        all.before += samples[i].before;
        all.after += samples[i].after;
        all.first_time = std::min(all.first_time, samples[i].first_time);
        all.last_time = std::max(all.last_time, samples[i].last_time);
    }
    FileFindings scenario(findings, scenario_file_path());
    scenario.add(Severity::error, "log-outside-period",
                 all.before > all.after ? lines.period.start : lines.period.end,
                 moments(all.first_time, all.last_time),
                 outside_text("s", all.before, all.after) + " A run gives nothing.",
                 period_cure(lines));
}

// ------------------------------------------------------------------------------ the log itself

std::string session_word() {
    return session_mode == SESSION_MODE_COOKIE ? "the session cookie" : "a client address";
}

void report_sample(FileFindings& findings, const ParsedSample& sample) {
    if (sample.requests == 0) {
        findings.add(Severity::warning, "log-without-requests", 0, "",
                     fmt::format("The {} lines in the sample are empty or comments.", sample.lines),
                     "Name a log that holds requests.");
        return;
    }
    const bool has_times = sample.first_time != 0;
    const uint64_t outside = sample.before + sample.after;
    const uint64_t bad = sample.requests - sample.accepted - outside;
    findings.add(
        Severity::note, "log-sample", 0,
        has_times ? moments(sample.first_time, sample.last_time) : "",
        fmt::format("{} requests{} are accepted, {} outside the replay period, {} bad{}; {} of the "
                    "accepted have {}.",
                    share(sample.accepted, sample.requests),
                    sample.is_whole ? "" : " in a sample of the log", outside, bad,
                    rejected_by_reason(sample),
                    share(sample.accepted - sample.without_session, sample.accepted),
                    session_word()));
}

void report_log(Findings& findings, const ParsedSample& sample, std::set<LineKind>& reasons_noted) {
    FileFindings own(findings, seq_file_path[sample.file].input_file);
    report_rejected(own, sample, reasons_noted);
    report_sample(own, sample);
}

// ---------------------------------------------------------------------------------- sessions

using NamedCount = std::pair<std::string, uint64_t>;

// Of all logs, the most frequent first.
std::vector<NamedCount> rank_cookies(const std::vector<ParsedSample>& samples) {
    std::map<std::string, uint64_t> counts;
    for (const ParsedSample& sample : samples) {
        for (const auto& [name, count] : sample.other_cookies) {
            counts[name] += count;
        }
    }
    std::vector<NamedCount> ranked(counts.begin(), counts.end());
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const NamedCount& a, const NamedCount& b) { return a.second > b.second; });
    return ranked;
}

std::string list_of(const std::vector<NamedCount>& cookies, uint64_t requests) {
    constexpr size_t most_listed = 8;
    std::string list;
    for (size_t i = 0; i < std::min(cookies.size(), most_listed); ++i) {
        list += fmt::format("{}{} in {:.3g} %", i == 0 ? "" : ", ", cookies[i].first,
                            percent(cookies[i].second, requests));
    }
    return list.empty() ? "They carry no cookies" : "The cookies that they carry instead: " + list;
}

// One that is spelt nearly like the name in the settings, or the most frequent one.
std::string cookie_cure(const std::vector<NamedCount>& cookies) {
    if (cookies.empty()) {
        return "Let AL_FIELD REQUEST_COOKIE and SET_COOKIE name the fields of the cookie headers, "
               "or let sessions go by the address, USER_SESSION_KEY client_ip.";
    }
    std::vector<std::string> names;
    names.reserve(cookies.size());
    for (const auto& [name, count] : cookies) {
        names.push_back(name);
    }
    const std::string near = nearest_word(cookie_name, names);
    return fmt::format("Name the cookie that tells one user from another, as COOKIE_NAME {}; "
                       "zvr_al_doctor init finds it.",
                       near.empty() ? names.front() : near);
}

void report_cookie(Findings& findings, const std::vector<ParsedSample>& samples, Severity severity,
                   const std::string& meaning, uint64_t without, int line) {
    const std::vector<NamedCount> cookies = rank_cookies(samples);
    FileFindings settings(findings, replay_profile_file_path(settings_name));
    settings.add(severity, "session-cookie-missing", line, cookie_name,
                 meaning + " " + list_of(cookies, without) + ".", cookie_cure(cookies));
}

void check_sessions(Findings& findings, const std::vector<ParsedSample>& samples, int cookie_line) {
    constexpr double usual_percent = 50; // of requests without a session
    uint64_t accepted = 0;
    uint64_t without = 0;
    for (const ParsedSample& sample : samples) {
        accepted += sample.accepted;
        without += sample.without_session;
    }
    if (percent(without, accepted) <= usual_percent) {
        return;
    }
    const bool do_none_count = without == accepted && ignore_non_session_urls != 0;
    const Severity severity = do_none_count ? Severity::error : Severity::warning;
    const std::string meaning =
        fmt::format("{} requests in the samples have no {}{}.", share(without, accepted),
                    session_mode == SESSION_MODE_COOKIE ? "session cookie" : "client address",
                    ignore_non_session_urls != 0 ? " and do not count, unless a later response "
                                                   "gives them their session"
                                                 : "");
    if (session_mode == SESSION_MODE_COOKIE) {
        report_cookie(findings, samples, severity, meaning, without, cookie_line);
        return;
    }
    FileFindings settings(findings, replay_profile_file_path(settings_name));
    settings.add(severity, "client-address-missing", 0, "", meaning,
                 "Let AL_FIELD CLIENT_IP name the field of the address, or let sessions go by a "
                 "cookie, USER_SESSION_KEY cookie.");
}

// Whether the settings let a run read logs. Where they do not, that has been reported.
bool can_be_parsed() {
    try {
        validate_al_format();
    } catch (const Failure&) {
        return false;
    }
    return session_mode != SESSION_MODE_COOKIE || cookie_name[0] != '\0';
}

void check_period(Findings& findings, const std::vector<ParsedSample>& samples,
                  const DecidingLines& lines) {
    const auto outside = std::ranges::count_if(samples, is_outside_period);
    if (outside != 0 && static_cast<size_t>(outside) == samples.size()) {
        report_all_outside(findings, samples, lines);
        return;
    }
    for (const ParsedSample& sample : samples) {
        if (is_outside_period(sample)) {
            FileFindings own(findings, seq_file_path[sample.file].input_file);
            report_outside(own, sample, lines);
        }
    }
}

KnownHosts hosts_of(const std::vector<ParsedSample>& samples) {
    std::set<std::string> hosts;
    KnownHosts known = {.are_all = samples.size() == static_cast<size_t>(num_al_files)};
    for (const ParsedSample& sample : samples) {
        hosts.insert(sample.hosts.begin(), sample.hosts.end());
        known.are_all = known.are_all && sample.is_whole && !sample.has_further_hosts;
    }
    known.hosts.assign(hosts.begin(), hosts.end());
    return known;
}

} // namespace

KnownHosts check_logs(Findings& findings, const DecidingLines& lines) {
    if (!can_be_parsed()) {
        return {};
    }
    const std::vector<ParsedSample> samples = sample_logs();
    std::set<LineKind> reasons_noted;
    for (const ParsedSample& sample : samples) {
        report_log(findings, sample, reasons_noted);
    }
    check_period(findings, samples, lines);
    check_sessions(findings, samples, lines.cookie_name);
    return hosts_of(samples);
}
