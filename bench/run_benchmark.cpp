// Runs the tool and what a user would take instead as whole processes and prints tables of
// medians.

#include "machine_report.h"
#include "tables.h"

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

using bench::BenchmarkOptions;

constexpr const char* usage_text =
    "Usage: run_benchmark --tool PROGRAM --generator PROGRAM --scratch DIR [options]\n"
    "  --sizes N,N,...          lines of the whole runs (default 250000,1000000,4000000)\n"
    "  --threads N,N,...        threads of the whole runs (default 1,2)\n"
    "  --runs N                 runs of each command (default 5)\n"
    "  --warm-memory N          MB of memory to warm up before each run (default 2048; 0: none)\n"
    "  --slow-limit N           most lines for sort | uniq and GoAccess (default 1000000)\n"
    "  --comparison-lines N     lines of the comparisons (default 500000)\n"
    "  --growth-lines N         lines of the smaller input of each shape (default 250000)\n"
    "  --only TABLE             sizes, comparisons or growth (default: all three)\n"
    "  --quick                  small inputs and 2 runs, to see that everything works\n";

enum Option {
    opt_tool = 1,
    opt_generator,
    opt_scratch,
    opt_sizes,
    opt_threads,
    opt_runs,
    opt_warm_memory,
    opt_slow_limit,
    opt_comparison_lines,
    opt_growth_lines,
    opt_only,
    opt_quick,
    opt_help
};

constexpr std::array<option, 14> long_options = {{
    {"tool", required_argument, nullptr, opt_tool},
    {"generator", required_argument, nullptr, opt_generator},
    {"scratch", required_argument, nullptr, opt_scratch},
    {"sizes", required_argument, nullptr, opt_sizes},
    {"threads", required_argument, nullptr, opt_threads},
    {"runs", required_argument, nullptr, opt_runs},
    {"warm-memory", required_argument, nullptr, opt_warm_memory},
    {"slow-limit", required_argument, nullptr, opt_slow_limit},
    {"comparison-lines", required_argument, nullptr, opt_comparison_lines},
    {"growth-lines", required_argument, nullptr, opt_growth_lines},
    {"only", required_argument, nullptr, opt_only},
    {"quick", no_argument, nullptr, opt_quick},
    {"help", no_argument, nullptr, opt_help},
    {nullptr, 0, nullptr, 0},
}};

template <typename Number> Number read_number(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number == 0)
        throw std::runtime_error("not a number above 0: " + std::string(text));
    return number;
}

template <typename Number> std::vector<Number> read_numbers(std::string_view text) {
    std::vector<Number> numbers;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(',', start), text.size());
        numbers.push_back(read_number<Number>(text.substr(start, end - start)));
        start = end + 1;
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

void choose_table(BenchmarkOptions& options, std::string_view name) {
    if (name != "sizes" && name != "comparisons" && name != "growth")
        throw std::runtime_error("no such table: " + std::string(name));
    options.run_sizes = name == "sizes";
    options.run_comparisons = name == "comparisons";
    options.run_growth = name == "growth";
}

void make_quick(BenchmarkOptions& options) {
    options.sizes = {10'000, 40'000};
    options.runs = 2;
    options.comparison_lines = 10'000;
    options.growth_lines = 10'000;
}

void apply(BenchmarkOptions& options, int option, const char* argument) {
    switch (option) {
    case opt_tool:
        options.tool = std::filesystem::absolute(argument);
        break;
    case opt_generator:
        options.generator = std::filesystem::absolute(argument);
        break;
    case opt_scratch:
        options.scratch = std::filesystem::absolute(argument);
        break;
    case opt_sizes:
        options.sizes = read_numbers<std::uint64_t>(argument);
        break;
    case opt_threads:
        options.threads = read_numbers<unsigned>(argument);
        break;
    case opt_runs:
        options.runs = read_number<unsigned>(argument);
        break;
    case opt_warm_memory:
        options.warm_memory = read_number<std::size_t>(argument) << 20;
        break;
    case opt_slow_limit:
        options.slow_limit = read_number<std::uint64_t>(argument);
        break;
    case opt_comparison_lines:
        options.comparison_lines = read_number<std::uint64_t>(argument);
        break;
    case opt_growth_lines:
        options.growth_lines = read_number<std::uint64_t>(argument);
        break;
    case opt_only:
        choose_table(options, argument);
        break;
    default:
        make_quick(options);
    }
}

void run_tables(const BenchmarkOptions& options) {
    const bench::Workbench workbench(options);
    if (options.run_sizes)
        bench::run_size_table(workbench, options);
    if (options.run_comparisons)
        bench::run_comparison_table(workbench, options);
    if (options.run_growth)
        bench::run_growth_table(workbench, options);
}

} // namespace

int main(int argc, char** argv) {
    BenchmarkOptions options;
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
        if (options.tool.empty() || options.generator.empty() || options.scratch.empty() ||
            optind != argc) {
            std::fputs(usage_text, stderr);
            return 2;
        }
        bench::print_machine_report();
        std::printf("Memory warmed up before each run: %zu MB\n", options.warm_memory >> 20);
        std::fflush(stdout);
        run_tables(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "run_benchmark: %s\n", error.what());
        return 1;
    }
    return 0;
}
