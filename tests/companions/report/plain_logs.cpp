#include "tests/companions/report/plain_logs.h"

#include "tests/support/test_installation.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>

namespace {

// How the logs of a scenario are read.
struct Sample {
    std::vector<std::string> logs; // in the order of their paths
    bool has_date_field = false;   // date and time in two words, else in brackets
    size_t words;                  // of a good line, or more
    size_t method, url, status;    // words
    size_t query = 0, cookies = 0, set_cookies = 0, host = 0, location = 0; // words; 0: none
    std::string session_cookie = {}; // empty: sessions are client addresses
    std::string secondary_cookie = {};
    bool drops_without_session = true;
    bool cuts_queries = false;
    long first = 0; // of the period
    long last = 4'000'000'000;
};

long utc(int year, int month, int day, int hours, int minutes, int seconds) {
    tm fields = {};
    fields.tm_year = year - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = day;
    fields.tm_hour = hours;
    fields.tm_min = minutes;
    fields.tm_sec = seconds;
    return timegm(&fields);
}

const std::map<std::string, Sample> samples = {
    {"shop",
     {.logs = {"shop/api_access.log", "shop/web1/access_20260310.log",
               "shop/web1/access_20260311.log", "shop/web1/ssl_access_20260310.log",
               "shop/web1/ssl_access_20260311.log", "shop/web2/access_20260310.log",
               "shop/web2/access_20260311.log"},
      .words = 15,
      .method = 6,
      .url = 6,
      .status = 7,
      .cookies = 12,
      .set_cookies = 13,
      .host = 14,
      .location = 15,
      .session_cookie = "JSESSIONID",
      .secondary_cookie = "akaau",
      .cuts_queries = true,
      .first = utc(2026, 3, 10, 9, 0, 0),
      .last = utc(2026, 3, 11, 18, 0, 0)}},
    {"news",
     {.logs = {"news/edge1_access.log", "news/edge2_access.log"},
      .words = 9,
      .method = 5,
      .url = 5,
      .status = 6,
      .cuts_queries = true,
      .last = utc(2026, 3, 10, 18, 30, 0)}},
    {"intranet",
     {.logs = {"intranet/ex260310_1.log", "intranet/ex260310_2.log"},
      .has_date_field = true,
      .words = 15,
      .method = 4,
      .url = 5,
      .status = 8,
      .query = 6,
      .cookies = 12,
      .set_cookies = 13,
      .host = 14,
      .location = 15,
      .session_cookie = "ASP.NET_SessionId",
      .secondary_cookie = "trk",
      .drops_without_session = false}},
    {"desk",
     {.logs = {"desk/requests.log", "desk/tickets.log"},
      .has_date_field = true,
      .words = 14,
      .method = 4,
      .url = 6,
      .status = 7,
      .cookies = 11,
      .set_cookies = 12,
      .host = 13,
      .location = 14,
      .session_cookie = "SESSID",
      .first = utc(2026, 3, 10, 10, 0, 0),
      .last = utc(2026, 3, 10, 11, 0, 0)}}};

struct PlainRequest {
    long time;
    std::string method, host, url, session, secondary, location;
    bool is_redirect;
    bool sets_session;
    bool waits; // for a session that its secondary cookie may bring
};

// Where the group ends that a quote or bracket opens before `begin`. A quote that closes it stands
// before a space or the end of the line, and not behind a backslash.
size_t end_of_group(const std::string& line, size_t begin) {
    if (line[begin - 1] == '[') {
        return line.find(']', begin);
    }
    for (size_t at = begin; (at = line.find('"', at)) != std::string::npos; ++at) {
        const bool is_last = at + 1 == line.size() || line[at + 1] == ' ';
        if (is_last && line[at - 1] != '\\') {
            return at;
        }
    }
    return std::string::npos;
}

// Words between blanks and tabs; what quotes or brackets hold is one. The first has number 1. None
// when a quote or bracket has no end.
std::vector<std::string> words_of(const std::string& line) {
    std::vector<std::string> words = {""};
    for (size_t at = 0; (at = line.find_first_not_of(" \t", at)) != std::string::npos;) {
        const bool is_group = line[at] == '"' || line[at] == '[';
        const size_t begin = is_group ? at + 1 : at;
        const size_t end = is_group ? end_of_group(line, begin) : line.find_first_of(" \t", at);
        if (is_group && end == std::string::npos) {
            return {};
        }
        words.push_back(line.substr(begin, end - begin));
        at = end == std::string::npos ? end : end + (is_group ? 1 : 0);
    }
    return words;
}

std::optional<long> bracketed_time(const std::string& text) {
    int day, year, hours, minutes, seconds, zone;
    char month[4];
    if (std::sscanf(text.c_str(), "%d/%3s/%d:%d:%d:%d %d", &day, month, &year, &hours, &minutes,
                    &seconds, &zone) != 7) {
        return std::nullopt;
    }
    const char* const months = "JanFebMarAprMayJunJulAugSepOctNovDec";
    const char* const found = std::strstr(months, month);
    const int number = found == nullptr ? 1 : static_cast<int>(found - months) / 3 + 1;
    return utc(year, number, day, hours, minutes, seconds) - (zone / 100 * 3600 + zone % 100 * 60);
}

std::optional<long> date_and_time(const std::string& date, const std::string& time) {
    int year, month, day, hours, minutes, seconds;
    const bool is_good = std::sscanf(date.c_str(), "%d-%d-%d", &year, &month, &day) == 3 &&
                         std::sscanf(time.c_str(), "%d:%d:%d", &hours, &minutes, &seconds) == 3;
    return is_good ? std::optional(utc(year, month, day, hours, minutes, seconds)) : std::nullopt;
}

constexpr size_t longest_cookie = 63;

// What stands behind "name=" up to a semicolon, if the name is there.
std::optional<std::string> cookie(const std::string& header, const std::string& name) {
    const size_t found = name.empty() ? std::string::npos : header.find(name);
    if (found == std::string::npos) {
        return std::nullopt;
    }
    const size_t begin = std::min(found + name.size() + 1, header.size());
    return header.substr(begin, header.find(';', begin) - begin).substr(0, longest_cookie);
}

std::string small(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

// Below the directory of the page that answers; a text that is no URL where there is none.
std::string absolute_location(std::string location, const std::string& url) {
    const std::string nowhere = "nowhere";
    if (location.rfind('/', 0) == 0 || small(location).rfind("http", 0) == 0) {
        return location;
    }
    if (url.rfind('/', 0) != 0) {
        return nowhere;
    }
    std::string directory = url.substr(0, url.find_first_of("?#"));
    directory.resize(directory.rfind('/') + 1);
    for (; location.rfind("../", 0) == 0; location.erase(0, 3)) {
        if (directory == "/") {
            return nowhere;
        }
        directory.pop_back();
        directory.resize(directory.rfind('/') + 1);
    }
    return directory + (location.rfind("./", 0) == 0 ? location.substr(2) : location);
}

// "a.b.c.d" with numbers below 256, also before a port; 0.0.0.0 and "-" are no client.
std::optional<std::string> client(const std::string& text) {
    unsigned a, b, c, d;
    if (text == "-") {
        return "";
    }
    if (std::sscanf(text.c_str(), "%u.%u.%u.%u", &a, &b, &c, &d) != 4 || a > 255 || b > 255 ||
        c > 255 || d > 255) {
        return std::nullopt;
    }
    const std::string address = std::to_string(a) + "." + std::to_string(b) + "." +
                                std::to_string(c) + "." + std::to_string(d);
    return address == "0.0.0.0" ? "" : address;
}

// Method and URL of a request line, or of their own words.
bool read_method_and_url(const Sample& sample, const std::vector<std::string>& words,
                         PlainRequest& request) {
    if (!sample.has_date_field) {
        std::istringstream line(words[sample.method]);
        std::string version;
        return static_cast<bool>(line >> request.method >> request.url >> version);
    }
    request.method = words[sample.method];
    request.url = words[sample.url];
    if (sample.query != 0 && words[sample.query] != "-") {
        request.url += "?" + words[sample.query];
    }
    return true;
}

bool read_session(const Sample& sample, const std::vector<std::string>& words,
                  PlainRequest& request) {
    if (sample.session_cookie.empty()) {
        const std::optional<std::string> address = client(words[1]);
        request.session = address.value_or("");
        return address.has_value();
    }
    const std::string& sent = words[sample.cookies];
    const std::string& set = words[sample.set_cookies];
    const std::optional<std::string> sent_session = cookie(sent, sample.session_cookie);
    request.secondary = cookie(set, sample.secondary_cookie)
                            .value_or(cookie(sent, sample.secondary_cookie).value_or(""));
    const std::optional<std::string> set_session = cookie(set, sample.session_cookie);
    request.sets_session = set_session.has_value();
    request.session = set_session.value_or(sent_session.value_or(""));
    request.waits = !set_session && !sent_session && !request.secondary.empty();
    return true;
}

std::optional<PlainRequest> read_request(const Sample& sample, const std::string& line) {
    const std::vector<std::string> words = words_of(line);
    PlainRequest request = {};
    if (words.size() <= sample.words || !read_method_and_url(sample, words, request) ||
        !read_session(sample, words, request)) {
        return std::nullopt;
    }
    const std::optional<long> time =
        sample.has_date_field ? date_and_time(words[2], words[3]) : bracketed_time(words[4]);
    if (!time || *time < sample.first || *time > sample.last) {
        return std::nullopt;
    }
    request.time = *time;
    request.host = sample.host != 0 && words[sample.host] != "-" ? words[sample.host] : "NA";
    if (sample.location != 0) {
        const std::string& status = words[sample.status];
        request.location = absolute_location(words[sample.location], request.url);
        request.is_redirect = (status == "301" || status == "302" || status == "307") &&
                              words[sample.location] != "-";
    }
    return request;
}

// The lines of a log that are taken; of one of them 46, and none that has no end.
std::vector<std::string> lines_of_log(const std::string& name) {
    std::ifstream file(source_path("examples/installation/logs/" + name));
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line) && !file.eof();) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(line);
    }
    if (name == "shop/web2/access_20260311.log") {
        lines.resize(46);
    }
    return lines;
}

