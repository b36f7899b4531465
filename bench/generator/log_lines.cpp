#include "bench/generator/log_lines.h"

#include "bench/generator/text_form.h"

#include <algorithm>
#include <array>
#include <vector>

// What tells the dialects apart. In `request` and `bad_lines` the letters of `fields` stand behind
// a
// '%', each for a field.
struct LogLayout {
    const char* header;
    const char* request;
    std::vector<const char*> bad_lines;
    const char* date; // for strftime
    const char* cookie_separator;
    char blank; // in user agents
};

namespace {

const LogLayout apache_layout = {
    "",
    R"(%a - - [%t] %u "%m %l HTTP/1.1" %s %b "%r" "%g" "%c" "%k" "%n" "%h" "%d")",
    {R"(10.255.255.1 - - [%t] 12 "-" 408 0 "-" "-" "-" "-" "-" "-" "-")",
     R"(10.255.255.1 - - [%t] 12 "GET /index.html HTTP/1.1" 200 5120 "-" "Mozilla/5.0)",
     R"(10.255.255.1 - - [%t] 12 "GET /index.html HTTP/1.1" 200 5120)"},
    "%d/%b/%Y:%H:%M:%S +0000",
    "; ",
    ' ',
};

const LogLayout iis_layout = {
    "#Version: 1.0\n"
    "#Fields: c-ip date time cs-method cs-uri-stem cs-uri-query cs-version sc-status "
    "cs(User-Agent) cs(Referer) sc(Content-Type) cs(Cookie) sc(Set-Cookie) cs-host sc(Location)\n",
    "%a %t %m %p %q HTTP/1.1 %s %g %r %c %k %n %h %d",
    {"10.255.255.1 %t GET /index.html - HTTP/1.1 200",
     "10.255.255.1 - - GET /index.html - HTTP/1.1 200 - - - - - - -"},
    "%Y-%m-%d %H:%M:%S",
    ";+",
    '+',
};

constexpr std::string_view agents[] = {
    ("Mozilla/5.0 (X11; Linux x86_64) AppleWebKit/537.36 (KHTML, like Gecko) Chrome/118.0.0.0 "
     "Safari/537.36"),
    "Mozilla/5.0 (Windows NT 10.0; Win64; x64; rv:109.0) Gecko/20100101 Firefox/118.0",
    ("Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 (KHTML, like Gecko) "
     "Version/17.0 Safari/605.1.15"),
    ("Mozilla/5.0 (Windows NT 10.0; Win64; x64) AppleWebKit/537.36 (KHTML, like Gecko) "
     "Chrome/117.0.0.0 Safari/537.36"),
    "Mozilla/5.0 (iPhone; CPU iPhone OS 16_6 like Mac OS X) AppleWebKit/605.1.15",
    "Mozilla/5.0 (Linux; Android 13) AppleWebKit/537.36 Chrome/118.0.0.0 Mobile Safari/537.36"};

std::string hex_id(uint64_t seed) {
    std::string id;
    for (uint64_t half : {mix_bits(seed + 1), mix_bits(seed + 16 * 0x9e3779b97f4a7c15U + 1)}) {
        for (int digit = 0; digit < 16; ++digit, half >>= 4) {
            id += "0123456789ABCDEF"[half & 15];
        }
    }
    return id;
}

void add_address(std::string& text, const LogLines& lines, const LoggedRequest& request) {
    if (request.visitor == 0) {
        // Crawlers have no session, whatever sessions are told by.
        text += lines.options.client_address ? "-" : "192.0.2.77";
        return;
    }
    constexpr uint64_t private_network = 10U << 24;
    for (unsigned shift = 32; shift > 0;) {
        shift -= 8;
        text += std::to_string(((private_network + request.visitor) >> shift) & 255U);
        text += shift > 0 ? "." : "";
    }
}

void add_path(std::string& text, const LogLines& lines, UrlUse use) {
    text += lines.site.urls[use.index].path;
    if (lines.options.url_per_request || lines.options.long_urls) {
        text += '/';
        text += lines.path_padding;
        text += std::to_string(use.number);
    }
}

// Returns whether there is one.
bool add_query(std::string& text, const LogLines& lines, UrlUse use, const char* mark) {
    const std::string& query = lines.site.urls[use.index].query;
    if (query.empty()) {
        return false;
    }
    text += mark;
    text += query;
    if (lines.options.many_urls || lines.options.cut_queries) {
        text += "&request=" + std::to_string(use.number);
    }
    return true;
}

void add_url(std::string& text, const LogLines& lines, UrlUse use) {
    add_path(text, lines, use);
    add_query(text, lines, use, "?");
}

void add_iis_query(std::string& text, const LogLines& lines, const LoggedRequest& request) {
    if (!add_query(text, lines, request.url, "")) {
        text += '-';
    }
}

void add_referer(std::string& text, const LogLines&, const LoggedRequest& request) {
    if (request.referer == nullptr) {
        text += '-';
        return;
    }
    text += "http://";
    text += request.referer->host;
    text += request.referer->path;
}

