#include "bench/generator/installation.h"

#include "bench/generator/log_generator.h"
#include "bench/generator/pattern_files.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

void write_text(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream out;
    out.exceptions(std::ios::failbit | std::ios::badbit);
    out.open(path, std::ios::binary);
    out << text;
    out.close();
}

void require(bool condition, const char* rule) {
    if (!condition) {
        throw std::runtime_error(rule);
    }
}

void check(const GeneratorOptions& options) {
    constexpr uint64_t most_files = 1000; // in the scenario file's table of logs
    require(!options.directory.empty(), "--directory is needed");
    require(options.instances >= 1 && std::max(options.instances, options.files) <= most_files,
            "instances and files must lie between 1 and 1000");
    require(options.files == 0 || options.files >= options.instances,
            "there must be a file for each instance");
    require(options.lines >= std::max(options.files, options.instances),
            "there must be a line for each file");
    require(options.unique <= options.lines, "there must be a line for each unique URL");
}

std::string numbered(const char* format, uint64_t number) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), format, static_cast<unsigned>(number));
    return text.data();
}

std::vector<fs::path> files_of_instance(const GeneratorOptions& options, const fs::path& logs,
                                        uint64_t instance) {
    const uint64_t files = options.files == 0 ? options.instances : options.files;
    const fs::path directory = logs / numbered("server%04u", instance + 1);
    std::vector<fs::path> paths;
    for (uint64_t file = 0; file < share(files, options.instances, instance); ++file) {
        paths.push_back(directory / numbered("access_log.%04u", file + 1));
    }
    return paths;
}

std::string replay_settings(const GeneratorOptions& options) {
    return std::string("ACCESS_LOG_TYPE ") + (options.iis ? "IIS" : "APACHE") +
           "\nUSER_SESSION_KEY " + (options.client_address ? "client_ip" : "cookie") +
           "\nCOOKIE_NAME JSESSIONID\n"
           "SECONDARY_COOKIE 1 akaau\n"
           "AUTO_REDIRECT 1\n"
           "INLINE_OBJECT_MODE asperlog\n"
           "IGNORE_NON_SESSION_URLS 1\n"
           "IGNORE_URL_QUERY_PARAM " +
           (options.cut_queries ? "1\n" : "0\n");
}

// Writes the logs and returns the scenario file for them.
std::string write_logs(const GeneratorOptions& options, const fs::path& logs) {
    // The period holds every request: each time stamp is compared and none is dropped.
    std::string scenario = "REPLAY_PERIOD START 01/01/2025 00:00:00\n"
                           "REPLAY_PERIOD END 12/31/2030 23:59:59\n";
    const Site site(options);
    for (uint64_t instance = 0; instance < options.instances; ++instance) {
        const auto files = files_of_instance(options, logs, instance);
        fs::create_directories(files.front().parent_path());
        write_instance(options, site, instance, files);
        for (const fs::path& file : files) {
            scenario += "REPLAY_LOG_FILE " + file.string() + " 0 0 HTTP\n";
        }
    }
    return scenario;
}

} // namespace

void write_installation(const GeneratorOptions& options) {
    check(options);
    const fs::path root = fs::absolute(options.directory);
    require(root.string().find(' ') == std::string::npos,
            "the scenario file cannot name a directory with blanks");
    const fs::path project = root / "workspace/admin/default/quarvel/default/default";
    const fs::path profile = project / "replay_profiles/bench";
    fs::create_directories(root / "webapps/zivrano/logs");
    fs::create_directories(project / "ReplayAccessLogs/bench/config");
    fs::create_directories(project / "ReplayAccessLogs/bench/.tmp");
    write_text(root / "sys/replay_settings.default", "GMT_OFFSET +0000\n");
    write_text(profile / "replay_settings.dat", replay_settings(options));
    write_text(profile / "replay_url_patterns.dat", url_patterns(options.patterns));
    write_text(profile / "replay_url_filter_patterns.dat", filter_patterns(options.patterns));
    write_text(profile / order_data_file, "{\"order\": [\"item\", 1]}\n");
    write_text(project / "scenarios/bench.conf", write_logs(options, root / "logs"));
}
