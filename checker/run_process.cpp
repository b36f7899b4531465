#include "checker/run_process.h"

#include "base/file_descriptor.h"
#include "base/file_state.h"

#include <climits>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <iterator>
#include <sstream>
#include <string_view>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view tool = "zvr_al_gen_url_list";
constexpr int64_t nanoseconds_per_second = 1'000'000'000;
constexpr size_t small_file_size = size_t{1} << 16; // more than the system writes of a process

fs::path process_directory(pid_t pid) {
    return fs::path("/proc") / std::to_string(pid);
}

// The directory of its files, which tell of this one process even when its number comes again.
FileDescriptor open_process(pid_t pid) {
    return FileDescriptor(open(process_directory(pid).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

// A file of a process, without waiting for its end; nothing when it cannot be read or is longer.
std::optional<std::string> read_file(const FileDescriptor& process, const char* name,
                                     size_t max_size) {
    return read_whole(FileDescriptor(openat(process.get(), name, O_RDONLY | O_CLOEXEC)), max_size);
}

// Texts that each end with a zero byte. The system starts no program with more than this of words
// and environment; only a process that has moved the place of its own shows more.
std::optional<std::vector<std::string>> read_texts(const FileDescriptor& process,
                                                   const char* name) {
    constexpr size_t max_size = size_t{6} << 20;
    const std::optional<std::string> whole = read_file(process, name, max_size);
    if (!whole) {
        return std::nullopt;
    }
    std::istringstream stream(*whole);
    std::vector<std::string> texts;
    for (std::string text; std::getline(stream, text, '\0');) {
        texts.push_back(text);
    }
    return texts;
}

// What a link among its files leads to; empty when the process may not be looked at.
fs::path linked_path(const FileDescriptor& process, const char* name) {
    char target[PATH_MAX];
    const ssize_t length = readlinkat(process.get(), name, target, sizeof target);
    return length > 0 ? fs::path(target, target + length) : fs::path();
}

// By its status, as the owner of its files may be root for other users' processes, too.
bool is_of_this_user(const FileDescriptor& process) {
    constexpr std::string_view key = "\nUid:"; // real and effective number
    const std::string status = read_file(process, "status", small_file_size).value_or("");
    const size_t place = status.find(key);
    uid_t real, effective;
    return place != std::string::npos &&
           std::istringstream(status.substr(place + key.size())) >> real >> effective &&
           effective == geteuid();
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
    const std::string text = read_file(open_process(pid), "stat", small_file_size).value_or("");
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

// Words and environment come last: others decide how much their processes show, and how long it
// takes to read.
std::optional<RunProcess> find_run(pid_t pid) {
    const FileDescriptor process = open_process(pid);
    if (!is_of_this_user(process) || !is_tool(linked_path(process, "exe"))) {
        return std::nullopt;
    }
    const fs::path directory = linked_path(process, "cwd");
    const auto words = read_texts(process, "cmdline");
    const auto environment = read_texts(process, "environ");
    if (directory.empty() || !words || words->empty() || !environment) {
        return std::nullopt;
    }
    RunProcess run = {pid, *words, {}, directory, process_directory(pid) / "exe"};
    for (const std::string& text : *environment) {
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
