#pragma once

#include "companions/report/distribution.h"
#include "tools/parse/line_tally.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the report tells of a scenario. All numbers are of the logs, patterns and settings as they
// are when the figures are gathered, and what "counts" is decided by the tool's own phases. Texts
// are as logged or as the files have them: not yet made fit for a terminal or a page.

// A moment as the clock of the replay zone shows it: seconds from 1970-01-01 00:00:00 of that
// clock, so that gmtime gives its date and time.
using WallSeconds = int64_t;

// ---- The way from lines to URLs ----

// Lines of the logs, each counted once; behind `loaded`, requests.
struct Funnel {
    uint64_t lines = 0; // read: all of the following up to `loaded`
    uint64_t blank = 0;
    uint64_t comments = 0;
    uint64_t bad = 0; // the sum of bad_lines
    uint64_t before_period = 0;
    uint64_t after_period = 0;
    uint64_t beyond_waiting_limit = 0; // where a thread stopped: no more requests can wait for
                                       // their session
    uint64_t loaded = 0;               // requests: all of the following up to `counted`

    uint64_t redirect_follow_ups = 0;
    uint64_t without_session =
        0;                // and left out for that; those that count all the same are not here
    uint64_t counted = 0; // all of the following

    uint64_t inline_left_out = 0;
    uint64_t filtered = 0;
    uint64_t inline_listed = 0;
    uint64_t main_with_transaction = 0;
    uint64_t main_without_transaction = 0; // a pattern says so
    uint64_t no_pattern = 0;               // no pattern fits; listed as main without transaction

    struct BadLines { // by the cause
        uint64_t unclosed_field = 0;
        uint64_t too_few_fields = 0;
        uint64_t invalid_client_address = 0;
        uint64_t invalid_request_line = 0;
        uint64_t invalid_time = 0;
        uint64_t missing_fields = 0;
    } bad_lines;

    std::string summary; // the line that a run would print

    uint64_t requests() const { return lines - blank - comments; } // handed to a parser
    uint64_t outside_period() const { return before_period + after_period; }

    // Whether each sum above holds; they are counted apart from each other.
    bool adds_up() const;
};

// ---- The load over time ----

extern const char* const status_class_names[status_class_count];

// Lines with a readable time that lie beside the steps, far from nearly all others.
struct OutlyingLines {
    uint64_t lines = 0;
    WallSeconds first = 0; // of them; rounded down to a step
    WallSeconds last = 0;
};

struct PeakStep {
    WallSeconds start = 0;
    uint64_t count = 0;
};

// Step i begins at start + i * step_seconds; all vectors have as many entries.
struct LoadOverTime {
    uint64_t step_seconds = 1; // 1, 60, 3600, or whole days
    WallSeconds start = 0;
    std::vector<uint64_t> requests;         // that count
    std::vector<uint64_t> main_requests;    // of these, main: neither inline nor filtered
    std::vector<uint64_t> sessions_begun;   // by their first request
    std::vector<uint64_t> sessions_at_work; // the most in any one second of the step
    // Of all lines that could be parsed, also of those outside the period and of requests that do
    // not count.
    std::array<std::vector<uint64_t>, status_class_count> responses;
    std::optional<size_t> peak; // the first step with the most requests that count; none: no such
    OutlyingLines before;       // the steps
    OutlyingLines after;
};

struct ReplayPeriod {
    std::optional<WallSeconds> start; // first second; none: no bound
    std::optional<WallSeconds> end;   // last second, likewise
};

// ---- Sessions ----

// By requests that count. A session lasts from its first to its last request, both seconds
// included, however long it is silent between them.
struct SessionFigures {
    uint64_t count = 0;
    uint64_t with_one_request = 0;
    Distribution requests;  // of a session
    Distribution length;    // seconds from first to last request
    Distribution gaps;      // seconds from one request to the next of its session
    Distribution page_gaps; // likewise, from one main request to the next: the time to think
    PeakStep peak_at_work;  // the most at one time; start: the first second with so many
};

// ---- The mix ----

struct UrlExample {
    std::string method;
    std::string host;
    std::string url;
    uint64_t requests;
};

