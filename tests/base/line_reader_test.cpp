#include "base/line_reader.h"

#include <cstdio>
#include <gtest/gtest.h>

TEST(LineReader, TellsThatReadingFailed) {
    FILE* directory = std::fopen("/", "r");
    LineReader reader(fileno(directory), 100);
    LineText line;
    EXPECT_FALSE(reader.next(line));
    EXPECT_EXIT(reader.require_whole("test", "access_log"), testing::ExitedWithCode(255), "");
    std::fclose(directory);
}
