#include "competitors.h"

namespace bench {

namespace {

// The slow ones are repeated no more often than this.
constexpr unsigned slow_runs = 3;

// Split at the quotes, the second field of a line is the request and the fourteenth the host.
constexpr const char* awk_sort_script =
    " -F'\"' '{ split($2, request, \" \"); print request[1], $14, request[2] }' \"$@\""
    " | LC_ALL=C sort | uniq -c";
constexpr const char* awk_hash_script =
    " -F'\"' '{ split($2, request, \" \"); count[request[1] \" \" $14 \" \" request[2]]++ }"
    " END { for (url in count) print count[url], url }' \"$@\"";

// The 15 fields of the logs as GoAccess names them.
constexpr const char* goaccess_format =
    "--log-format=%h %^ %^ [%d:%t %^] %D \"%r\" %s %b \"%R\" \"%u\" \"%^\" \"%^\" \"%^\" "
    "\"%v\" \"%^\"";

std::vector<std::string> goaccess_words(const Workbench& bench) {
    return {"goaccess",
            "--no-global-config",
            "--no-progress",
            goaccess_format,
            "--date-format=%d/%b/%Y",
            "--time-format=%H:%M:%S",
            "--output=" + (bench.scratch() / "goaccess.json").string()};
}

} // namespace

Competitors make_competitors(const Workbench& bench, const BenchmarkOptions& options,
                             const Installation& installation) {
    const std::string awk = has_program("mawk") ? "mawk" : "awk";
    Competitors all;
    all.measurements.push_back(bench.other_run(floor_label, installation, {"wc", "-l"}));
    all.measurements.push_back(
        bench.other_run(awk_hash_label, installation, {"sh", "-c", awk + awk_hash_script, "sh"}));
    if (installation.lines > options.slow_limit) {
        all.left_out.push_back(
            "awk with sort and uniq and GoAccess are left out, they take too long "
            "above " +
            std::to_string(options.slow_limit) + " lines (--slow-limit).");
        return all;
    }
    Measurement sort =
        bench.other_run(awk_sort_label, installation, {"sh", "-c", awk + awk_sort_script, "sh"});
    sort.most_runs = slow_runs;
    all.measurements.push_back(std::move(sort));
    if (!has_program("goaccess")) {
        all.left_out.emplace_back("GoAccess is skipped, it is not installed.");
        return all;
    }
    Measurement goaccess = bench.other_run(goaccess_label, installation, goaccess_words(bench));
    goaccess.most_runs = slow_runs;
    all.measurements.push_back(std::move(goaccess));
    return all;
}

} // namespace bench