// Requests in the order of the logs. Those that wait for a session get it from the next response
// that sets one together with their secondary cookie.
std::vector<PlainRequest> read_requests(const Sample& sample) {
    std::vector<PlainRequest> requests;
    std::map<std::string, std::vector<size_t>> waiting;
    for (const std::string& log : sample.logs) {
        for (const std::string& line : lines_of_log(log)) {
            const std::optional<PlainRequest> request =
                line.empty() || line[0] == '#' ? std::nullopt : read_request(sample, line);
            if (!request) {
                continue;
            }
            std::vector<size_t>& same = waiting[request->secondary];
            if (!request->secondary.empty() && request->sets_session) {
                for (const size_t waits : same) {
                    requests[waits].session = request->session;
                }
                same.clear();
            } else if (request->waits) {
                same.push_back(requests.size());
            }
            requests.push_back(*request);
        }
    }
    return requests;
}

bool names(const std::string& location, const PlainRequest& request) {
    const bool is_full =
        small(location).rfind("http://", 0) == 0 || small(location).rfind("https://", 0) == 0;
    const std::string scheme = location.substr(0, location.find("//") + 2);
    return small(location) == small(is_full ? scheme + request.host + request.url : request.url);
}

// Locations that a session's requests may follow, in 16 places; an empty text is a free place.
using Locations = std::array<std::string, 16>;

