#include "checker/answer.h"
#include "checker/backups.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <exception>

namespace {

bool read_process(const char* argument, pid_t& pid) {
    const char* end = argument + std::strlen(argument);
    return std::from_chars(argument, end, pid).ptr == end && pid > 0;
}

// What goes wrong here must not look like an answer that lets anything be used again.
Answer answer_safely(const char* profile, pid_t pid) {
    try {
        return answer_run(profile, pid);
    } catch (const std::exception& failure) {
        return {Reuse::nothing, failure.what()};
    }
}

// Whatever becomes of it, the answer stands.
void tidy_up() {
    try {
        remove_left_backups();
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "Backups of earlier runs are left: %s\n", failure.what());
    }
}

} // namespace

int main(int argc, char* argv[]) {
    pid_t pid = 0;
    if (argc != 3 || !read_process(argv[2], pid)) {
        std::fprintf(stderr, "Usage: %s /<replay profile>.conf <process id of the run>\n", argv[0]);
        return static_cast<int>(Reuse::nothing);
    }
    const Answer answer = answer_safely(argv[1], pid);
    tidy_up();
    std::printf("%d: %s\n", static_cast<int>(answer.reuse), answer.reason.c_str());
    return static_cast<int>(answer.reuse);
}
