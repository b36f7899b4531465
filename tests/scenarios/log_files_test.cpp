#include "tests/support/test_installation.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;

// Logs that are no regular files, or that cannot be counted.

namespace {

constexpr unsigned int ever = 60; // seconds after which a run that waits or counts is ended

void make_pipe(const std::string& path) {
    fs::create_directories(fs::path(path).parent_path());
    ASSERT_EQ(mkfifo(path.c_str(), 0666), 0);
}

class LogFiles : public testing::Test {
  protected:
    LogFiles() {
        installation_.prepare_process([] { alarm(ever); });
    }

    void make_log(const std::string& name, const std::string& kind) const {
        const std::string path = installation_.path(name);
        if (kind == "pipe") {
            make_pipe(path);
        } else if (kind == "directory") {
            fs::create_directories(path);
        } else if (kind != "missing") {
            installation_.write(name, kind == "empty"         ? ""
                                      : kind == "no line end" ? "x"
                                                              : combined_line());
        }
        if (kind == "endless") {
            fs::resize_file(path, uintmax_t{1} << 40);
        }
    }

    TestInstallation installation_;
};

TEST_F(LogFiles, TheFirstThatCannotBeCountedIsNamedBeforeAllAreCounted) {
    const std::pair<Lines, size_t> rows[] = {
        // kinds, the one named
        {{"pipe"}, 0},
        {{"lines", "directory", "pipe"}, 1},
        {{"missing", "endless"}, 0},
        {{"empty", "pipe", "endless"}, 0},
        {{"lines", "no line end", "missing", "endless"}, 1},
    };
    for (const auto& [kinds, named] : rows) {
        fs::remove_all(installation_.path("logs"));
        Lines paths;
        for (const std::string& kind : kinds) {
            paths.push_back("logs/" + std::to_string(paths.size()));
            make_log(paths.back(), kind);
        }
        installation_.name_logs(paths);
        for (const Lines& words : {Lines{}, Lines{"-t4"}, Lines{"-d2"}}) {
            expect_failure(installation_.run(words),
                           "Failed to calculate Number of records from file '" + paths[named] +
                               "'");
        }
    }
}

} // namespace
