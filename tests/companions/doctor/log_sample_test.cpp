#include "companions/doctor/init/log_sample.h"
#include "tests/support/temporary_directory.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

size_t size_of_lines(const LogSample& sample) {
    size_t size = 0;
    for (const std::string& line : sample.lines) {
        size += line.size();
    }
    return size;
}

} // namespace

TEST(LogSample, OfALogWithoutLineFeedsIsNotAllOfIt) {
    const TemporaryDirectory directory;
    directory.write("long.log", "first line\n" + std::string(40'000'000, 'x') + "\nlast line\n");
    const LogSample sample = read_log_sample(directory.path("long.log"), 1000);
    ASSERT_FALSE(sample.lines.empty());
    EXPECT_EQ(sample.lines.front(), "first line");
    EXPECT_EQ(sample.lines.back(), "last line");
    EXPECT_LT(size_of_lines(sample), 2'000'000U);
}
