#include "companions/doctor/init/scenario_plan.h"

#include "companions/doctor/init/log_times.h"

#include <cstdint>
#include <fmt/core.h>

namespace {

void append(Findings& findings, const Findings& more) {
    findings.insert(findings.end(), more.begin(), more.end());
}

long percent_of(size_t part, size_t whole) {
    return whole == 0 ? 0 : static_cast<long>((100 * part + whole / 2) / whole);
}

std::string reason_for_session(const SessionChoice& choice, const SessionEvidence& evidence,
                               const LogLayout& layout) {
    if (choice.key == SessionKey::cookie) {
        const CookieUse& use = evidence.cookies.front();
        return fmt::format("Session cookie: {}, in {} % of the requests that were tried.", use.name,
                           percent_of(use.requests, evidence.requests));
    }
    if (choice.key == SessionKey::none) {
        return "No cookie and no IPv4 address tells users apart, so there are no sessions and "
               "every "
               "request counts by itself.";
    }
    return layout.has(AL_REQUEST_COOKIE)
               ? "No cookie ties the requests together, so a session is a client address."
               : "No field of the log holds cookies, so a session is a client address.";
}

// What the choice of a session costs.
Findings findings_on_session(const SessionChoice& choice, const SessionEvidence& evidence) {
    Findings findings;
    const auto tell = [&](const char* id, size_t part, const char* meaning, const char* cure) {
        if (part != 0) {
            findings.push_back({id, Severity::note, "", 0,
                                fmt::format("{} of {} requests", part, evidence.requests), meaning,
                                cure});
        }
    };
    if (choice.key == SessionKey::cookie) {
        const CookieUse& use = evidence.cookies.front();
        tell("requests-without-session", evidence.requests - use.requests,
             "Of the requests that were tried, so many have no session cookie; they do not count "
             "unless they find a session by the secondary cookie.",
             "To count them, add IGNORE_NON_SESSION_URLS 0 to the settings.");
        tell("cookie-name-ambiguous", use.misread,
             "In so many requests the tool reads another value, since it looks for the cookie's "
             "name anywhere in the header.",
             "Choose another cookie where sessions matter.");
    } else if (choice.key == SessionKey::client_address) {
        tell("no-ipv4-address", evidence.bad_addresses,
             "Of the requests that were tried, so many have no IPv4 address as client, and count "
             "as bad.",
             "Log the Cookie header, by which the tool can know sessions, too.");
    }
    return findings;
}

void plan_times(const std::vector<LogTimes>& times, ScenarioPlan& plan) {
    uint64_t first = UINT64_MAX;
    uint64_t last = 0;
    for (const LogTimes& log : times) {
        if (log.first.seconds != 0 && log.first.seconds < first) {
            first = log.first.seconds;
            plan.first_time = log.first.text;
        }
        if (log.last.seconds > last) {
            last = log.last.seconds;
            plan.last_time = log.last.text;
        }
    }
    plan.zone = zone_of(times);
}

} // namespace

void plan_scenario(const std::vector<LogSample>& samples, InitReport& report) {
    ScenarioPlan& plan = report.plan;
    plan.name = report.scenario;
    plan.layout = *report.layout.layout;
    plan.layout_reason = report.layout.reason;
    report.evidence = look_for_sessions(plan.layout, samples);
    plan.session = choose_session(plan.layout, report.evidence);
    plan.session_reason = reason_for_session(plan.session, report.evidence, plan.layout);
    for (const LogSample& sample : samples) {
        plan.logs.push_back(sample.path);
    }
    const std::vector<LogTimes> times = times_of(plan.layout, samples);
    plan_times(times, plan);
    append(report.findings, findings_on_session(plan.session, report.evidence));
    append(report.findings, check_order(samples, times));
}
