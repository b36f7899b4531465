#include "tables.h"

#include "text_table.h"

namespace bench {

namespace {

// Two measurements of which the first may cost at most `limit` times the second.
struct Comparison {
    std::string name;
    std::vector<Measurement> pair;
    double limit;
};

Comparison compare_runs(std::string name, Measurement subject, Measurement reference,
                        double limit) {
    Comparison comparison{std::move(name), {}, limit};
    comparison.pair.push_back(std::move(reference));
    comparison.pair.push_back(std::move(subject));
    return comparison;
}

void add_result(TextTable& table, const Comparison& comparison) {
    const Measurement& reference = comparison.pair[0];
    const Measurement& subject = comparison.pair[1];
    const double ratio = median_wall(subject) / median_wall(reference);
    table.add_row({comparison.name, format_count(static_cast<double>(subject.lines)),
                   format_number(median_wall(subject), 3), format_number(median_wall(reference), 3),
                   format_number(wall_spread(reference) * 100, 0), format_number(ratio, 2),
                   format_number(comparison.limit, 2), ratio <= comparison.limit ? "yes" : "NO"});
}

void measure(TextTable& table, Comparison comparison, const BenchmarkOptions& options) {
    run_interleaved(comparison.pair, options.runs, options.warm_memory);
    add_result(table, comparison);
}

// The reference runs first in every round, so that there is a result to read back.
void compare_on_plain_log(TextTable& table, const Workbench& bench,
                          const BenchmarkOptions& options) {
    const Installation plain = bench.generate("plain", options.sizes.back(), {});
    measure(table,
            compare_runs("cache level 2 over a full run",
                         bench.tool_run("cache level 2", plain, {.cache_level = 2}),
                         bench.tool_run("full run", plain, {}), 0.25),
            options);
    measure(table,
            compare_runs("--debug 1 over no debugging",
                         bench.tool_run("--debug 1", plain, {.debug_level = 1}),
                         bench.tool_run("no debugging", plain, {}), 1.05),
            options);
    Workbench::remove(plain);
}

void compare_patterns(TextTable& table, const Workbench& bench, const BenchmarkOptions& options) {
    const std::string unique = std::to_string(options.comparison_lines / 5);
    const Installation few = bench.generate("few_patterns", options.comparison_lines,
                                            {"--unique", unique, "--patterns", "50"});
    const Installation many = bench.generate("many_patterns", options.comparison_lines,
                                             {"--unique", unique, "--patterns", "5000"});
    measure(table,
            compare_runs(unique + " unique URLs: 5000 patterns over 50",
                         bench.tool_run("5000 patterns", many, {}),
                         bench.tool_run("50 patterns", few, {}), 3),
            options);
    Workbench::remove(few);
    Workbench::remove(many);
}

void compare_waiting(TextTable& table, const Workbench& bench, const BenchmarkOptions& options) {
    const Installation waiting =
        bench.generate("waiting", options.comparison_lines, {"--waiting", "--instances", "1"});
    const Installation plain =
        bench.generate("not_waiting", options.comparison_lines, {"--instances", "1"});
    measure(table,
            compare_runs("half of the requests wait, over a plain log",
                         bench.tool_run("waiting requests", waiting, {}),
                         bench.tool_run("plain log", plain, {}), 2),
            options);
    Workbench::remove(waiting);
    Workbench::remove(plain);
}

} // namespace

void run_comparison_table(const Workbench& bench, const BenchmarkOptions& options) {
    TextTable table({"comparison, 1 thread", "lines", "wall s", "reference s", "its spread %",
                     "ratio", "at most", "met"});
    compare_on_plain_log(table, bench, options);
    compare_patterns(table, bench, options);
    compare_waiting(table, bench, options);
    table.print("Comparisons (medians)");
}

} // namespace bench
