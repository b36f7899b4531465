// Generates an installation tree with access logs for the benchmark; equal options give equal
// files.

#include "bench/generator/installation.h"
#include "bench/generator/option_table.h"

#include <cstdio>
#include <exception>

namespace {

GeneratorOptions read_command_line(int argc, char* argv[]) {
    GeneratorOptions options;
    read_options(
        argc, argv,
        {
            {"directory", &options.directory, "where to (needed)"},
            {"lines", &options.lines, "log lines in all (default 250000)"},
            {"instances", &options.instances, "groups of log files (default 4)"},
            {"files", &options.files, "log files in all (default: one for each instance)"},
            {"iis", &options.iis, "the IIS layout instead of the Apache layout"},
            {"client-address", &options.client_address, "sessions by address, not by cookie"},
            {"many-urls", &options.many_urls, "a fresh number in every query"},
            {"cut-queries", &options.cut_queries, "the same, and the settings ignore queries"},
            {"unique", &options.unique, "distinct URLs, each asked for (default 20000, not all)"},
            {"patterns", &options.patterns, "wildcard patterns (default: 200 of all kinds)"},
            // Shapes that hurt.
            {"waiting", &options.waiting, "half of the requests wait for their session's id"},
            {"one-session", &options.one_session, "all requests are of one session"},
            {"session-per-request", &options.session_per_request, "all are of different ones"},
            {"one-url", &options.one_url, "all requests ask for one URL"},
            {"url-per-request", &options.url_per_request, "all ask for different ones"},
            {"long-urls", &options.long_urls, "URLs of 100 KB that differ at their ends"},
        });
    return options;
}

} // namespace

int main(int argc, char* argv[]) {
    try {
        write_installation(read_command_line(argc, argv));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "generate_installation: %s\n", error.what());
        return 1;
    }
    return 0;
}