void add_agent(std::string& text, const LogLines& lines, const LoggedRequest& request) {
    const size_t start = text.size();
    text += request.visitor == 0 ? "Crawler/2.1"
                                 : agents[mix_bits(request.visitor) % std::size(agents)];
    std::replace(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(), ' ',
                 lines.layout.blank);
}

void add_session_cookie(std::string& text, const LoggedRequest& request) {
    text += "JSESSIONID=";
    text += hex_id(request.visitor * 2);
    text += ".node1";
}

void add_cookies(std::string& text, const LogLines& lines, const LoggedRequest& request) {
    if (request.visitor == 0) {
        text += '-';
        return;
    }
    text += "lang=en_US";
    text += lines.layout.cookie_separator;
    text += "akaau=1759708800~id=";
    text += hex_id(request.visitor * 2 + 1);
    if (request.sends_session_cookie) {
        text += lines.layout.cookie_separator;
        add_session_cookie(text, request);
    }
}

void add_new_cookie(std::string& text, const LogLines& lines, const LoggedRequest& request) {
    if (!request.sets_session_cookie) {
        text += '-';
        return;
    }
    add_session_cookie(text, request);
    for (const char* attribute : {"Path=/", "HttpOnly"}) {
        text += lines.layout.cookie_separator;
        text += attribute;
    }
}

// The way from the URL's directory to the root.
void add_way_up(std::string& text, const LogLines& lines, UrlUse use) {
    const std::string& path = lines.site.urls[use.index].path;
    const auto slashes = std::count(path.begin(), path.end(), '/') + lines.options.url_per_request;
    for (std::ptrdiff_t step = 1; step < slashes; ++step) {
        text += step == 1 ? ".." : "/..";
    }
}

void add_location(std::string& text, const LogLines& lines, const LoggedRequest& request) {
    if (request.location == LocationForm::none) {
        text += '-';
        return;
    }
    if (request.location == LocationForm::absolute) {
        text += "http://";
        text += lines.site.urls[request.target.index].host;
    } else if (request.location == LocationForm::relative) {
        add_way_up(text, lines, request.url);
    }
    add_url(text, lines, request.target);
}

const SiteUrl& url_of(const LogLines& lines, const LoggedRequest& request) {
    return lines.site.urls[request.url.index];
}

struct LogField {
    char letter;
    void (*add)(std::string& text, const LogLines& lines, const LoggedRequest& request);
};

constexpr LogField fields[] = {
    {'a', add_address},
    {'t', [](auto& text, auto& lines, auto&) { text += lines.date; }},
    {'u', [](auto& text, auto&, auto& request) { text += std::to_string(request.microseconds); }},
    {'m', [](auto& text, auto& lines, auto& request) { text += url_of(lines, request).method; }},
    {'l', [](auto& text, auto& lines, auto& request) { add_url(text, lines, request.url); }},
    {'p', [](auto& text, auto& lines, auto& request) { add_path(text, lines, request.url); }},
    {'q', add_iis_query},
    {'s', [](auto& text, auto&, auto& request) { text += std::to_string(request.status); }},
    {'b', [](auto& text, auto&, auto& request) { text += std::to_string(request.bytes); }},
    {'r', add_referer},
    {'g', add_agent},
    {'c',
     [](auto& text, auto& lines, auto& request) { text += url_of(lines, request).content_type; }},
    {'k', add_cookies},
    {'n', add_new_cookie},
    {'h', [](auto& text, auto& lines, auto& request) { text += url_of(lines, request).host; }},
    {'d', add_location},
};

} // namespace

LogLines::LogLines(const GeneratorOptions& generator_options, const Site& logged_site)
    : options(generator_options), site(logged_site),
      layout(options.iis ? iis_layout : apache_layout),
      path_padding(options.long_urls ? 100'000 : 0, 'x') {}

void LogLines::add_header(std::string& text) const {
    text += layout.header;
}

void LogLines::add_request(std::string& text, const LoggedRequest& request) {
    add_line(text, layout.request, request);
}

void LogLines::add_bad_line(std::string& text, time_t time, uint64_t variant) {
    LoggedRequest request;
    request.time = time;
    add_line(text, layout.bad_lines[variant % layout.bad_lines.size()], request);
}

void LogLines::add_line(std::string& text, const char* form, const LoggedRequest& request) {
    if (request.time != date_time) {
        date_time = request.time;
        std::tm calendar{};
        gmtime_r(&date_time, &calendar);
        std::array<char, 64> buffer{};
        date.assign(buffer.data(),
                    std::strftime(buffer.data(), buffer.size(), layout.date, &calendar));
    }
    append_form(text, form, [&](char letter) {
        const auto* field = std::find_if(std::begin(fields), std::end(fields),
                                         [&](const LogField& one) { return one.letter == letter; });
        field->add(text, *this, request);
    });
    text += '\n';
}
