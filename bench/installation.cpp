#include "installation.h"

#include "log_generator.h"
#include "pattern_files.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {

namespace {

namespace fs = std::filesystem;

// The scenario file's table of logs ends here.
constexpr unsigned most_files = 1000;

void write_text(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary);
    out << text;
    out.close();
    if (!out)
        throw std::runtime_error("cannot write " + path.string());
}

void check(const GeneratorOptions& options) {
    if (options.instances == 0 || options.instances > most_files || options.files > most_files)
        throw std::runtime_error("instances and files must lie between 1 and 1000");
    if (options.files != 0 && options.files < options.instances)
        throw std::runtime_error("there must be a file for each instance");
    if (options.lines < std::max(options.files, options.instances))
        throw std::runtime_error("there must be a line for each file");
    if (options.unique_urls == 0 ||
        (options.visit_every_url && options.unique_urls > options.lines))
        throw std::runtime_error("unique URLs must lie between 1 and the number of lines");
}

std::string numbered(const char* format, unsigned number) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), format, number);
    return text.data();
}

std::vector<fs::path> files_of_instance(const GeneratorOptions& options, const fs::path& logs,
                                        unsigned instance) {
    const unsigned files = options.files == 0 ? options.instances : options.files;
    const unsigned count =
        files * (instance + 1) / options.instances - files * instance / options.instances;
    const fs::path directory = logs / numbered("server%04u", instance + 1);
    std::vector<fs::path> paths;
    for (unsigned file = 0; file < count; ++file)
        paths.push_back(directory / numbered("access_log.%04u", file + 1));
    return paths;
}

std::string replay_settings(const GeneratorOptions& options) {
    std::string text;
    text += options.dialect == Dialect::iis ? "ACCESS_LOG_TYPE IIS\n" : "ACCESS_LOG_TYPE APACHE\n";
    text += options.client_address_sessions ? "USER_SESSION_KEY client_ip\n"
                                            : "USER_SESSION_KEY cookie\n";
    text += "COOKIE_NAME JSESSIONID\n"
            "SECONDARY_COOKIE 1 akaau\n"
            "AUTO_REDIRECT 1\n"
            "INLINE_OBJECT_MODE asperlog\n"
            "IGNORE_NON_SESSION_URLS 1\n";
    text += options.cut_queries ? "IGNORE_URL_QUERY_PARAM 1\n" : "IGNORE_URL_QUERY_PARAM 0\n";
    return text;
}

std::string scenario(const std::vector<fs::path>& logs) {
    // The period holds every request: each time stamp is compared and none is dropped.
    std::string text = "REPLAY_PERIOD START 01/01/2025 00:00:00\n"
                       "REPLAY_PERIOD END 12/31/2030 23:59:59\n";
    for (const fs::path& log : logs)
        text += "REPLAY_LOG_FILE " + log.string() + " 0 0 HTTP\n";
    return text;
}

std::vector<fs::path> write_logs(const GeneratorOptions& options, const fs::path& directory) {
    const UrlCatalogue catalogue(options);
    const ZipfDistribution popularity(catalogue.size());
    std::vector<fs::path> all;
    for (unsigned instance = 0; instance < options.instances; ++instance) {
        const auto files = files_of_instance(options, directory, instance);
        fs::create_directories(files.front().parent_path());
        LogGenerator(options, catalogue, popularity, instance).write_files(files);
        all.insert(all.end(), files.begin(), files.end());
    }
    return all;
}

} // namespace

void write_installation(const GeneratorOptions& options) {
    check(options);
    const fs::path root = fs::absolute(options.directory);
    if (root.string().find(' ') != std::string::npos)
        throw std::runtime_error("the scenario file cannot name a path with blanks: " +
                                 root.string());
    const fs::path project = root / "workspace/admin/default/quarvel/default/default";
    const fs::path profile = project / "replay_profiles/bench";
    fs::create_directories(root / "webapps/zivrano/logs");
    fs::create_directories(project / "ReplayAccessLogs/bench/config");
    fs::create_directories(project / "ReplayAccessLogs/bench/.tmp");
    write_text(root / "sys/replay_settings.default", "GMT_OFFSET +0000\n");
    write_text(profile / "replay_settings.dat", replay_settings(options));
    write_text(profile / "replay_url_patterns.dat", url_patterns(options));
    write_text(profile / "replay_url_filter_patterns.dat", filter_patterns(options));
    write_text(profile / order_data_file, "{\"order\": [\"item\", 1]}\n");
    const auto logs = write_logs(options, root / "logs");
    write_text(project / "scenarios/bench.conf", scenario(logs));
}

} // namespace bench
