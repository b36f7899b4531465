#include "tests/companions/shard/random_scenario.h"

#include <array>
#include <cstdio>

namespace {

// What of a request differs between lines; each dialect writes it in its own way.
struct Request {
    long second; // of the day
    std::string client;
    std::string method;
    std::string url;
    std::string query; // empty: none
    int status;
    std::string cookies;
    std::string set_cookies;
    std::string host;
    std::string location;
};

struct Traffic {
    bool is_iis;
    bool is_other; // WebLogic's dialect
    bool cuts_queries;
    size_t sessions;
    size_t urls;
    size_t chance_to_wait; // one in so many requests
};

constexpr const char* hosts[] = {"shop.example", "www.example", "10.0.0.7"};
constexpr const char* methods[] = {"GET", "GET", "GET", "POST", "get", "Head"};

std::string clock_text(long second) {
    constexpr int minute = 60;
    constexpr int hour = 60 * minute;
    std::array<char, 16> text = {};
    std::snprintf(text.data(), text.size(), "%02ld:%02ld:%02ld", second / hour % 24,
                  second / minute % minute, second % minute);
    return text.data();
}

std::string random_url(Choices& choices, const Traffic& traffic) {
    const std::string number = std::to_string(choices.below(traffic.urls));
    return choices.one_in(8) ? "/img/" + number + ".gif" : "/page/" + number;
}

void give_session(Choices& choices, const Traffic& traffic, Request& request) {
    const std::string user = std::to_string(choices.below(traffic.sessions));
    request.client = "10.1.0." + user;
    const std::string session = "JSESSIONID=S" + user;
    const std::string secondary = "akaau=K" + user;
    if (choices.one_in(traffic.chance_to_wait)) {
        request.cookies = secondary;
    } else if (choices.one_in(4)) {
        request.cookies = secondary;
        request.set_cookies = session + "; Path=/";
    } else if (choices.one_in(6)) {
        request.cookies = choices.one_in(2) ? "theme=dark" : "JSESSIONID=";
    } else {
        request.cookies = choices.one_in(2) ? secondary + "; " + session : session;
    }
}

// A redirect, and mostly what the browser then does.
void redirect(Choices& choices, const Traffic& traffic, Request& request,
              std::vector<Request>& requests) {
    Request next = request;
    next.url = random_url(choices, traffic);
    next.query.clear();
    next.second += static_cast<long>(choices.below(3));
    next.set_cookies = "-";
    request.status = choices.one_in(2) ? 302 : 301;
    request.location = choices.one_in(3) ? next.url : "http://" + request.host + next.url;
    requests.push_back(request);
    if (!choices.one_in(4)) {
        requests.push_back(next);
    }
}

void add_requests(Choices& choices, const Traffic& traffic, long second,
                  std::vector<Request>& requests) {
    Request request = {.second = second,
                       .client = {},
                       .method = choices.of(methods),
                       .url = random_url(choices, traffic),
                       .query = choices.one_in(3) ? "q=" + choices.text("ab", 3) : "",
                       .status = choices.one_in(9) ? 404 : 200,
                       .cookies = "-",
                       .set_cookies = "-",
                       .host = choices.of(hosts),
                       .location = "-"};
    give_session(choices, traffic, request);
    if (choices.one_in(7)) {
        redirect(choices, traffic, request, requests);
    } else {
        requests.push_back(request);
    }
}

std::string apache_line(const Request& request) {
    const std::string query = request.query.empty() ? "" : "?" + request.query;
    return request.client + " - - [10/Oct/2000:" + clock_text(request.second) + " +0000] \"" +
           request.method + " " + request.url + query + " HTTP/1.1\" " +
           std::to_string(request.status) + " \"" + request.cookies + "\" \"" +
           request.set_cookies + "\" \"" + request.host + "\" \"" + request.location + "\"\n";
}

std::string word(std::string text) {
    for (char& c : text) {
        c = c == ' ' ? '+' : c;
    }
    return text;
}

std::string iis_line(const Request& request) {
    return "2000-10-10 " + clock_text(request.second) + " " + request.client + " " +
           request.method + " " + request.url + " " +
           (request.query.empty() ? "-" : request.query) + " " + std::to_string(request.status) +
           " " + word(request.cookies) + " " + word(request.set_cookies) + " " + request.host +
           " " + request.location + "\n";
}

// What is no request, or an odd one.
std::string odd_line(Choices& choices) {
    constexpr size_t more_than_a_line = 110'000;
    switch (choices.below(7)) {
    case 0:
        return "\n";
    case 1:
        return "# a comment\n";
    case 2:
        return "not a request\n";
    case 3:
        return std::string("a\0b", 3) + "\n";
    case 4:
        return choices.one_in(4) ? std::string(more_than_a_line, 'x') + "\n" : "\r\n";
    case 5:
        return "10.1.0.1 - - [10/Oct/2000:13:00:00 +0000] \"GET /un\xe4\xff HTTP/1.1\" 200 \"-\" "
               "\"-\" \"-\" \"-\"\r\n";
    default:
        return "10.1.0.1 - - [10/Oct/2000:13:00:00 +0000] \"GET /unclosed HTTP/1.1 200\n";
    }
}

std::string random_log(Choices& choices, const Traffic& traffic) {
    std::string log;
    long second = static_cast<long>(choices.below(80'000));
    for (size_t left = choices.below(120); left != 0; --left) {
        second += static_cast<long>(choices.below(4));
        std::vector<Request> requests;
        add_requests(choices, traffic, choices.one_in(12) ? second / 2 : second, requests);
        for (const Request& request : requests) {
            log += traffic.is_iis ? iis_line(request) : apache_line(request);
        }
        log += choices.one_in(15) ? odd_line(choices) : "";
    }
    log += traffic.is_iis ? iis_line({}) : apache_line({}); // a log without a line is refused
    return choices.one_in(6) ? log + "no line feed" : log;
}

std::string layout_of(const Traffic& traffic) {
    return traffic.is_iis
               ? "ACCESS_LOG_TYPE IIS\nAL_FIELD DATE 1\nAL_FIELD TIME 2\nAL_FIELD CLIENT_IP 3\n"
                 "AL_FIELD METHOD 4\nAL_FIELD URL 5\nAL_FIELD QUERY_STRING 6\n"
                 "AL_FIELD STATUS_CODE 7\nAL_FIELD REQUEST_COOKIE 8\nAL_FIELD SET_COOKIE 9\n"
                 "AL_FIELD HOST_HEADER 10\nAL_FIELD LOCATION 11\n"
               : std::string(traffic.is_other ? "ACCESS_LOG_TYPE OTHER\n" : "") +
                     "AL_FIELD CLIENT_IP 1\nAL_FIELD DATE_AND_TIME 4\nAL_FIELD REQUEST_LINE 5\n"
                     "AL_FIELD STATUS_CODE 6\nAL_FIELD REQUEST_COOKIE 7\nAL_FIELD SET_COOKIE 8\n"
                     "AL_FIELD HOST_HEADER 9\nAL_FIELD LOCATION 10\n";
}

std::string settings_of(Choices& choices, const Traffic& traffic) {
    const auto flag = [&](const char* keyword) {
        return std::string(keyword) + (choices.one_in(2) ? " 0\n" : " 1\n");
    };
    return layout_of(traffic) +
           (choices.one_in(3) ? "USER_SESSION_KEY client_ip\n"
                              : "USER_SESSION_KEY cookie\nCOOKIE_NAME JSESSIONID\n") +
           "SECONDARY_COOKIE " + (choices.one_in(5) ? "0" : "1") + " akaau\n" +
           "IGNORE_URL_QUERY_PARAM " + (traffic.cuts_queries ? "1\n" : "0\n") +
           flag("AUTO_REDIRECT") + flag("IGNORE_NON_SESSION_URLS") + flag("DUMP_QUERY_STRING_URL") +
           (choices.one_in(2) ? "INLINE_OBJECT_MODE asperlog\n" : "");
}

std::string period_of(Choices& choices) {
    return choices.one_in(3) ? "REPLAY_PERIOD START 10/10/2000 03:00:00\n"
                               "REPLAY_PERIOD END 10/10/2000 20:00:00\n"
                             : "";
}

} // namespace

void write_random_scenario(Choices& choices, const TestInstallation& installation) {
    const size_t dialect = choices.below(3);
    const Traffic traffic = {.is_iis = dialect == 1,
                             .is_other = dialect == 2,
                             .cuts_queries = choices.one_in(2),
                             .sessions = 1 + choices.below(12),
                             .urls = 1 + choices.below(20),
                             .chance_to_wait = 2 + choices.below(6)};
    std::string scenario = period_of(choices);
    for (size_t instance = 0, count = 1 + choices.below(4); instance < count; ++instance) {
        for (size_t log = 0, logs = 1 + choices.below(3); log < logs; ++log) {
            const std::string path =
                "logs/" + std::to_string(instance) + "/access_" + std::to_string(log);
            installation.write(path, random_log(choices, traffic));
            const size_t budget = choices.one_in(5) ? 1 + choices.below(150) : 0;
            scenario += "REPLAY_LOG_FILE " + path + " 0 " + std::to_string(budget) + " HTTP\n";
        }
    }
    installation.write_scenario(scenario);
    installation.write_settings(settings_of(choices, traffic));
    installation.write_patterns("status|type\n"
                                "active|inline|na|-|na|na|-|na|*.gif\n"
                                "active|main|na|-|Page|na|-|na|/page/1*\n");
    installation.write_filters("\n\nactive|na|-|na|/page/2*\n");
}
