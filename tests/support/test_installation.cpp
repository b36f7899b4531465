#include "tests/support/test_installation.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* project_directory = "workspace/admin/default/quarvel/default/default";

std::string read_file(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

void redirect(int descriptor, const fs::path& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    dup2(file, descriptor);
    close(file);
}

[[noreturn]] void become_program(const fs::path& root, const std::vector<std::string>& words,
                                 const std::map<std::string, std::string>& environment,
                                 const std::function<void()>& preparation) {
    setenv("ZV_WDIR", root.c_str(), 1);
    setenv("TZ", "UTC", 1);
    setenv("PATH", (root / "bin").c_str(), 1);
    for (const auto& [name, value] : environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    redirect(STDOUT_FILENO, root / "run.output");
    redirect(STDERR_FILENO, root / "run.errors");
    std::vector<char*> arguments = {const_cast<char*>(ZVR_TOOL_PATH)};
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    preparation();
    if (chdir(root.c_str()) == 0) {
        execv(ZVR_TOOL_PATH, arguments.data());
    }
    _exit(126);
}

std::vector<std::string> rows_after(size_t heading_lines, const std::string& text) {
    std::vector<std::string> lines = lines_of(text);
    const size_t count = std::min(heading_lines, lines.size());
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(count));
    return lines;
}

} // namespace

long RunResult::counter(const std::string& key) const {
    const size_t start = (";" + output).find(";" + key + "=");
    return start == std::string::npos ? -1 : std::atol(output.c_str() + start + key.size() + 1);
}

std::string RunResult::error_line(const std::string& message) {
    return "ZVR_GUI_ERROR:" + message + "\n";
}

void expect_failure(const RunResult& run, const std::string& message) {
    EXPECT_EQ(run.output, RunResult::error_line(message));
    EXPECT_EQ(run.status, 255);
}

void expect_some_failure(const RunResult& run) {
    EXPECT_EQ(run.output.rfind("ZVR_GUI_ERROR:", 0), 0U) << run.output;
    EXPECT_EQ(lines_of(run.output).size(), 1U) << run.output;
    EXPECT_EQ(run.status, 255);
}

std::string summary_line(const Summary& summary) {
    std::ostringstream text;
    text << "Total=" << summary.total << ";Redirected=" << summary.redirected
         << ";TimeBasedFiltered=" << summary.time_filtered << ";BadRequest=" << summary.bad
         << ";NonSessionRequest=" << summary.non_session
         << ";InlineFilteredRequest=" << summary.inline_filtered
         << ";TotalUrlPattern=" << summary.url_patterns << "\n";
    return text.str();
}

std::string combined_line(const LoggedRequest& request) {
    return request.client + " - - [10/Oct/2000:" + request.time + " +0000] \"" + request.method +
           " " + request.url + " HTTP/1.1\" " + std::to_string(request.status) +
           (request.more.empty() ? "" : " " + request.more) + "\n";
}

TestInstallation::TestInstallation() {
    std::string name = fs::temp_directory_path() / "zvr_test.XXXXXX";
    root_ = mkdtemp(name.data());
    write("sys/replay_settings.default", "GMT_OFFSET +0000\n");
    fs::create_directories(root_ / "webapps/zivrano/logs");
    fs::create_directories(root_ / "bin");
    fs::create_directories(root_ / config_directory() / "../.tmp");
    write_scenario("");
    add_settings("");
    write_patterns("");
    write_filters("");
}

TestInstallation::~TestInstallation() {
    std::error_code ignored;
    fs::remove_all(root_, ignored);
}

void TestInstallation::write(const std::string& path, const std::string& text) const {
    fs::create_directories((root_ / path).parent_path());
    std::ofstream(root_ / path, std::ios::binary) << text;
}

std::string TestInstallation::read(const std::string& path) const {
    return read_file(root_ / path);
}

bool TestInstallation::exists(const std::string& path) const {
    return fs::exists(root_ / path);
}

void TestInstallation::write_scenario(const std::string& text) const {
    write(scenario_directory() + "/web.conf", text);
}

