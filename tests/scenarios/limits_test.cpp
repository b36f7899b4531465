#include "tests/support/test_installation.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <tuple>

// The limits of docs/limits.md that no other test is about: what is at a limit works, and what is
// beyond it has its line.

namespace {

std::string repeated(size_t count, const std::string& text) {
    std::string all;
    for (size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

class Limits : public testing::Test {
  protected:
    Limits() { installation_.write_logs({combined_line()}); }

    RunResult run_in(const std::string& work_dir) const {
        return installation_.run({}, {{"ZV_WDIR", work_dir}});
    }

    // The installation by a path of this length.
    std::string work_dir(size_t length) const {
        return root_ + std::string(length - root_.size(), '/');
    }

    TestInstallation installation_;
    const std::string root_ = installation_.root();
    const std::string accepted_ = summary_line({.total = 1, .url_patterns = 1});
};

TEST_F(Limits, OfNames) {
    const std::tuple<std::string, size_t, std::string, std::string> rows[] = {
        // scenario up to the name, limit, scenario after it, meaning
        {"", 255, "/p/project/sub/web", "workspace"},
        {"w/", 255, "/project/sub/web", "profile"},
        {"w/p/", 511, "/sub/web", "project"},
        {"w/p/project/", 511, "/web", "sub-project"},
        {"w/p/project/sub/", 511, ".conf", "scenario"},
        {"", 511, "", "scenario"},
    };
    for (const auto& [start, limit, end, meaning] : rows) {
        const std::string name(limit, 'n');
        const RunResult run = installation_.run_words({"-s", start + name + end});
        EXPECT_TRUE(run.output.starts_with("ZVR_GUI_ERROR:Scenario file ")) << run.output;
        expect_failure(installation_.run_words({"-s", start + name + "n" + end}),
                       "Name of " + meaning + " is longer than " + std::to_string(limit) +
                           " characters");
    }
}

TEST_F(Limits, OfPaths) {
    const std::string too_long = "Path or command is longer than 2047 characters: '";
    const std::string profile_path = "/" + profile_directory;
    expect_failure(run_in(work_dir(1024)),
                   "Environment variable \"ZV_WDIR\" is longer than 1023 characters");
    for (const size_t length : {1023U, 992U}) {
        expect_failure(run_in(work_dir(length)),
                       "Path of workspace 'admin/default' is longer than 1023 characters");
    }
    for (const size_t length : {size_t{991}, 645 - profile_path.size()}) {
        EXPECT_TRUE(
            run_in(work_dir(length)).output.starts_with("ZVR_GUI_ERROR:" + too_long + "cp "));
    }
    EXPECT_EQ(run_in(work_dir(642 - profile_path.size())).output, accepted_);

    const std::string profiles = root_ + "/replay_profiles/";
    const std::string profile = "p/" + std::string(2045 - profiles.size(), 'n');
    expect_failure(installation_.run({"-r", profile}),
                   "Replay profile - '" + profile + "' not found at '" + profiles + profile + "'");
    expect_failure(installation_.run({"-r", profile + "n"}), too_long + profiles + profile + "n'");
    const std::string endless(110'000, 'n');
    expect_failure(installation_.run({"-r", profile + endless}),
                   (too_long + profiles + profile + endless).substr(0, 102'399));
}

TEST_F(Limits, OfComponentsInTheDirectoryOfResults) {
    const std::string below = config_directory + "/";
    const std::string all = root_ + "/" + below;
    const auto slashes = std::count(all.begin(), all.end(), '/');
    const std::string work_dir = root_ + repeated(31 - static_cast<size_t>(slashes), "/.");
    EXPECT_EQ(run_in(work_dir).output, accepted_);
    const std::string refused = work_dir + "/./" + below;
    EXPECT_EQ(run_in(work_dir + "/.").output,
              RunResult::error_line("Path has more than 30 components. Path: '" + refused + "'") +
                  RunResult::error_line("Unable to create directory - " + refused));
}

TEST_F(Limits, OfWordsInSettings) {
    const std::tuple<std::string, std::string, size_t> rows[] = {
        {"COOKIE_NAME", " ", 1023}, {"DEFAULT_HOST", " ", 255}, {"SECONDARY_COOKIE", " 1 ", 255}};
    for (const auto& [keyword, separator, limit] : rows) {
        const std::string line = keyword + separator + std::string(limit, 'v');
        installation_.add_settings(line + " more\n");
        EXPECT_EQ(installation_.run().output, accepted_);
        installation_.add_settings(line + "v\n");
        expect_failure(installation_.run(), "Value of " + keyword +
                                                " in replay setting file is longer than " +
                                                std::to_string(limit) + " characters");
    }
}

TEST_F(Limits, AUrlMayBeAsLongAsItsLine) {
    const std::string bars(50'000, '|');
    const std::string url = "/" + bars + "?" + std::string(50'000, 'q');
    installation_.add_settings("IGNORE_URL_QUERY_PARAM 1\n");
    installation_.write_logs({combined_line({.url = url})});
    EXPECT_EQ(installation_.run().output, accepted_);
    EXPECT_EQ(installation_.complete_url_rows(), Lines{"GET|NA|1|0|/" + bars + "?*"});
    EXPECT_EQ(installation_.result("query_url.list"), url + "\n");
    installation_.write_checker(2);
    EXPECT_EQ(installation_.run().output, accepted_);
    EXPECT_EQ(installation_.url_rows(),
              Lines{"NO|MAIN|GET|/" + repeated(bars.size(), "&#124;") + "?*|1|NA|NA|0|NA|NA"});
}

// What has no room on the disk is lost.
TEST_F(Limits, OfTheDebugLog) {
    installation_.write_logs({std::string(102'398, 'x') + "\n"});
    installation_.run({"-d", "9"});
    EXPECT_EQ(installation_.debug_lines_with("Field value").at(0),
              ("Field value = '" + std::string(102'398, 'x')).substr(0, 102'399));
    installation_.prepare_process([] { limit_file_size(5000); });
    EXPECT_EQ(installation_.run({"-d", "4"}).output, summary_line({.total = 1, .bad = 1}));
}

// The least that a run gets by with, in every thread.
TEST_F(Limits, OfTheStack) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers need more";
#endif
    installation_.write_logs({combined_line(), std::string(102'398, 'x') + "\n"});
    installation_.use_checker();
    installation_.prepare_process([] {
        const rlimit limit = {64 << 10, 64 << 10};
        setrlimit(RLIMIT_STACK, &limit);
    });
    EXPECT_EQ(installation_.run({"-d4", "-c", "-t2"}).output,
              summary_line({.total = 2, .bad = 1, .url_patterns = 1}));
    installation_.name_logs({"nosuch"});
    expect_failure(installation_.run({"-d4"}),
                   "Failed to calculate Number of records from file 'nosuch'");
}

} // namespace
