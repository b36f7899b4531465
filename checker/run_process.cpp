#include "checker/run_process.h"

#include "base/file_state.h"

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view tool = "zvr_al_gen_url_list";
constexpr int64_t nanoseconds_per_second = 1'000'000'000;

fs::path process_directory(pid_t pid) {
    return fs::path("/proc") / std::to_string(pid);
}

std::vector<std::string> read_texts(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<std::string> texts;
    for (std::string text; std::getline(file, text, '\0');) {
        texts.push_back(text);
    }
    return texts;
}

bool is_tool(const fs::path& program) {
    std::string name = program.filename();
    constexpr std::string_view replaced = " (deleted)"; // while the run goes on with the old file
    if (name.ends_with(replaced)) {
        name.resize(name.size() - replaced.size());
    }
    return name == tool;
}

// Fields of /proc/<pid>/stat from the third on, the state; the second, the program's name, may hold
// blanks and parentheses.
std::vector<std::string> read_status_fields(pid_t pid) {
    std::ifstream file(process_directory(pid) / "stat");
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    const size_t name_end = text.rfind(')');
    if (name_end == std::string::npos) {
        return {};
    }
    std::istringstream rest(text.substr(name_end + 1));
    return {std::istream_iterator<std::string>(rest), {}};
}

constexpr size_t parent_field = 1;
constexpr size_t start_time_field = 19;

pid_t parent_of(pid_t pid) {
    const std::vector<std::string> fields = read_status_fields(pid);
    return fields.size() > parent_field ? std::atoi(fields[parent_field].c_str()) : 0;
}

int64_t now(clockid_t clock) {
    timespec time;
    clock_gettime(clock, &time);
    return nanoseconds(time);
}

// How far the time that a file gets may be behind: a step of its clock, and another one where an
// idle processor takes a step late.
int64_t file_time_lag() {
    timespec step;
    clock_getres(CLOCK_REALTIME_COARSE, &step);
    return 2 * nanoseconds(step);
}

} // namespace

const std::string* RunProcess::variable(const std::string& name) const {
    const auto found = environment.find(name);
    return found == environment.end() ? nullptr : &found->second;
}

bool is_live_run(pid_t pid) {
    std::error_code error;
    const fs::path program = fs::read_symlink(process_directory(pid) / "exe", error);
    if (!error) {
        return is_tool(program);
    }
    // Another user's; one that has ended has no words.
    const std::vector<std::string> words = read_texts(process_directory(pid) / "cmdline");
    return !words.empty() && is_tool(words[0]);
}

std::optional<RunProcess> find_run(pid_t pid) {
    std::error_code error;
    RunProcess run = {pid,
                      read_texts(process_directory(pid) / "cmdline"),
                      {},
                      {},
                      process_directory(pid) / "exe"};
    run.directory = fs::read_symlink(process_directory(pid) / "cwd", error);
    if (error || run.words.empty() || !is_live_run(pid)) {
        return std::nullopt;
    }
    for (const std::string& text : read_texts(process_directory(pid) / "environ")) {
        const size_t name_end = text.find('=');
        if (name_end != std::string::npos) { // of two of a name the first one counts
            run.environment.try_emplace(text.substr(0, name_end), text.substr(name_end + 1));
        }
    }
    return run;
}

bool is_ancestor(pid_t pid) {
    for (pid_t process = getppid(); process > 0; process = parent_of(process)) {
        if (process == pid) {
            return true;
        }
    }
    return false;
}

std::optional<int64_t> earliest_start_time(pid_t pid) {
    const std::vector<std::string> fields = read_status_fields(pid);
    if (fields.size() <= start_time_field) {
        return std::nullopt;
    }
    const int64_t tick = nanoseconds_per_second / sysconf(_SC_CLK_TCK);
    const int64_t start_tick = std::atoll(fields[start_time_field].c_str());
    const int64_t time = now(CLOCK_REALTIME);
    const int64_t since_start = now(CLOCK_BOOTTIME) - start_tick * tick;
    return time - since_start - file_time_lag();
}