void TestInstallation::write_settings(const std::string& text) const {
    write(profile_directory() + "/replay_settings.dat", text);
}

void TestInstallation::add_settings(const std::string& lines) const {
    write_settings("USER_SESSION_KEY client_ip\n"
                   "AL_FIELD CLIENT_IP 1\n"
                   "AL_FIELD DATE_AND_TIME 4\n"
                   "AL_FIELD REQUEST_LINE 5\n"
                   "AL_FIELD STATUS_CODE 6\n" +
                   lines);
}

void TestInstallation::write_patterns(const std::string& text) const {
    write(profile_directory() + "/replay_url_patterns.dat", text);
}

void TestInstallation::write_filters(const std::string& text) const {
    write(profile_directory() + "/replay_url_filter_patterns.dat", text);
}

void TestInstallation::write_logs(const std::vector<std::string>& texts) const {
    std::string scenario;
    for (size_t i = 0; i < texts.size(); ++i) {
        const std::string path = "logs/access_" + std::to_string(i);
        write(path, texts[i]);
        scenario += "REPLAY_LOG_FILE " + path + " x 0 HTTP\n";
    }
    write_scenario(scenario);
}

void TestInstallation::write_checker(int exit_code) const {
    write_checker_script("exit " + std::to_string(exit_code) + "\n");
}

void TestInstallation::write_checker_script(const std::string& script) const {
    const std::string path = "bin/zvr_al_gen_url_list_check";
    write(path, "#!/bin/sh\n" + script);
    fs::permissions(root_ / path, fs::perms::all);
}

std::string TestInstallation::result(const std::string& name) const {
    return read(config_directory() + "/" + name);
}

bool TestInstallation::has_result(const std::string& name) const {
    return exists(config_directory() + "/" + name);
}

std::vector<std::string> TestInstallation::url_rows() const {
    return rows_after(2, result("url.list"));
}

std::vector<std::string> TestInstallation::complete_url_rows() const {
    return rows_after(7, result("complete_url.list"));
}

std::vector<std::string> TestInstallation::debug_lines_with(const std::string& text) const {
    std::vector<std::string> messages;
    for (const std::string& line : debug_lines()) {
        if (line.find(text) != std::string::npos) {
            messages.push_back(line.substr(line.find('|') + 1));
        }
    }
    return messages;
}

std::vector<std::string> TestInstallation::debug_lines() const {
    std::vector<std::string> lines =
        lines_of(read("webapps/zivrano/logs/zivrano_replay_debug.log"));
    for (std::string& line : lines) {
        const size_t tool = line.find('|');
        line.erase(0, line.find('|', tool + 1) + 1);
    }
    return lines;
}

RunResult TestInstallation::run(const std::vector<std::string>& words,
                                const std::map<std::string, std::string>& environment) const {
    std::vector<std::string> all_words = {"-s", "web"};
    all_words.insert(all_words.end(), words.begin(), words.end());
    return run_words(all_words, environment);
}

RunResult TestInstallation::run_words(const std::vector<std::string>& words,
                                      const std::map<std::string, std::string>& environment) const {
    const pid_t child = fork();
    if (child == 0) {
        become_program(root_, words, environment, preparation_);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const std::string backup = "/tmp/zvr_al_gen_url_list.backup." + std::to_string(child);
    const bool left_backup = fs::remove_all(backup) > 0;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), read("run.output"),
            read("run.errors"), backup, left_backup};
}

std::string TestInstallation::program_name() {
    return ZVR_TOOL_PATH;
}

std::string TestInstallation::scenario_directory() {
    return std::string(project_directory) + "/scenarios";
}

std::string TestInstallation::profile_directory() {
    return std::string(project_directory) + "/replay_profiles/web";
}

std::string TestInstallation::config_directory() {
    return std::string(project_directory) + "/ReplayAccessLogs/web/config";
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

fs::path source_path(const std::string& path) {
    return fs::path(ZVR_SOURCE_DIR) / path;
}

std::string read_source_file(const std::string& path) {
    return read_file(source_path(path));
}
