#pragma once

#include "measurement.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace bench {

struct BenchmarkOptions {
    std::filesystem::path tool;
    std::filesystem::path generator;
    std::filesystem::path scratch;
    std::vector<std::uint64_t> sizes = {250'000, 1'000'000, 4'000'000};
    std::vector<unsigned> threads = {1, 2};
    unsigned runs = 5;
    // Bytes of memory that are warmed up before each run.
    std::size_t warm_memory = std::size_t{2} << 30;
    // The slow competitors (sort | uniq, GoAccess) run only up to this many lines.
    std::uint64_t slow_limit = 1'000'000;
    // Lines of the logs that the table of comparisons uses.
    std::uint64_t comparison_lines = 500'000;
    // Lines of the smaller of the two inputs of each shape in the table of growth.
    std::uint64_t growth_lines = 250'000;
    bool run_sizes = true;
    bool run_comparisons = true;
    bool run_growth = true;
};

// A generated installation with its logs.
struct Installation {
    std::filesystem::path root;
    std::vector<std::string> logs;
    std::uint64_t lines = 0;
    std::uint64_t bytes = 0;
};

struct ToolVariant {
    unsigned threads = 1;
    // 0 for a full run, 2 to read the unique URLs of the run before back from its result.
    int cache_level = 0;
    // 0 for no debug log.
    int debug_level = 0;
};

// The scratch directory of the benchmark and everything that is made in it.
class Workbench {
  public:
    explicit Workbench(const BenchmarkOptions& options);

    // Runs the generator and reads its logs once, so that they are in the page cache.
    Installation generate(const std::string& name, std::uint64_t lines,
                          const std::vector<std::string>& generator_options) const;
    static void remove(const Installation& installation);

    Measurement tool_run(const std::string& label, const Installation& installation,
                         const ToolVariant& variant) const;
    // Any other program; the log files follow its words.
    Measurement other_run(const std::string& label, const Installation& installation,
                          std::vector<std::string> words) const;

    const std::filesystem::path& scratch() const { return options_.scratch; }

  private:
    std::filesystem::path checker_directory(int cache_level) const;

    const BenchmarkOptions& options_;
};

} // namespace bench