bool follows(const PlainRequest& request, Locations& locations) {
    for (std::string& location : locations) {
        if (!location.empty() && names(location, request)) {
            location.clear();
            return true;
        }
    }
    return false;
}

void remember(const std::string& location, Locations& locations) {
    const auto place = std::find(locations.begin(), locations.end(), "");
    (place == locations.end() ? locations.front() : *place) = location;
}

// Takes the requests away that follow a redirect of their session.
std::vector<PlainRequest> without_follow_ups(std::vector<PlainRequest> requests) {
    std::stable_sort(requests.begin(), requests.end(),
                     [](const PlainRequest& a, const PlainRequest& b) { return a.time < b.time; });
    std::map<std::string, Locations> of_sessions;
    std::vector<PlainRequest> counted;
    for (const PlainRequest& request : requests) {
        Locations& locations = of_sessions[request.session];
        if (request.session.empty() || !follows(request, locations)) {
            counted.push_back(request);
        }
        if (request.is_redirect) {
            remember(request.location, locations);
        }
    }
    return counted;
}

// As url.list has them; methods in any spelling.
std::string url_key(const std::string& method, const std::string& host, const std::string& url) {
    std::string escaped;
    for (const char c : url) {
        escaped += c == '|' ? "&#124;" : std::string(1, c);
    }
    return small(method.substr(0, 16)) + " " + host + " " + escaped;
}

// Of the URLs that url.list has as main and not filtered.
std::set<std::string> main_urls(const std::string& scenario) {
    std::ifstream list(source_path("examples/expected/" + scenario + "/url.list"));
    std::set<std::string> keys;
    for (std::string line; std::getline(list, line);) {
        std::istringstream row(line);
        std::string filtered, type, method, url, count, transaction, host;
        for (std::string* cell : {&filtered, &type, &method, &url, &count, &transaction, &host}) {
            std::getline(row, *cell, '|');
        }
        if (filtered == "NO" && type != "INLINE") {
            keys.insert(url_key(method, host, url));
        }
    }
    return keys;
}

std::string counted_url(const Sample& sample, const std::string& url) {
    const size_t separator = sample.cuts_queries ? url.find_first_of("?#;") : std::string::npos;
    return separator == std::string::npos ? url : url.substr(0, separator + 1) + "*";
}

} // namespace

std::vector<PlainVisit> visits_of_sample(const std::string& scenario) {
    const Sample& sample = samples.at(scenario);
    const std::set<std::string> are_main = main_urls(scenario);
    std::vector<PlainVisit> visits;
    for (const PlainRequest& request : without_follow_ups(read_requests(sample))) {
        if (request.session.empty() && sample.drops_without_session) {
            continue;
        }
        const std::string key =
            url_key(request.method, request.host, counted_url(sample, request.url));
        visits.push_back({request.time, request.session, are_main.count(key) != 0});
    }
    return visits;
}
