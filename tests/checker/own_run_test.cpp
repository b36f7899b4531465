#include "tests/checker/checker_fixture.h"

// A program that is no run of the tool, but makes a run's results and leaves a record of them.

namespace {

class OwnRun : public Checker {
  protected:
    OwnRun() {
        run_in_full();
        let_files_settle();
    }

    // Lets the program make the results of the run once more, from the first log in this state
    // ("-": as it is). `late`: file that gets a line more once it has started, "-": none. Returns
    // what it says, its summary or why there is no record of it.
    std::string make_results(const std::string& log_state, const std::string& late,
                             const Lines& options = {"-s", "web"}) {
        Lines words = {"logs/access_0", log_state, late, ZVR_TOOL_PATH};
        words.insert(words.end(), options.begin(), options.end());
        const RunResult result = installation_.run_program(ZVR_PROGRAM_WITH_RESULTS, words);
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(result.errors, "");
        return result.output;
    }
};

} // namespace

TEST_F(OwnRun, WhatAnotherProgramMakesAndRecordsIsUsedAgain) {
    const auto results_before = installation_.files_of(config_directory);
    const std::string summary = last_run_.output;
    EXPECT_EQ(make_results("-", "-"), summary);
    EXPECT_EQ(installation_.files_of(config_directory), results_before);
    EXPECT_EQ(answer(), 0) << installation_.read(cache_answer);
    usleep(20'000);
    installation_.write_patterns("");
    EXPECT_EQ(answer(), 2) << installation_.read(cache_answer);
}

TEST_F(OwnRun, OptionsAreThoseOfTheRunThatItStandsFor) {
    make_results("-", "-", {"-s", "web", "-t", "3"});
    EXPECT_EQ(answer({"-s", "web", "-t", "3"}), 0) << installation_.read(cache_answer);
    make_results("-", "-", {"-s", "web", "-t", "3"});
    EXPECT_EQ(answer(), 1);
}

TEST_F(OwnRun, ALogThatWasReadInAnotherStateLeavesNoRecord) {
    make_results("size 1", "-");
    EXPECT_FALSE(installation_.exists(cache_manifest));
    EXPECT_TRUE(installation_.exists(cache + "web.conf"));
    EXPECT_EQ(answer(), 1);
}

TEST_F(OwnRun, AnInputThatIsChangedMeanwhileLeavesNoRecord) {
    const std::string settings = installation_.path(profile_directory + "/replay_settings.dat");
    EXPECT_EQ(make_results("-", settings),
              settings + " was changed after the run had started, or just before\n");
    EXPECT_FALSE(installation_.exists(cache_manifest)) << "which tells of the last run";
    EXPECT_FALSE(installation_.exists(cache + "web.conf"));
    EXPECT_EQ(answer(), 1);
}
