// Generates an installation tree with access logs for the benchmark; equal options give equal
// files.

#include "installation.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <exception>
#include <getopt.h>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using bench::Shape;

constexpr const char* usage_text =
    "Usage: generate_installation --directory DIR [options]\n"
    "  --lines N              log lines in all (default 250000)\n"
    "  --instances K          groups of log files (default 4)\n"
    "  --files N              log files in all (default: one for each instance)\n"
    "  --iis                  the IIS layout instead of the Apache layout\n"
    "  --client-address       sessions by client address instead of by cookie\n"
    "  --many-urls            queries that are nearly all different\n"
    "  --cut-queries          the same, and the settings ignore queries\n"
    "  --unique N             N distinct URLs, each of them asked for\n"
    "  --patterns N           N wildcard patterns instead of the 200 mixed ones\n"
    "One of the shapes that hurt:\n"
    "  --waiting              half of the requests wait for a session id by secondary cookie\n"
    "  --one-session, --session-per-request, --one-url, --url-per-request\n"
    "  --long-urls            URLs of 100 KB\n";

enum Option {
    opt_directory = 1,
    opt_lines,
    opt_instances,
    opt_files,
    opt_iis,
    opt_client_address,
    opt_many_urls,
    opt_cut_queries,
    opt_unique,
    opt_patterns,
    opt_help,
    opt_shape // and the values after it: one for each shape
};

constexpr int shape_option(Shape shape) {
    return opt_shape + static_cast<int>(shape);
}

constexpr std::array<option, 18> long_options = {{
    {"directory", required_argument, nullptr, opt_directory},
    {"lines", required_argument, nullptr, opt_lines},
    {"instances", required_argument, nullptr, opt_instances},
    {"files", required_argument, nullptr, opt_files},
    {"iis", no_argument, nullptr, opt_iis},
    {"client-address", no_argument, nullptr, opt_client_address},
    {"many-urls", no_argument, nullptr, opt_many_urls},
    {"cut-queries", no_argument, nullptr, opt_cut_queries},
    {"unique", required_argument, nullptr, opt_unique},
    {"patterns", required_argument, nullptr, opt_patterns},
    {"help", no_argument, nullptr, opt_help},
    {"waiting", no_argument, nullptr, shape_option(Shape::waiting)},
    {"one-session", no_argument, nullptr, shape_option(Shape::one_session)},
    {"session-per-request", no_argument, nullptr, shape_option(Shape::session_per_request)},
    {"one-url", no_argument, nullptr, shape_option(Shape::one_url)},
    {"url-per-request", no_argument, nullptr, shape_option(Shape::url_per_request)},
    {"long-urls", no_argument, nullptr, shape_option(Shape::long_urls)},
    {nullptr, 0, nullptr, 0},
}};

template <typename Number> Number read_number(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        throw std::runtime_error("not a number: " + std::string(text));
    return number;
}

void set_shape(bench::GeneratorOptions& options, int option) {
    if (options.shape != Shape::plain)
        throw std::runtime_error("only one shape can be chosen");
    options.shape = static_cast<Shape>(option - opt_shape);
}

void apply(bench::GeneratorOptions& options, int option, const char* argument) {
    switch (option) {
    case opt_directory:
        options.directory = argument;
        break;
    case opt_lines:
        options.lines = read_number<std::uint64_t>(argument);
        break;
    case opt_instances:
        options.instances = read_number<unsigned>(argument);
        break;
    case opt_files:
        options.files = read_number<unsigned>(argument);
        break;
    case opt_iis:
        options.dialect = bench::Dialect::iis;
        break;
    case opt_client_address:
        options.client_address_sessions = true;
        break;
    case opt_many_urls:
        options.many_urls = true;
        break;
    case opt_cut_queries:
        options.cut_queries = true;
        break;
    case opt_unique:
        options.unique_urls = read_number<std::size_t>(argument);
        options.visit_every_url = true;
        break;
    case opt_patterns:
        options.wildcard_patterns = read_number<std::size_t>(argument);
        break;
    default:
        set_shape(options, option);
    }
}

} // namespace

int main(int argc, char** argv) {
    bench::GeneratorOptions options;
    try {
        int option;
        // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
        while ((option = getopt_long(argc, argv, "", long_options.data(), nullptr)) != -1) {
            if (option == opt_help || option == '?') {
                std::fputs(usage_text, option == '?' ? stderr : stdout);
                return option == '?' ? 2 : 0;
            }
            apply(options, option, optarg);
        }
        if (options.directory.empty() || optind != argc) {
            std::fputs(usage_text, stderr);
            return 2;
        }
        bench::write_installation(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "generate_installation: %s\n", error.what());
        return 1;
    }
    return 0;
}
