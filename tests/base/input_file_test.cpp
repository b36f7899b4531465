#include "base/input_file.h"

#include "tests/unit_helpers.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

TEST(InputFile, IsRegularOrEmptyAndNeverKeepsWaiting) {
    const TemporaryDirectory directory;
    directory.write("regular", "x\n");
    ASSERT_EQ(mkfifo(directory.path("pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("/dev/null", directory.path("empty"));
    std::filesystem::create_symlink("/dev/zero", directory.path("endless"));
    for (const char* name : {"regular", "empty"}) {
        EXPECT_TRUE(open_input_file(directory.path(name).c_str()).is_open()) << name;
    }
    for (const char* name : {"pipe", "endless", "missing"}) {
        EXPECT_FALSE(open_input_file(directory.path(name).c_str()).is_open()) << name;
    }
}

TEST(InputFile, TellsWhetherOneWasExchanged) {
    const TemporaryDirectory directory;
    const std::string path = directory.path("input");
    directory.write("other", "x\n");
    std::filesystem::create_symlink("/dev/null", path);
    for (const std::string& name : {path, path, directory.path("other"), directory.path("missing"),
                                    directory.path("other"), directory.path("missing")}) {
        open_input_file(name.c_str());
        EXPECT_TRUE(inputs_held_still()) << name;
    }
    std::filesystem::remove(path);
    std::filesystem::create_symlink("other", path);
    open_input_file(path.c_str());
    EXPECT_FALSE(inputs_held_still());
}
