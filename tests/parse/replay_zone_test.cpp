#include "tests/support/observed_lines.h"
#include "tools/parse/replay_zone.h"

#include <gtest/gtest.h>

TEST(ReplayZone, IsReadFromTheFirstLineOfItsKeyword) {
    const std::string piece(4095, '#'); // of a line, as they are read
    const struct {
        std::string oddity;
        std::string defaults;
        int64_t offset; // seconds west of UTC
    } rows[] = {
        {"east", "GMT_OFFSET +0530\nGMT_OFFSET +0100\n", -19800},
        {"west, small letters and a tab", "gmt_offset\t-0800\n", 28800},
        {"parts set apart", "GMT_OFFSET - 08 15\n", 29700},
        {"no value", "GMT_OFFSET\n", 0},
        {"keyword not at the line's start", " GMT_OFFSET +0530\n", -1},
        {"keyword that begins a piece", piece + "GMT_OFFSET +0530\n", -19800},
        {"keyword inside a piece", piece.substr(1) + "GMT_OFFSET +0530\n", -1},
    };
    const TemporaryDirectory installation;
    for (const auto& [oddity, defaults, offset] : rows) {
        installation.write("sys/replay_settings.default", defaults);
        EXPECT_EQ(get_timezone_from_default_setting(installation.path()), offset) << oddity;
    }
}

TEST(ReplayZone, TellsAnObserverOfItsLine) {
    const TemporaryDirectory installation;
    const std::string path =
        installation.write("sys/replay_settings.default", "#\n\nGMT_OFFSET IST\n");
    EXPECT_EQ(told_of(path,
                      [&](const std::string&) {
                          get_timezone_from_default_setting(installation.path());
                      }),
              (std::vector<Observed>{{3, ObservedKind::taken, "GMT_OFFSET", " IST"}}));
}
