#pragma once

#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

// What a run's process does to itself before the program starts.

// How a run's process ends when the machine does not let the test make the fault.
constexpr int not_permitted = 77;

inline void require(bool succeeded) {
    if (!succeeded) {
        _exit(not_permitted);
    }
}

// Files that nobody may read are not for the superuser, either.
inline void obey_permissions() {
    constexpr unsigned long capabilities[] = {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH};
    for (const unsigned long capability : capabilities) {
        require(prctl(PR_CAPBSET_DROP, capability) == 0 || geteuid() != 0);
    }
}

// Gives the process its own view of the file system, and its children of what `more` names.
inline void leave_file_system(int more = 0) {
    require(unshare(CLONE_NEWNS | more | (geteuid() == 0 ? 0 : CLONE_NEWUSER)) == 0);
    require(mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0);
}

// Goes on as process 1 of a container with the same files.
inline void enter_container() {
    leave_file_system(CLONE_NEWPID);
    const pid_t first = fork();
    if (first != 0) {
        int status = 0;
        waitpid(first, &status, 0);
        _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
    }
    require(mount("proc", "/proc", "proc", 0, nullptr) == 0);
}
