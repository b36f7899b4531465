#pragma once

#include "generator_options.h"
#include "output_file.h"
#include "url_catalogue.h"
#include "visitor_session.h"

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace bench {

enum class LocationForm { none, absolute, from_root, relative };

// One request and its response, ready to be written. The session is null for visitors that
// accept no cookies.
struct LoggedRequest {
    std::time_t time = 0;
    std::uint64_t microseconds = 0;
    UrlUse url;
    unsigned status = 200;
    std::uint64_t bytes = 0;
    const VisitorSession* session = nullptr;
    bool sends_session_cookie = false;
    bool sets_session_cookie = false;
    LocationForm location = LocationForm::none;
    UrlUse target;
};

// Writes requests as log lines: the usual 15 fields with quotes, or the IIS layout of 15 plain
// fields, in which '+' stands for a blank.
class LineWriter {
  public:
    LineWriter(const GeneratorOptions& options, const UrlCatalogue& catalogue);

    void write_header(OutputFile& out) const;
    void write_request(OutputFile& out, const LoggedRequest& request);
    // Lines that no parser accepts; the variant picks what is wrong with it.
    void write_bad_line(OutputFile& out, std::time_t time, std::uint64_t variant);

  private:
    void write_apache(OutputFile& out, const LoggedRequest& request);
    void write_iis(OutputFile& out, const LoggedRequest& request);
    void put_path(OutputFile& out, UrlUse use) const;
    void put_query(OutputFile& out, UrlUse use) const;
    void put_url(OutputFile& out, UrlUse use) const;
    void put_referer(OutputFile& out, const LoggedRequest& request) const;
    void put_cookies(OutputFile& out, const LoggedRequest& request) const;
    void put_new_cookie(OutputFile& out, const LoggedRequest& request) const;
    void put_location(OutputFile& out, const LoggedRequest& request) const;
    unsigned directory_depth(UrlUse use) const;
    std::string_view date_text(std::time_t time);

    const UrlCatalogue& catalogue_;
    Dialect dialect_;
    Shape shape_;
    bool numbered_queries_;
    std::string_view cookie_separator_;
    // Visitors without cookies have no session, whatever sessions are told by.
    std::string_view crawler_address_;
    std::string padding_;
    std::time_t formatted_time_ = -1;
    std::string date_;
};

} // namespace bench
