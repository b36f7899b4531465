#pragma once

#include <linux/capability.h>
#include <sys/prctl.h>
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
