#include "companions/doctor/init/scenario_texts.h"

#include "companions/common/shown_text.h"
#include "tools/config/scenario_file.h"

#include <fmt/core.h>

namespace {

constexpr size_t comment_width = 500; // far below what a line of these files may hold

std::string comment(std::string_view text) {
    return "# " + shown_text(text, comment_width) + "\n";
}

// Settings behind what is said about them.
std::string section(std::string_view reason, const std::string& lines) {
    return lines.empty() ? "" : "\n" + comment(reason) + lines;
}

std::string layout_section(const ScenarioPlan& plan) {
    const bool stands_in = plan.session.key == SessionKey::none;
    const LogLayout layout = stands_in ? layout_without_sessions(plan.layout) : plan.layout;
    return "\n" + comment(plan.layout_reason) + layout_lines(layout);
}

std::string response_time_section(const LogLayout& layout) {
    const bool has_time = layout.has(AL_RESPONSE_TIME) || layout.has(AL_RESPONSE_TIME_USEC);
    if (!has_time) {
        return "";
    }
    return layout.logs_when_done
               ? section("The server logs a request when it is done, so its response time is taken "
                         "off the time.",
                         "CONSIDER_RESPONSE_TIME 1\n")
               : "\n" + comment("The server logs the time at which a request comes, so "
                                "CONSIDER_RESPONSE_TIME stays 0.");
}

std::string secondary_section(const ScenarioPlan& plan) {
    constexpr std::string_view usual = "akaau"; // of the tool's settings
    const std::string& secondary = plan.session.secondary;
    if (secondary == usual) {
        return "";
    }
    return secondary.empty()
               ? section("No other cookie finds requests without the session cookie their session.",
                         "SECONDARY_COOKIE 0\n")
               : section("Requests carry this cookie before they have the session cookie, and wait "
                         "for the response that sets it.",
                         "SECONDARY_COOKIE 1 " + secondary + "\n");
}

std::string session_section(const ScenarioPlan& plan) {
    switch (plan.session.key) {
    case SessionKey::cookie:
        return section(plan.session_reason, "COOKIE_NAME " + plan.session.cookie + "\n") +
               secondary_section(plan);
    case SessionKey::client_address:
        return section(plan.session_reason, "USER_SESSION_KEY client_ip\n");
    default:
        // The name cannot be that of a cookie.
        return section(plan.session_reason,
                       "COOKIE_NAME (none)\nSECONDARY_COOKIE 0\nIGNORE_NON_SESSION_URLS 0\n");
    }
}

std::string log_line(const std::string& path) {
    return std::string(log_file_keyword) + " " + path + " log 0 HTTP\n";
}

std::string times_comment(const ScenarioPlan& plan) {
    return plan.first_time.empty()
               ? ""
               : comment("Of the lines that were tried, the first is of " + plan.first_time +
                         ", the last of " + plan.last_time + ".");
}

} // namespace

std::string scenario_text(const ScenarioPlan& plan) {
    std::string text = comment("Scenario " + plan.name + ", written by zvr_al_doctor init.") +
                       "\n" +
                       comment("Logs: path, a word that is not read, lines to take (0: all), and "
                               "HTTP or HTTPS.");
    for (const std::string& log : plan.logs) {
        text += log_line(log);
    }
    text += "\n" +
            comment("The period to replay, both ends included, as mm/dd/yyyy hh:mm:ss in the zone "
                    "of sys/replay_settings.default; NA: no bound.") +
            times_comment(plan) + "REPLAY_PERIOD START NA\nREPLAY_PERIOD END NA\n";
    return text;
}

std::string settings_text(const ScenarioPlan& plan) {
    return comment("Settings of scenario " + plan.name +
                   ", written by zvr_al_doctor init. Keywords that are not here have their "
                   "defaults; zvr_replay_settings.dat(5) names all of them.") +
           layout_section(plan) + response_time_section(plan.layout) + session_section(plan);
}

std::string url_patterns_text() {
    return R"(Status|Type|Method|Id|Transaction|Host|Description|PostData|UrlPattern
# What the URLs of the logs are: a line of nine columns for each pattern, none of them empty (na says
# nothing). A * stands for any characters, \? for a question mark and \. for a dot; the pattern has to
# match the whole URL. Lines that begin with # do not count: take the # off an example to try it.
#
# A page that is a transaction, and one that sends data from a file:
#active|main|GET|na|HomePage|na|na|na|/index*
#active|main|POST|na|SendOrder|na|na|order_body.txt|/order*
#
# A page that is none:
#active|MAIN_WITHOUT_TX|na|na|na|na|na|na|/keepalive*
#
# Objects of pages, such as style sheets, which are left out of url.list:
#active|inline|na|na|na|na|na|na|*\.css
)";
}

std::string filter_patterns_text() {
    return R"(Status|Method|Id|Host|UrlPattern
# URLs that are not to be replayed: a line of five columns for each pattern, none of them empty (na
# says nothing). url.list has YES in its column Filter for what a pattern matches. Lines that begin
# with # do not count: take the # off the example to try it.
#
#active|na|na|na|/health/*
)";
}

std::string zone_file_text(const ScenarioPlan& plan) {
    return comment("The zone in which replay periods are given: hours and minutes east of UTC. "
                   "Written by zvr_al_doctor init, as the logs have it.") +
           "GMT_OFFSET " + plan.zone + "\n";
}
