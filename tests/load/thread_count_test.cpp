#include "tools/load/thread_count.h"

#include <gtest/gtest.h>

TEST(ThreadCount, LeavesSomeProcessorsToOthers) {
    const int rows[][2] = {{-1, 1}, {0, 1}, {1, 1}, {3, 1},   {4, 2},
                           {7, 5},  {8, 4}, {9, 5}, {16, 12}, {128, 124}};
    for (const auto& [processors, threads] : rows) {
        EXPECT_EQ(zvr_get_num_threads(processors), threads) << processors;
    }
}
