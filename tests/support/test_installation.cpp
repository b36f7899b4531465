#include "tests/support/test_installation.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

void redirect(int descriptor, const fs::path& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    dup2(file, descriptor);
    close(file);
}

Lines rows_after(size_t heading_lines, const std::string& text) {
    const Lines lines = lines_of(text);
    const size_t count = std::min(heading_lines, lines.size());
    return {lines.begin() + static_cast<std::ptrdiff_t>(count), lines.end()};
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

void let_files_settle() {
    usleep(25'000);
}

void limit_file_size(size_t size) {
    const rlimit limit = {size, size};
    setrlimit(RLIMIT_FSIZE, &limit);
}

TestInstallation::TestInstallation() {
    write("sys/replay_settings.default", "GMT_OFFSET +0000\n");
    for (const std::string& name :
         {std::string("webapps/zivrano/logs"), std::string("bin"), config_directory + "/../.tmp"}) {
        fs::create_directories(root() / name);
    }
    write_scenario("");
    add_settings("");
    write_patterns("");
    write_filters("");
}

void TestInstallation::add_settings(const std::string& lines) const {
    write_settings("USER_SESSION_KEY client_ip\nAL_FIELD CLIENT_IP 1\nAL_FIELD DATE_AND_TIME 4\n"
                   "AL_FIELD REQUEST_LINE 5\nAL_FIELD STATUS_CODE 6\n" +
                   lines);
}

void TestInstallation::write_logs(const Lines& texts) const {
    Lines paths;
    for (const std::string& text : texts) {
        paths.push_back("logs/access_" + std::to_string(paths.size()));
        write(paths.back(), text);
    }
    name_logs(paths);
}

void TestInstallation::name_logs(const Lines& paths, const std::string& budget) const {
    std::string scenario;
    for (const std::string& path : paths) {
        scenario += "REPLAY_LOG_FILE " + path + " x " + budget + " HTTP\n";
    }
    write_scenario(scenario);
}

void TestInstallation::write_checker(int exit_code) const {
    write_checker_script("exit " + std::to_string(exit_code) + "\n");
}

void TestInstallation::write_checker_script(const std::string& script) const {
    const std::string name = "bin/zvr_al_gen_url_list_check";
    fs::remove(root() / name); // it may be a link to the real one
    fs::permissions(write(name, "#!/bin/sh\n" + script), fs::perms::all);
}

void TestInstallation::use_checker() const {
    const std::string name = "zvr_al_gen_url_list_check";
    fs::create_symlink(fs::path(program_name()).parent_path() / "checker" / name,
                       root() / "bin" / name);
}

Lines TestInstallation::url_rows() const {
    return rows_after(2, result("url.list"));
}

Lines TestInstallation::complete_url_rows() const {
    return rows_after(7, result("complete_url.list"));
}

std::map<std::string, std::string> TestInstallation::files_of(const std::string& directory) const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(root() / directory)) {
        const std::string name = entry.path().filename();
        files[name] = read(directory + "/" + name);
    }
    return files;
}

Lines TestInstallation::debug_lines() const {
    Lines lines = lines_of(read("webapps/zivrano/logs/zivrano_replay_debug.log"));
    for (std::string& line : lines) {
        const size_t tool = line.find('|');
        line.erase(0, line.find('|', tool + 1) + 1);
    }
    return lines;
}

Lines TestInstallation::debug_lines_with(const std::string& text) const {
    Lines messages;
    for (const std::string& line : debug_lines()) {
        if (line.find(text) != std::string::npos) {
            messages.push_back(line.substr(line.find('|') + 1));
        }
    }
    return messages;
}

RunResult TestInstallation::run_words(const Lines& words, const Environment& environment) const {
    return finish(start(words, environment));
}

RunResult TestInstallation::run_program(const std::string& program, const Lines& words,
                                        const Environment& environment) const {
    return finish(start_program(program, words, environment));
}

RunResult TestInstallation::finish(pid_t run) const {
    int status = 0;
    waitpid(run, &status, 0);
    const std::string number = std::to_string(run);
    const std::string backup = "/tmp/zvr_al_gen_url_list.backup." + number;
    const bool left_backup = fs::exists(backup);
    std::error_code ignored; // a checker beside this test may remove it at the same time
    fs::remove_all(backup, ignored);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
            read("output." + number), read("errors." + number), backup, left_backup};
}

pid_t TestInstallation::start(const Lines& words, const Environment& environment) const {
    return start_program(ZVR_TOOL_PATH, words, environment);
}

pid_t TestInstallation::start_program(const std::string& program, const Lines& words,
                                      const Environment& environment) const {
    const pid_t child = fork();
    if (child != 0) {
        return child;
    }
    Environment all = environment;
    all.insert({{"ZV_WDIR", root()}, {"TZ", "UTC"}, {"PATH", path("bin")}});
    for (const auto& [name, value] : all) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    const std::string number = std::to_string(getpid());
    redirect(STDOUT_FILENO, path("output." + number));
    redirect(STDERR_FILENO, path("errors." + number));
    std::vector<char*> arguments = {const_cast<char*>(program.c_str())};
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    preparation_();
    if (chdir(root().c_str()) == 0) {
        execv(program.c_str(), arguments.data());
    }
    _exit(126);
}

std::string TestInstallation::program_name() {
    return ZVR_TOOL_PATH;
}

Lines lines_of(const std::string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

fs::path source_path(const std::string& path) {
    return fs::path(ZVR_SOURCE_DIR) / path;
}
