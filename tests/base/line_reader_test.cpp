#include "base/failure.h"
#include "base/line_reader.h"

#include <cstdio>
#include <gtest/gtest.h>

TEST(LineReader, TellsThatReadingFailed) {
    FILE* directory = std::fopen("/", "r");
    LineReader reader(fileno(directory), 100);
    LineText line;
    EXPECT_FALSE(reader.next(line));
    EXPECT_THROW(reader.require_whole("access_log"), Failure);
    std::fclose(directory);
}
