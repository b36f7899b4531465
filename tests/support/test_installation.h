#pragma once

#include "tests/support/temporary_directory.h"

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

// Lines of a file or words of a command.
using Lines = std::vector<std::string>;
using Environment = std::map<std::string, std::string>;

Lines lines_of(const std::string& text); // without their line feeds

// The absolute path of a file of the source tree.
std::filesystem::path source_path(const std::string& path);

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

// The scenario's directories, relative to its installation.
inline const std::string project_directory = "workspace/admin/default/quarvel/default/default";
inline const std::string scenario_directory = project_directory + "/scenarios";
inline const std::string profile_directory = project_directory + "/replay_profiles/web";
inline const std::string config_directory = project_directory + "/ReplayAccessLogs/web/config";

// Waits until files count as written before a run that starts now.
void let_files_settle();

// Lets files that this process writes end at `size` bytes, as they would on a full disk.
void limit_file_size(size_t size);

// A throw-away installation with one scenario, `web`, in the default workspace. It begins with a
// client-address session mode and the field layout of the combined log format, no patterns, and no
// log; each test writes what it is about. Runs are made with the installation as working directory,
// TZ=UTC and GMT_OFFSET +0000.
class TestInstallation : public TemporaryDirectory {
  public:
    TestInstallation();

    // The scenario's own files.
    void write_scenario(std::string_view text) const {
        write(scenario_directory + "/web.conf", text);
    }
    void write_profile(const std::string& name, std::string_view text) const {
        write(profile_directory + "/" + name, text);
    }
    void write_settings(std::string_view text) const { write_profile("replay_settings.dat", text); }
    void write_patterns(std::string_view text) const {
        write_profile("replay_url_patterns.dat", text);
    }
    void write_filters(std::string_view text) const {
        write_profile("replay_url_filter_patterns.dat", text);
    }

    // Adds lines to the settings that the installation begins with.
    void add_settings(const std::string& lines) const;

    // Writes `logs/access_<number>` for each text and a scenario that names them all.
    void write_logs(const Lines& texts) const;

    // Writes a scenario that names these logs, with a line budget.
    void name_logs(const Lines& paths, const std::string& budget = "0") const;

    // Lets the checker command answer with this exit code, or run this shell script in the
    // installation's directory; before that, no checker is found.
    void write_checker(int exit_code) const;
    void write_checker_script(const std::string& script) const;

    // Lets the real checker answer, which stands beside the program.
    void use_checker() const;

    // A step taken in every later run's process before the program begins: limits, masks,
    // environment.
    void prepare_process(std::function<void()> step) { preparation_ = std::move(step); }

    // Results, files of the configuration directory.
    std::string result(const std::string& name) const {
        return read(config_directory + "/" + name);
    }
    bool has_result(const std::string& name) const { return exists(config_directory + "/" + name); }
    void write_result(const std::string& name, std::string_view text) const {
        write(config_directory + "/" + name, text);
    }
    Lines url_rows() const;          // rows of url.list
    Lines complete_url_rows() const; // rows of complete_url.list

    // The files of a directory, by name.
    std::map<std::string, std::string> files_of(const std::string& directory) const;

    Lines debug_lines() const; // without date and tool: "function|message"
    Lines debug_lines_with(const std::string& text) const; // messages with it

    // Runs the program for the scenario with further words and environment variables.
    RunResult run(Lines words = {}, const Environment& environment = {}) const {
        words.insert(words.begin(), {"-s", "web"});
        return run_words(words, environment);
    }

    // Runs the program with exactly these words.
    RunResult run_words(const Lines& words, const Environment& environment = {}) const;

    // Runs another program likewise, named by its path.
    RunResult run_program(const std::string& program, const Lines& words,
                          const Environment& environment = {}) const;

    // The two halves of a run of the tool: begins it and returns its process; waits for its end.
    pid_t start(const Lines& words, const Environment& environment = {}) const;
    RunResult finish(pid_t run) const;

    // The program's name as its first command-line word.
    static std::string program_name();

  private:
    pid_t start_program(const std::string& program, const Lines& words,
                        const Environment& environment) const;

    std::function<void()> preparation_ = [] {};
};
