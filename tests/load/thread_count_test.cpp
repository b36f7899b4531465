#include "tools/load/thread_count.h"

#include <gtest/gtest.h>

TEST(ThreadCount, LeavesSomeProcessorsToOthers) {
    const struct {
        int processors;
        int threads;
        const char* odd;
    } rows[] = {
        {-1, 1, "no count at all"},
        {0, 1, "none were found"},
        {1, 1, "the only one is not left to others"},
        {3, 1, "the last of which one thread is all"},
        {4, 2, "the first of which two are left"},
        {7, 5, "the last of which two are left"},
        {8, 4, "the first of which four are left, so that one more gives one thread less"},
        {9, 5, "from here on every one more counts"},
        {128, 124, "there is no upper end"},
    };
    for (const auto& [processors, threads, odd] : rows) {
        EXPECT_EQ(zvr_get_num_threads(processors), threads) << odd;
    }
}
