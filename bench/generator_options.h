#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace bench {

enum class Dialect { apache, iis };

// What the requests of a log look like as a whole. All but `plain` are chosen to hurt.
enum class Shape {
    plain,
    // Half of the requests wait for a session id by their secondary cookie.
    waiting,
    one_session,
    session_per_request,
    one_url,
    url_per_request,
    // URLs of 100 KB that differ only in their last characters.
    long_urls,
};

struct GeneratorOptions {
    std::filesystem::path directory;
    std::uint64_t lines = 250'000;
    // Groups of log files; the tool shares them among its threads.
    unsigned instances = 4;
    // Log files in all; 0 means one for each instance.
    unsigned files = 0;
    Dialect dialect = Dialect::apache;
    Shape shape = Shape::plain;
    bool client_address_sessions = false;
    // A fresh number in every query, so that nearly all URLs with a query are unique.
    bool many_urls = false;
    // The same requests, but the replay settings cut URLs at their query.
    bool cut_queries = false;
    // Distinct URLs to choose from.
    std::size_t unique_urls = 20'000;
    // Whether the log begins with one visit to each of them.
    bool visit_every_url = false;
    // 0: the mixed set of 200; else this many, all of them wildcard patterns.
    std::size_t wildcard_patterns = 0;
};

} // namespace bench
