#include "tables.h"

#include "text_table.h"

#include <algorithm>
#include <array>

namespace bench {

namespace {

struct GrowthShape {
    const char* name;
    std::vector<std::string> generator_options;
    // Lines compared with those of the other shapes: 1 / divisor.
    std::uint64_t divisor = 1;
    // Log files of the smaller input, doubled like its lines; 0 leaves them to the generator.
    unsigned files = 0;
};

const std::array<GrowthShape, 13>& growth_shapes() {
    static const std::array<GrowthShape, 13> shapes = {{
        {"plain", {}},
        {"IIS layout", {"--iis"}},
        {"sessions by client address", {"--client-address"}},
        {"queries cut", {"--cut-queries"}},
        {"queries all different", {"--many-urls"}},
        {"requests waiting", {"--waiting", "--instances", "1"}},
        {"one session", {"--one-session"}},
        {"session per request", {"--session-per-request"}},
        {"one URL", {"--one-url"}},
        {"URL per request", {"--url-per-request"}},
        {"500 and 1000 files", {}, 1, 500},
        {"5000 patterns, URL per request", {"--url-per-request", "--patterns", "5000"}, 5},
        // 250 times as many bytes a line.
        {"URLs of 100 KB", {"--long-urls"}, 250},
    }};
    return shapes;
}

// A run that is linear doubles; this leaves room for noise and for caches that grow too small.
constexpr double most_growth = 2.3;

void measure_shape(TextTable& table, const Workbench& bench, const BenchmarkOptions& options,
                   const GrowthShape& shape) {
    // Every file needs a line; fewer lines than this would measure the start of the process.
    const std::uint64_t lines = std::max<std::uint64_t>(options.growth_lines / shape.divisor, 1000);
    std::vector<Installation> inputs;
    std::vector<Measurement> pair;
    for (const unsigned factor : {1U, 2U}) {
        std::vector<std::string> generator_options = shape.generator_options;
        if (shape.files > 0)
            generator_options.insert(generator_options.end(),
                                     {"--files", std::to_string(shape.files * factor)});
        const std::string name = "growth_" + std::to_string(factor);
        inputs.push_back(bench.generate(name, lines * factor, generator_options));
        pair.push_back(bench.tool_run(std::string(shape.name) + " x " + std::to_string(factor),
                                      inputs.back(), {}));
    }
    run_interleaved(pair, options.runs, options.warm_memory);
    const double ratio = median_wall(pair[1]) / median_wall(pair[0]);
    table.add_row(
        {shape.name, format_count(static_cast<double>(lines)),
         format_number(static_cast<double>(inputs[0].bytes) / 1e6, 0),
         format_number(median_wall(pair[0]), 3), format_number(median_wall(pair[1]), 3),
         format_number(ratio, 2),
         format_number(median_wall(pair[1]) / static_cast<double>(pair[1].lines) * 1e9, 0),
         format_number(median_peak(pair[1]) / static_cast<double>(pair[1].lines), 0),
         ratio <= most_growth ? "yes" : "NO"});
    for (const Installation& input : inputs)
        Workbench::remove(input);
}

} // namespace

void run_growth_table(const Workbench& bench, const BenchmarkOptions& options) {
    TextTable table({"shape, 1 thread", "lines", "MB", "wall s", "wall s, doubled", "ratio",
                     "ns/line, doubled", "peak bytes/line", "at most 2.3"});
    for (const GrowthShape& shape : growth_shapes())
        measure_shape(table, bench, options, shape);
    table.print("Growth when the input doubles (medians)");
}

} // namespace bench
