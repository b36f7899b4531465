#pragma once

#include <ctime>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// What mktime gives for each of these in turn, daylight saving left to it, in a process that has
// converted nothing before. This process must not have called mktime: the child inherits what it
// remembers.
inline std::vector<time_t> fresh_mktime(std::vector<tm> times) {
    const size_t size = times.size() * sizeof(time_t);
    void* page = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    time_t* answers = static_cast<time_t*>(page);
    const pid_t child = fork();
    if (child == 0) {
        for (size_t i = 0; i < times.size(); ++i) {
            times[i].tm_isdst = -1;
            answers[i] = mktime(&times[i]);
        }
        _exit(0);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    const std::vector<time_t> result(answers, answers + times.size());
    munmap(page, size);
    return result;
}
