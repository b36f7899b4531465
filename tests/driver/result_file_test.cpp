#include "tools/driver/result_file.h"

#include "tests/unit_helpers.h"

#include <csignal>
#include <sys/resource.h>

TEST(ResultFile, HoldsWhatWasAppendedInOrder) {
    const TemporaryDirectory directory;
    directory.write("result", "of an earlier run, " + std::string(9'000'000, 'x'));
    Choices choices(15);
    ResultFile file;
    ASSERT_TRUE(file.create(directory.path("result")));
    std::string expected = "first line\n018446744073709551615-1-9223372036854775808";
    file.append("first line\n");
    file.append_unsigned(0);
    file.append_unsigned(UINT64_MAX);
    file.append_signed(-1);
    file.append_signed(INT64_MIN);
    for (int i = 0; i < 1000; ++i) {
        const size_t size = choices.one_in(300) ? 1'500'000 : choices.below(4000);
        const std::string text(size, static_cast<char>('a' + i % 26));
        file.append(text);
        file.append('|');
        expected += text + "|";
    }
    file.overwrite_start("start");
    EXPECT_TRUE(file.close());
    EXPECT_FALSE(file.is_open());
    EXPECT_TRUE(directory.read("result") == "start" + expected.substr(5));
}

TEST(ResultFile, TellsThatItIsNotWhole) {
    const TemporaryDirectory directory;
    run_in_child([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {1000, 1000};
        setrlimit(RLIMIT_FSIZE, &limit);
        ResultFile file;
        EXPECT_FALSE(file.create(directory.path("missing/result")));
        ASSERT_TRUE(file.create(directory.path("result")));
        file.append(std::string(1001, 'x'));
        file.overwrite_start("fits");
        EXPECT_TRUE(file.has_failed());
        EXPECT_FALSE(file.close());
    });
}
