#include "workbench.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace bench {

namespace {

namespace fs = std::filesystem;

// The checker command tells the tool what it may reuse. The benchmark brings its own, so that an
// installed one cannot turn a full run into a reading of the cache.
void write_checker(const fs::path& directory, int exit_status) {
    fs::create_directories(directory);
    const fs::path script = directory / "zvr_al_gen_url_list_check";
    std::ofstream(script) << "#!/bin/sh\nexit " << exit_status << "\n";
    fs::permissions(script, fs::perms::owner_all);
}

// Some ends of the tool leave its backup directory behind.
void remove_backup(const ProcessResult& result) {
    fs::remove_all("/tmp/zvr_al_gen_url_list.backup." + std::to_string(result.pid));
}

std::vector<std::string> lines_of(const fs::path& path) {
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

// A run counts only if it did its work: no error line, every log line accounted for, and the
// logs loaded or not, as the cache level says.
void verify_tool_run(const ProcessResult& result, const fs::path& output, std::uint64_t lines,
                     int cache_level) {
    const auto printed = lines_of(output);
    for (const std::string& line : printed) {
        if (line.starts_with("ZVR_GUI_ERROR:"))
            throw std::runtime_error("the tool reports: " + line);
    }
    const std::string expected = "Total=" + std::to_string(lines) + ";";
    if (printed.empty() || !printed.back().starts_with(expected))
        throw std::runtime_error("the tool's summary does not begin with " + expected + " but is " +
                                 (printed.empty() ? "missing" : printed.back()));
    const auto& progress = result.error_lines;
    const bool loaded = std::any_of(progress.begin(), progress.end(), [](const StampedLine& line) {
        return line.text.starts_with("Start processing access log");
    });
    if (loaded != (cache_level == 0))
        throw std::runtime_error(loaded ? "the tool loaded the logs instead of its cache"
                                        : "the tool did not load the logs");
}

} // namespace

Workbench::Workbench(const BenchmarkOptions& options) : options_(options) {
    write_checker(checker_directory(0), 1);
    write_checker(checker_directory(2), 2);
}

fs::path Workbench::checker_directory(int cache_level) const {
    return options_.scratch / "checker" / std::to_string(cache_level);
}

Installation Workbench::generate(const std::string& name, std::uint64_t lines,
                                 const std::vector<std::string>& generator_options) const {
    Installation installation;
    installation.root = options_.scratch / name;
    installation.lines = lines;
    fs::remove_all(installation.root);
    Command generator;
    generator.words = {options_.generator.string(), "--directory", installation.root.string(),
                       "--lines", std::to_string(lines)};
    generator.words.insert(generator.words.end(), generator_options.begin(),
                           generator_options.end());
    generator.output = "/dev/null";
    std::vector<Measurement> preparation(1);
    preparation[0].label = "generating " + name;
    preparation[0].command = generator;
    run_interleaved(preparation, 1);

    for (const auto& entry : fs::recursive_directory_iterator(installation.root / "logs")) {
        if (!entry.is_regular_file())
            continue;
        installation.logs.push_back(entry.path().string());
        installation.bytes += entry.file_size();
    }
    std::sort(installation.logs.begin(), installation.logs.end());
    preparation[0] = other_run("reading " + name, installation, {"wc", "-l"});
    run_interleaved(preparation, 1);
    return installation;
}

void Workbench::remove(const Installation& installation) {
    fs::remove_all(installation.root);
}

Measurement Workbench::other_run(const std::string& label, const Installation& installation,
                                 std::vector<std::string> words) const {
    Measurement measurement;
    measurement.label = label;
    measurement.command.words = std::move(words);
    measurement.command.words.insert(measurement.command.words.end(), installation.logs.begin(),
                                     installation.logs.end());
    measurement.command.output = options_.scratch / "output";
    measurement.lines = installation.lines;
    measurement.bytes = installation.bytes;
    return measurement;
}

Measurement Workbench::tool_run(const std::string& label, const Installation& installation,
                                const ToolVariant& variant) const {
    Measurement measurement;
    measurement.label = label;
    Command& command = measurement.command;
    command.words = {options_.tool.string(),         "-s", "bench", "-c", "-t",
                     std::to_string(variant.threads)};
    if (variant.debug_level > 0)
        command.words.insert(command.words.end(), {"--debug", std::to_string(variant.debug_level)});
    const char* path = std::getenv("PATH"); // NOLINT(concurrency-mt-unsafe): one thread
    command.environment = {{"ZV_WDIR", installation.root.string()},
                           {"PATH", checker_directory(variant.cache_level).string() + ":" +
                                        (path == nullptr ? "/usr/bin:/bin" : path)}};
    command.output = options_.scratch / "output";
    measurement.lines = installation.lines;
    measurement.bytes = installation.bytes;
    measurement.clean_up = remove_backup;
    measurement.verify = [output = command.output, lines = installation.lines,
                          level = variant.cache_level](const ProcessResult& result) {
        verify_tool_run(result, output, lines, level);
    };
    return measurement;
}

} // namespace bench
