#pragma once

#include "generator_options.h"
#include "line_writer.h"
#include "random_source.h"
#include "url_catalogue.h"
#include "visitor_session.h"

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <vector>

namespace bench {

// The traffic of one instance (a web server and its log files) in time order: visitors come,
// make about 20 requests each among those of the others, and leave.
class LogGenerator {
  public:
    LogGenerator(const GeneratorOptions& options, const UrlCatalogue& catalogue,
                 const ZipfDistribution& popularity, unsigned instance);

    // Writes the instance's share of the lines, the files one after the other.
    void write_files(const std::vector<std::filesystem::path>& files);

  private:
    void write_line(OutputFile& out);
    void write_visitor_line(OutputFile& out);
    void write_waiting_line(OutputFile& out);
    void write_crawler_line(OutputFile& out);
    VisitorSession& next_visitor();
    VisitorSession new_visitor();
    void choose_session_cookie(VisitorSession& session, LoggedRequest& request);
    void choose_response(VisitorSession& session, LoggedRequest& request);
    LoggedRequest start_request();
    UrlUse popular_url();
    UrlUse next_url();

    const GeneratorOptions& options_;
    const UrlCatalogue& catalogue_;
    const ZipfDistribution& popularity_;
    unsigned instance_;
    RandomSource random_;
    LineWriter writer_;
    std::vector<VisitorSession> visitors_;
    std::uint64_t lines_;
    std::uint64_t lines_written_ = 0;
    std::uint64_t sessions_started_ = 0;
    std::uint64_t numbers_used_ = 0;
    // The next URL of the round of visits at the beginning of the log.
    std::size_t next_visit_;
    // State of the waiting shape: a round of requests that wait, then as many that answer them.
    std::uint64_t round_size_ = 0;
    std::uint64_t round_line_ = 0;
    std::uint64_t round_first_session_ = 0;
};

// The lines of `instance` when `lines` are shared out evenly.
std::uint64_t lines_of_instance(const GeneratorOptions& options, unsigned instance);

} // namespace bench
