#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

// What a run of the program has given.
struct RunResult {
    int status = 0;     // exit status, 0 to 255; 128 and the signal's number when a signal ended it
    std::string output; // standard output
    std::string errors; // standard error
    std::string backup_directory;      // the run's backup of its inputs
    bool left_backup_directory = true; // whether it was still there at the end; it is removed then

    // Value of a counter in the summary line; -1 when the line does not hold it.
    long counter(const std::string& key) const;

    // The output of a run that failed with this one error line.
    static std::string error_line(const std::string& message);
};

// Expects a run that ended with this one error line, or with one error line of any text.
void expect_failure(const RunResult& run, const std::string& message);
void expect_some_failure(const RunResult& run);

// The counts of a summary line.
struct Summary {
    long total = 0;
    long redirected = 0;
    long time_filtered = 0;
    long bad = 0;
    long non_session = 0;
    long inline_filtered = 0;
    long url_patterns = 0;
};

std::string summary_line(const Summary& summary); // as printed, with its line feed

// A log line in the layout that an installation begins with.
struct LoggedRequest {
    std::string url = "/a";
    std::string method = "GET";
    std::string client = "10.0.0.1";
    std::string time = "13:55:36"; // of 10 October 2000, UTC
    int status = 200;
    std::string more = ""; // further fields, after the status code
};

std::string combined_line(const LoggedRequest& request = {});

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

    // Adds lines to the settings that the installation begins with.
    void add_settings(const std::string& lines) const;

    // Lets the checker command answer with this exit code, or run this shell script in the
    // installation's directory; before that, no checker is found.
    void write_checker(int exit_code) const;
    void write_checker_script(const std::string& script) const;

    // A step taken in every later run's process before the program begins: limits, masks,
    // environment.
    void prepare_process(std::function<void()> step) { preparation_ = std::move(step); }

    // Results and debug lines.
    std::string result(const std::string& name) const; // a file of the configuration directory
    bool has_result(const std::string& name) const;
    std::vector<std::string> url_rows() const;          // rows of url.list
    std::vector<std::string> complete_url_rows() const; // rows of complete_url.list
    std::vector<std::string> debug_lines() const;       // without date and tool: "function|message"
    std::vector<std::string> debug_lines_with(const std::string& text) const; // messages with it

    // Runs the program for the scenario with further words and environment variables.
    RunResult run(const std::vector<std::string>& words = {},
                  const std::map<std::string, std::string>& environment = {}) const;

    // Runs the program with exactly these words.
    RunResult run_words(const std::vector<std::string>& words,
                        const std::map<std::string, std::string>& environment = {}) const;

    // The program's name as its first command-line word.
    static std::string program_name();

    // Paths of the scenario's directories, relative to the installation.
    static std::string scenario_directory();
    static std::string profile_directory();
    static std::string config_directory();

  private:
    std::filesystem::path root_;
    std::function<void()> preparation_ = [] {};
};

// Lines of a text, without their line feeds.
std::vector<std::string> lines_of(const std::string& text);

// A file of the source tree.
std::string read_source_file(const std::string& path);
std::filesystem::path source_path(const std::string& path);
