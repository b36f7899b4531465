#include "tests/support/test_installation.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

// Whoever may make names beside the inputs could keep a run waiting for ever.
TEST(PipesAsInputs, EndARunAtOnce) {
    const std::string profile = project_directory + "/replay_profiles/web/";
    const struct {
        std::string input;
        std::string told;
    } rows[] = {
        {profile + "replay_settings.dat", "Failed to open 'replay_settings.dat' file"},
        {profile + "replay_url_patterns.dat", "Failed to run command 'cp "},
        {profile + "replay_url_filter_patterns.dat", "Failed to run command 'cp "},
        {project_directory + "/scenarios/web.conf", "Failed to run command 'cp "},
        {"sys/replay_settings.default", "setting local timeoffset"},
    };
    for (const auto& [input, told] : rows) {
        TestInstallation installation;
        installation.write_logs({combined_line()});
        std::filesystem::remove(installation.path(input));
        std::filesystem::create_directories(
            std::filesystem::path(installation.path(input)).parent_path());
        ASSERT_EQ(mkfifo(installation.path(input).c_str(), 0600), 0) << input;
        const RunResult run = installation.run_words({"-s", "web"});
        EXPECT_NE((run.output + run.errors).find(told), std::string::npos) << input << run.output;
    }
}
