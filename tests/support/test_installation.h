#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

// What a run of the program has given.
struct RunResult {
    int status = 0;     // exit status, 0 to 255; 128 and the signal's number when a signal ended it
    std::string output; // standard output
    std::string errors; // standard error

    // Value of a counter in the summary line; -1 when the line does not hold it.
    long counter(const std::string& key) const;

    // The output of a run that failed with this one error line.
    static std::string error_line(const std::string& message);
};

// A throw-away installation with one scenario, `web`, in the default workspace. It begins with a
// client-address session mode and the field layout of the combined log format, no patterns, and no
// log; each test writes what it is about. Runs are made with the installation as working directory,
// TZ=UTC and GMT_OFFSET +0000.
class TestInstallation {
  public:
    TestInstallation();
    ~TestInstallation();
    TestInstallation(const TestInstallation&) = delete;
    TestInstallation& operator=(const TestInstallation&) = delete;

    const std::filesystem::path& root() const { return root_; }

    // Files, by path relative to the installation; write makes their directories.
    void write(const std::string& path, const std::string& text) const;
    std::string read(const std::string& path) const;
    bool exists(const std::string& path) const;

    // The scenario's own files.
    void write_scenario(const std::string& text) const;
    void write_settings(const std::string& text) const;
    void write_patterns(const std::string& text) const;
    void write_filters(const std::string& text) const;

    // Writes `logs/access_<number>` for each text and a scenario that names them all.
    void write_logs(const std::vector<std::string>& texts) const;

    // Lets the checker command answer with this exit code; before that, no checker is found.
    void write_checker(int exit_code) const;

    // Results and debug lines.
    std::string result(const std::string& name) const; // a file of the configuration directory
    bool has_result(const std::string& name) const;
    std::vector<std::string> debug_lines() const; // without date and tool: "function|message"

    // Runs the program for the scenario with further words and environment variables.
    RunResult run(const std::vector<std::string>& words = {},
                  const std::map<std::string, std::string>& environment = {}) const;

    // Runs the program with exactly these words.
    RunResult run_words(const std::vector<std::string>& words,
                        const std::map<std::string, std::string>& environment = {}) const;

    // Paths of the scenario's directories, relative to the installation.
    static std::string scenario_directory();
    static std::string profile_directory();
    static std::string config_directory();

  private:
    std::filesystem::path root_;
};

// Lines of a text, without their line feeds.
std::vector<std::string> lines_of(const std::string& text);

// A file of the source tree.
std::string read_source_file(const std::string& path);
std::filesystem::path source_path(const std::string& path);
