#include "tools/driver/result_cache.h"

#include "base/failure.h"
#include "base/logs.h"
#include "base/result_names.h"
#include "tools/config/replay_profile.h"
#include "tools/driver/paths.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

char g_workspace_user_profile_name[1024];

namespace {

constexpr const char* fname = "main";
constexpr const char* checker_command = "zvr_al_gen_url_list_check";

// What a shell answers for a command that it does not find or cannot run.
constexpr int answer_not_found = 127;
constexpr int answer_cannot_run = 126;

// Where a shell looks for commands when the environment does not tell.
constexpr const char* default_path = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";

// The child's part of run_quietly.
[[noreturn]] void become_program(const char* const arguments[]) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (dup2(nowhere, STDOUT_FILENO) == -1 || dup2(nowhere, STDERR_FILENO) == -1) {
        _exit(answer_cannot_run);
    }
    for (const int ignored_here : {SIGPIPE, SIGXFSZ}) {
        std::signal(ignored_here, SIG_DFL);
    }
    setenv("PATH", default_path, 0); // NOLINT(concurrency-mt-unsafe): no thread has been started
    execvp(arguments[0], const_cast<char* const*>(arguments));
    _exit(errno == ENOENT ? answer_not_found : answer_cannot_run);
}

// What is answered when the system has no process left to run the command in.
constexpr int answer_no_process = static_cast<int>(Reuse::refused);

// Runs a program found on the command path, without a shell, with its output discarded. Returns its
// exit code, or what a shell would answer in its place.
int run_quietly(const char* const arguments[]) {
    const pid_t child = fork();
    if (child == -1) {
        return answer_no_process;
    }
    if (child == 0) {
        become_program(arguments);
    }
    int status;
    while (waitpid(child, &status, 0) == -1) {
        if (errno != EINTR) {
            return answer_no_process;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

std::string checker_argument(const std::string& profile) {
    return std::string(g_workspace_user_profile_name) + "/" + profile + ".conf";
}

void refuse_second_run() {
    fail("Url list processing Tool is already running, first close that and run again");
}

Reuse check_cache() {
    const std::string profile = checker_argument(replay_profile);
    const std::string process_id = std::to_string(getpid());
    refuse_long_path(std::string(checker_command) + "  " + profile + " " + process_id +
                     " 1>/dev/null 2>/dev/null");
    const char* const arguments[] = {checker_command, profile.c_str(), process_id.c_str(), nullptr};
    switch (run_quietly(arguments)) {
    case static_cast<int>(Reuse::refused):
        refuse_second_run();
    case static_cast<int>(Reuse::everything):
        DEBUG_LOG(2, fname, "Cache level is 1, Result will be given from last result.");
        return Reuse::everything;
    case static_cast<int>(Reuse::complete_list):
        DEBUG_LOG(2, fname,
                  "Cache level is 2, last complete url will be processed to generate result.");
        return Reuse::complete_list;
    default:
        DEBUG_LOG(2, fname, "cache test failed, data will process from starting");
        return Reuse::nothing;
    }
}

bool print_cached_summary(const OwnDirectory& config_dir, const ReuseGuard& guard) {
    FILE* url_list = open_stream(config_dir.open_file(url_list_name), "r");
    if (url_list == nullptr) {
        fail("Failed to open url.list file");
    }
    constexpr int line_size = 2048;
    char line[line_size];
    const bool was_read = std::fgets(line, line_size, url_list) != nullptr;
    std::fclose(url_list);
    if (!was_read || !guard.holds(config_dir)) {
        DEBUG_LOG(1, fname, "Failed to read output form cahce, Data will be processed again.");
        return false;
    }
    DEBUG_LOG(1, fname, "Output will be given from cache.");
    if (std::fputs(line, stdout) == EOF || std::fflush(stdout) != 0) {
        fail("Unable to write summary to standard output");
    }
    return true;
}
