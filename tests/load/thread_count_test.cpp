#include "tools/load/thread_count.h"

#include <fstream>
#include <gtest/gtest.h>
#include <string>

TEST(ThreadCount, LeavesSomeProcessorsToOthers) {
    const int rows[][2] = {{-1, 1}, {0, 1}, {1, 1}, {3, 1},   {4, 2},
                           {7, 5},  {8, 4}, {9, 5}, {16, 12}, {128, 124}};
    for (const auto& [processors, threads] : rows) {
        EXPECT_EQ(zvr_get_num_threads(processors), threads) << processors;
    }
}

TEST(ThreadCount, KnowsTheProcessorsOfTheMachine) {
    std::ifstream cpuinfo("/proc/cpuinfo");
    int processors = 0;
    for (std::string line; std::getline(cpuinfo, line);) {
        processors += line.starts_with("processor");
    }
    EXPECT_EQ(zvr_get_num_cpu(), processors);
}
