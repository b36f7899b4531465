#include "process_runner.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sstream>
#include <string_view>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace bench {

namespace {

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

void redirect(const char* path, int flags, int descriptor) {
    const int file = open(path, flags, 0666);
    if (file < 0 || dup2(file, descriptor) < 0)
        _exit(127);
    close(file);
}

[[noreturn]] void become(const Command& command, int error_pipe) {
    redirect("/dev/null", O_RDONLY, STDIN_FILENO);
    redirect(command.output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
    dup2(error_pipe, STDERR_FILENO);
    for (const auto& [name, value] : command.environment)
        setenv(name.c_str(), value.c_str(), 1); // NOLINT(concurrency-mt-unsafe): one thread
    std::vector<char*> words;
    for (const std::string& word : command.words)
        words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    execvp(words[0], words.data());
    _exit(127);
}

void split_lines(std::string_view text, std::string& partial, std::vector<StampedLine>& lines) {
    const Clock::time_point arrival = Clock::now();
    for (const char character : text) {
        if (character != '\n') {
            partial += character;
            continue;
        }
        lines.push_back({arrival, partial});
        partial.clear();
    }
}

std::vector<StampedLine> read_lines(int pipe) {
    std::vector<StampedLine> lines;
    std::string partial;
    std::array<char, 4096> buffer;
    for (;;) {
        const ssize_t count = read(pipe, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        split_lines({buffer.data(), static_cast<std::size_t>(count)}, partial, lines);
    }
    if (!partial.empty())
        lines.push_back({Clock::now(), partial});
    return lines;
}

} // namespace

ProcessResult run_process(const Command& command) {
    std::array<int, 2> pipe_ends;
    if (pipe2(pipe_ends.data(), O_CLOEXEC) != 0)
        fail("pipe");
    const Clock::time_point start = Clock::now();
    ProcessResult result;
    result.pid = fork();
    if (result.pid < 0)
        fail("fork");
    if (result.pid == 0)
        become(command, pipe_ends[1]);
    close(pipe_ends[1]);
    result.error_lines = read_lines(pipe_ends[0]);
    close(pipe_ends[0]);

    int status = 0;
    rusage usage{};
    while (wait4(result.pid, &status, 0, &usage) < 0) {
        if (errno != EINTR)
            fail("wait4");
    }
    result.wall_seconds = std::chrono::duration<double>(Clock::now() - start).count();
    result.exit_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.processor_seconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    result.peak_bytes = static_cast<double>(usage.ru_maxrss) * 1024.0;
    return result;
}

bool has_program(const std::string& name) {
    const char* path = std::getenv("PATH"); // NOLINT(concurrency-mt-unsafe): one thread
    std::istringstream directories(path == nullptr ? "" : path);
    for (std::string directory; std::getline(directories, directory, ':');) {
        if (access((std::filesystem::path(directory) / name).c_str(), X_OK) == 0)
            return true;
    }
    return false;
}

} // namespace bench
