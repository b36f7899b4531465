#include "line_writer.h"

#include <algorithm>
#include <array>

namespace bench {

namespace {

constexpr std::size_t long_url_length = 100'000;

constexpr std::array<std::string_view, 6> agents = {
    "Mozilla/5.0+(X11;+Linux+x86_64)+AppleWebKit/537.36+(KHTML,+like+Gecko)+Chrome/118.0.0.0+"
    "Safari/537.36",
    "Mozilla/5.0+(Windows+NT+10.0;+Win64;+x64;+rv:109.0)+Gecko/20100101+Firefox/118.0",
    "Mozilla/5.0+(Macintosh;+Intel+Mac+OS+X+10_15_7)+AppleWebKit/605.1.15+(KHTML,+like+Gecko)+"
    "Version/17.0+Safari/605.1.15",
    "Mozilla/5.0+(Windows+NT+10.0;+Win64;+x64)+AppleWebKit/537.36+(KHTML,+like+Gecko)+"
    "Chrome/117.0.0.0+Safari/537.36",
    "Mozilla/5.0+(iPhone;+CPU+iPhone+OS+16_6+like+Mac+OS+X)+AppleWebKit/605.1.15",
    "Mozilla/5.0+(Linux;+Android+13)+AppleWebKit/537.36+Chrome/118.0.0.0+Mobile+Safari/537.36"};

std::array<std::string, agents.size()> agents_with_blanks() {
    std::array<std::string, agents.size()> texts;
    for (std::size_t index = 0; index < agents.size(); ++index) {
        texts[index] = agents[index];
        std::replace(texts[index].begin(), texts[index].end(), '+', ' ');
    }
    return texts;
}

std::string_view as_text(const HexId& id) {
    return {id.data(), id.size()};
}

void put_address(OutputFile& out, const VisitorSession* session, std::string_view crawler) {
    if (session == nullptr) {
        out.put(crawler);
        return;
    }
    for (unsigned shift = 32; shift > 0;) {
        shift -= 8;
        out.put_number((session->address >> shift) & 255U);
        if (shift > 0)
            out.put('.');
    }
}

} // namespace

LineWriter::LineWriter(const GeneratorOptions& options, const UrlCatalogue& catalogue)
    : catalogue_(catalogue), dialect_(options.dialect), shape_(options.shape),
      numbered_queries_(options.many_urls || options.cut_queries),
      cookie_separator_(options.dialect == Dialect::iis ? ";+" : "; "),
      crawler_address_(options.client_address_sessions ? "-" : "192.0.2.77") {
    if (shape_ == Shape::long_urls)
        padding_.assign(long_url_length, 'x');
}

void LineWriter::write_header(OutputFile& out) const {
    if (dialect_ != Dialect::iis)
        return;
    out.put("#Version: 1.0");
    out.end_line();
    out.put("#Fields: c-ip date time cs-method cs-uri-stem cs-uri-query cs-version sc-status "
            "cs(User-Agent) cs(Referer) sc(Content-Type) cs(Cookie) sc(Set-Cookie) cs-host "
            "sc(Location)");
    out.end_line();
}

void LineWriter::write_request(OutputFile& out, const LoggedRequest& request) {
    if (dialect_ == Dialect::iis)
        write_iis(out, request);
    else
        write_apache(out, request);
    out.end_line();
}

void LineWriter::write_apache(OutputFile& out, const LoggedRequest& request) {
    static const auto agent_texts = agents_with_blanks();
    const CatalogueUrl& url = catalogue_[request.url.index];
    put_address(out, request.session, crawler_address_);
    out.put(" - - [");
    out.put(date_text(request.time));
    out.put("] ");
    out.put_number(request.microseconds);
    out.put(" \"");
    out.put(url.method);
    out.put(' ');
    put_url(out, request.url);
    out.put(" HTTP/1.1\" ");
    out.put_number(request.status);
    out.put(' ');
    out.put_number(request.bytes);
    out.put(" \"");
    put_referer(out, request);
    out.put("\" \"");
    out.put(request.session ? agent_texts[request.session->agent % agents.size()] : "Crawler/2.1");
    out.put("\" \"");
    out.put(url.content_type);
    out.put("\" \"");
    put_cookies(out, request);
    out.put("\" \"");
    put_new_cookie(out, request);
    out.put("\" \"");
    out.put(url.host);
    out.put("\" \"");
    put_location(out, request);
    out.put('"');
}

void LineWriter::write_iis(OutputFile& out, const LoggedRequest& request) {
    const CatalogueUrl& url = catalogue_[request.url.index];
    put_address(out, request.session, crawler_address_);
    out.put(' ');
    out.put(date_text(request.time));
    out.put(' ');
    out.put(url.method);
    out.put(' ');
    put_path(out, request.url);
    out.put(' ');
    if (url.query.empty())
        out.put('-');
    else
        put_query(out, request.url);
    out.put(" HTTP/1.1 ");
    out.put_number(request.status);
    out.put(' ');
    out.put(request.session ? agents[request.session->agent % agents.size()] : "Crawler/2.1");
    out.put(' ');
    put_referer(out, request);
    out.put(' ');
    out.put(url.content_type);
    out.put(' ');
    put_cookies(out, request);
    out.put(' ');
    put_new_cookie(out, request);
    out.put(' ');
    out.put(url.host);
    out.put(' ');
    put_location(out, request);
}

void LineWriter::write_bad_line(OutputFile& out, std::time_t time, std::uint64_t variant) {
    out.put("10.255.255.1 ");
    if (dialect_ == Dialect::apache) {
        constexpr std::array<std::string_view, 3> tails = {
            "] 12 \"-\" 408 0 \"-\" \"-\" \"-\" \"-\" \"-\" \"-\" \"-\"",
            "] 12 \"GET /index.html HTTP/1.1\" 200 5120 \"-\" \"Mozilla/5.0",
            "] 12 \"GET /index.html HTTP/1.1\" 200 5120"};
        out.put("- - [");
        out.put(date_text(time));
        out.put(tails[variant % tails.size()]);
    } else if (variant % 2 == 0) {
        out.put(date_text(time));
        out.put(" GET /index.html - HTTP/1.1 200");
    } else {
        out.put("- - GET /index.html - HTTP/1.1 200 - - - - - - -");
    }
    out.end_line();
}

void LineWriter::put_path(OutputFile& out, UrlUse use) const {
    out.put(catalogue_[use.index].path);
    if (shape_ == Shape::url_per_request || shape_ == Shape::long_urls) {
        out.put('/');
        out.put(padding_);
        out.put_number(use.number);
    }
}

void LineWriter::put_query(OutputFile& out, UrlUse use) const {
    out.put(catalogue_[use.index].query);
    if (numbered_queries_) {
        out.put("&request=");
        out.put_number(use.number);
    }
}

void LineWriter::put_url(OutputFile& out, UrlUse use) const {
    put_path(out, use);
    if (catalogue_[use.index].query.empty())
        return;
    out.put('?');
    put_query(out, use);
}

void LineWriter::put_referer(OutputFile& out, const LoggedRequest& request) const {
    if (request.session == nullptr || !request.session->has_referer) {
        out.put('-');
        return;
    }
    const CatalogueUrl& page = catalogue_[request.session->referer];
    out.put("http://");
    out.put(page.host);
    out.put(page.path);
}

void LineWriter::put_cookies(OutputFile& out, const LoggedRequest& request) const {
    if (request.session == nullptr) {
        out.put('-');
        return;
    }
    out.put("lang=en_US");
    out.put(cookie_separator_);
    out.put("akaau=1759708800~id=");
    out.put(as_text(request.session->secondary_id));
    if (request.sends_session_cookie) {
        out.put(cookie_separator_);
        out.put("JSESSIONID=");
        out.put(as_text(request.session->session_id));
        out.put(".node1");
    }
}

void LineWriter::put_new_cookie(OutputFile& out, const LoggedRequest& request) const {
    if (!request.sets_session_cookie) {
        out.put('-');
        return;
    }
    out.put("JSESSIONID=");
    out.put(as_text(request.session->session_id));
    out.put(".node1");
    out.put(cookie_separator_);
    out.put("Path=/");
    out.put(cookie_separator_);
    out.put("HttpOnly");
}

void LineWriter::put_location(OutputFile& out, const LoggedRequest& request) const {
    switch (request.location) {
    case LocationForm::none:
        out.put('-');
        return;
    case LocationForm::absolute:
        out.put("http://");
        out.put(catalogue_[request.target.index].host);
        break;
    case LocationForm::from_root:
        break;
    case LocationForm::relative:
        for (unsigned step = 0; step < directory_depth(request.url); ++step)
            out.put(step == 0 ? ".." : "/..");
        break;
    }
    put_url(out, request.target);
}

// How many directories lie between the root and the URL's last path component.
unsigned LineWriter::directory_depth(UrlUse use) const {
    const unsigned added = shape_ == Shape::url_per_request ? 1 : 0;
    return catalogue_[use.index].slashes + added - 1;
}

std::string_view LineWriter::date_text(std::time_t time) {
    if (time == formatted_time_)
        return date_;
    std::tm fields{};
    gmtime_r(&time, &fields);
    std::array<char, 64> text{};
    const char* format = dialect_ == Dialect::iis ? "%Y-%m-%d %H:%M:%S" : "%d/%b/%Y:%H:%M:%S +0000";
    const std::size_t length = std::strftime(text.data(), text.size(), format, &fields);
    date_.assign(text.data(), length);
    formatted_time_ = time;
    return date_;
}

} // namespace bench
