#include "tables.h"

#include "competitors.h"
#include "text_table.h"

#include <algorithm>
#include <cstdio>

namespace bench {

namespace {

// Everything measured on the files of one size.
struct SizeResult {
    std::uint64_t lines = 0;
    std::vector<Measurement> measurements;
    std::vector<std::string> left_out;
};

std::string tool_label(unsigned threads) {
    return "zvr_al_gen_url_list, " + std::to_string(threads) +
           (threads == 1 ? " thread" : " threads");
}

const Measurement* find(const SizeResult& size, const std::string& label) {
    const auto found =
        std::find_if(size.measurements.begin(), size.measurements.end(),
                     [&label](const Measurement& one) { return one.label == label; });
    return found == size.measurements.end() ? nullptr : &*found;
}

SizeResult measure_size(const Workbench& bench, const BenchmarkOptions& options,
                        std::uint64_t lines) {
    SizeResult size;
    size.lines = lines;
    const Installation installation = bench.generate("size_" + std::to_string(lines), lines, {});
    Competitors competitors = make_competitors(bench, options, installation);
    size.measurements = std::move(competitors.measurements);
    size.left_out = std::move(competitors.left_out);
    for (const unsigned threads : options.threads)
        size.measurements.push_back(
            bench.tool_run(tool_label(threads), installation, {.threads = threads}));
    run_interleaved(size.measurements, options.runs, options.warm_memory);
    Workbench::remove(installation);
    return size;
}

void add_row(TextTable& table, const Measurement& one, double floor) {
    const double wall = median_wall(one);
    const double lines = static_cast<double>(one.lines);
    table.add_row({one.label, format_count(lines), std::to_string(one.results.size()),
                   format_number(wall, 3), format_number(wall_spread(one) * 100, 0),
                   format_number(median_processor(one), 3),
                   format_number(median_peak(one) / 1e6, 1),
                   format_number(static_cast<double>(one.bytes) / wall / 1e6, 0),
                   format_number(lines / wall / 1e3, 0), format_number(wall / floor, 1),
                   format_number(median_peak(one) / lines, 0)});
}

void print_sizes(const std::vector<SizeResult>& sizes) {
    TextTable table({"command", "lines", "runs", "wall s", "spread %", "processor s", "peak MB",
                     "MB/s", "1000 lines/s", "x wc -l", "peak bytes/line"});
    for (const SizeResult& size : sizes) {
        const double floor = median_wall(*find(size, floor_label));
        for (const Measurement& one : size.measurements)
            add_row(table, one, floor);
    }
    table.print("Whole runs (medians; the peak of a pipeline is that of its largest process)");
    for (const SizeResult& size : sizes) {
        for (const std::string& reason : size.left_out)
            std::printf("\n%s lines: %s\n", format_count(static_cast<double>(size.lines)).c_str(),
                        reason.c_str());
    }
}

void print_phases(const std::vector<SizeResult>& sizes, const std::vector<unsigned>& threads) {
    std::vector<std::string> header = {"threads", "lines"};
    for (const PhaseName& name : phase_names)
        header.emplace_back(name.label);
    header.emplace_back("outside");
    TextTable table(header);
    for (const unsigned count : threads) {
        for (const SizeResult& size : sizes) {
            const Measurement& one = *find(size, tool_label(count));
            std::vector<std::string> row = {std::to_string(count),
                                            format_count(static_cast<double>(size.lines))};
            for (const double seconds : median_phases(one))
                row.push_back(format_number(seconds, 3));
            row.push_back(format_number(median_outside_phases(one), 3));
            table.add_row(row);
        }
    }
    table.print("Phases of zvr_al_gen_url_list in seconds (counting is a part of loading)");
}

double nanoseconds_a_line(const Measurement& one) {
    return median_wall(one) / static_cast<double>(one.lines) * 1e9;
}

void print_growth(const SizeResult& smallest, const SizeResult& largest) {
    TextTable table({"command", "smallest, ns/line", "largest, ns/line", "growth"});
    for (const Measurement& large : largest.measurements) {
        const Measurement* small = find(smallest, large.label);
        if (small == nullptr)
            continue;
        table.add_row({large.label, format_number(nanoseconds_a_line(*small), 0),
                       format_number(nanoseconds_a_line(large), 0),
                       format_number(nanoseconds_a_line(large) / nanoseconds_a_line(*small), 2)});
    }
    table.print("Growth: time of a line at " + format_count(static_cast<double>(largest.lines)) +
                " lines over " + format_count(static_cast<double>(smallest.lines)));
}

// One target for a ratio of two wall times at one size.
void add_target(TextTable& table, const SizeResult& size, const std::string& slow,
                const std::string& fast, const std::string& name, double limit, bool at_least) {
    const Measurement* numerator = find(size, slow);
    const Measurement* denominator = find(size, fast);
    if (numerator == nullptr || denominator == nullptr)
        return;
    const double ratio = median_wall(*numerator) / median_wall(*denominator);
    const bool met = at_least ? ratio >= limit : ratio <= limit;
    table.add_row({name, format_count(static_cast<double>(size.lines)),
                   (at_least ? "at least " : "at most ") + format_number(limit, 2),
                   format_number(ratio, 2), met ? "yes" : "NO"});
}

void add_memory_target(TextTable& table, const SizeResult& size) {
    constexpr double limit = 400;
    const Measurement* one = find(size, tool_label(1));
    if (one == nullptr)
        return;
    const double bytes = median_peak(*one) / static_cast<double>(one->lines);
    table.add_row({"peak memory, bytes a line", format_count(static_cast<double>(size.lines)),
                   "at most " + format_number(limit, 0), format_number(bytes, 0),
                   bytes <= limit ? "yes" : "NO"});
}

void add_growth_target(TextTable& table, const SizeResult& smallest, const SizeResult& largest) {
    constexpr double limit = 1.15;
    const Measurement* small = find(smallest, tool_label(1));
    const Measurement* large = find(largest, tool_label(1));
    if (small == nullptr || large == nullptr || small == large)
        return;
    const double growth = nanoseconds_a_line(*large) / nanoseconds_a_line(*small);
    table.add_row({"time of a line over that of the smallest size",
                   format_count(static_cast<double>(largest.lines)),
                   "at most " + format_number(limit, 2), format_number(growth, 2),
                   growth <= limit ? "yes" : "NO"});
}

void print_targets(const std::vector<SizeResult>& sizes) {
    TextTable table({"target", "lines", "limit", "measured", "met"});
    for (const SizeResult& size : sizes) {
        // The fixed cost of a process is a large part of a run below this size.
        if (size.lines >= 1'000'000) {
            add_target(table, size, tool_label(1), floor_label, "1 thread over wc -l", 8, false);
            add_target(table, size, tool_label(2), floor_label, "2 threads over wc -l", 5, false);
        }
        add_target(table, size, awk_hash_label, tool_label(1), "awk hash over 1 thread", 2.5, true);
        add_target(table, size, goaccess_label, tool_label(1), "GoAccess over 1 thread", 50, true);
    }
    add_memory_target(table, sizes.back());
    add_growth_target(table, sizes.front(), sizes.back());
    table.print("Targets");
}

} // namespace

void run_size_table(const Workbench& bench, const BenchmarkOptions& options) {
    std::vector<SizeResult> sizes;
    for (const std::uint64_t lines : options.sizes)
        sizes.push_back(measure_size(bench, options, lines));
    print_sizes(sizes);
    print_phases(sizes, options.threads);
    if (sizes.size() > 1)
        print_growth(sizes.front(), sizes.back());
    print_targets(sizes);
}

} // namespace bench