// Requests of one kind, and their URLs.
struct TrafficShare {
    std::string name; // of the transaction, host or method
    uint64_t requests = 0;
    uint64_t urls = 0;
    double share = 0; // 0 to 1; of what, says its owner
};

struct TransactionFigures : TrafficShare {
    PeakStep peak_minute;             // the first minute with the most requests
    std::vector<UrlExample> examples; // at most 3, most requests first
};

struct TrafficMix {
    std::vector<TransactionFigures> transactions; // most requests first; share: of all of these
    TransactionFigures without_transaction;       // main requests; share: of all main requests
    // The following: of the rows of url.list, filtered and inline ones included.
    std::vector<TrafficShare> hosts;         // most requests first; "NA": none in the log
    std::vector<TrafficShare> methods;       // in capitals, most requests first
    std::vector<size_t> post_without_body;   // indices of rows: POST or PUT, main, not filtered,
                                             // without a body file
    uint64_t post_without_body_requests = 0; // behind them
};

// ---- The URLs ----

enum class UrlKind : uint8_t { main, main_without_transaction, inline_object };

// A row of url.list. The texts live as long as the process.
struct ListedUrl {
    std::string_view url; // of one whose query was ignored: ends with the separator and "*"
    std::string_view method;
    std::string_view host;        // as url.list has it
    std::string_view pattern;     // that decided; empty: none fits
    std::string_view transaction; // empty: none
    std::string_view body_file;   // path; empty: none
    UrlKind kind = UrlKind::main;
    bool is_filtered = false;
    bool sends_body = false; // POST or PUT
    uint64_t requests = 0;
};

struct QueryCount {
    std::string_view query; // what was cut off, behind the separator; lives as long as the process
    uint64_t requests;
};

struct UrlQueries {
    size_t url; // index of the row
    uint64_t different;
    std::vector<QueryCount> most_frequent;
};

enum class QueryState : uint8_t {
    not_cut,    // URLs keep their queries
    not_wanted, // option or settings say that no query is to be listed
    left_out,   // who asked for the figures wants none
    listed
};

// ---- What to set, and what to know ----

struct LoadTestSettings {
    double sessions_per_minute = 0;  // mean over the span of the requests that count
    PeakStep most_sessions_a_minute; // the busiest minute, by sessions begun
    double requests_per_minute = 0;  // mean
    PeakStep most_requests_a_minute;
    double main_requests_per_minute = 0;
    PeakStep most_main_requests_a_minute;
};

enum class ResultState : uint8_t { current, none, older, of_other_inputs, being_written };

// How the results of the last run stand to their inputs.
struct Freshness {
    ResultState state = ResultState::current;
    std::vector<std::string> newer_inputs; // paths: logs, settings, patterns, scenario, zone
    std::vector<std::string> other_inputs; // paths: scenario, settings, patterns of which the last
                                           // run has read another text, as of another profile
    bool lacks_query_list = false;         // though the settings ask for one
    std::string directory;                 // of the results
};

struct LogFile {
    std::string path; // as the scenario names it
    uint64_t bytes;
    bool is_body_file; // holds request bodies and is not loaded
};

struct ScenarioFigures {
    std::string scenario;
    std::string replay_profile;
    std::string log_type;     // "apache", "iis" or "other"
    std::string session_mode; // "cookie" or "client_address"
    bool are_queries_cut = false;
    std::vector<LogFile> logs; // in the order in which they are read
    Freshness freshness;
    Funnel funnel;
    ReplayPeriod period;
    std::optional<WallSeconds> first_request; // that counts; none: no request does
    std::optional<WallSeconds> last_request;
    LoadOverTime over_time;
    SessionFigures sessions;
    std::optional<Distribution> response_times; // microseconds, of requests in the period; none:
                                                // not in the logs. Less than 1 % too small
    TrafficMix mix;
    std::vector<ListedUrl> urls; // the rows of url.list, in its order
    QueryState query_state = QueryState::not_cut;
    std::vector<UrlQueries> queries; // by row, only those with a cut query
    LoadTestSettings to_set;
};
