#include "tests/companions/doctor/doctor_runs.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

TEST(CommandLine, HelpAndVersionAreOnEachCommand) {
    const TestInstallation installation;
    for (const Lines& words : {Lines{}, Lines{"check"}}) {
        Lines help = words;
        help.push_back("--help");
        const RunResult helped = run_doctor_words(installation, help);
        EXPECT_EQ(helped.status, 0);
        EXPECT_NE(helped.output.find("--version"), std::string::npos) << helped.output;
        Lines version = words;
        version.push_back("--version");
        EXPECT_EQ(run_doctor_words(installation, version).output.rfind("zvr_al_doctor ", 0), 0U);
    }
}

TEST(CommandLine, WrongUsageEndsWithAStatusOfItsOwn) {
    const TestInstallation installation;
    for (const Lines& words :
         {Lines{}, Lines{"chekc"}, Lines{"check"}, Lines{"check", "-s"},
          Lines{"check", "-s", "web", "-t", "four"}, Lines{"check", "-s", "web", "-t", "-1"},
          Lines{"rejected", "-s", "web", "--limit", "-1"},
          Lines{"rejected", "-s", "web", "--width", "99999999999999999999"},
          Lines{"patterns", "-s", "web", "--limit", "-1"},
          Lines{"check", "-s", "web", "more\x1b[2J"}}) {
        const RunResult run = run_doctor_words(installation, words);
        EXPECT_EQ(run.status, 3);
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.errors.rfind("zvr_al_doctor: ", 0), 0U) << run.errors;
        EXPECT_EQ(run.errors.find('\x1b'), std::string::npos) << run.errors;
        EXPECT_LT(run.errors.size(), 200U) << run.errors;
    }
}

TEST(CommandLine, AWordThatIsNoCommandIsNamed) {
    const RunResult run = run_doctor_words(TestInstallation(), {"chekc", "-s", "web"});
    EXPECT_NE(run.errors.find("'chekc'"), std::string::npos) << run.errors;
}

TEST(CommandLine, OutputThatIsLostIsAFailure) {
    TestInstallation installation;
    installation.write_logs({combined_line()});
    EXPECT_EQ(installation.run().status, 0);
    installation.prepare_process([] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); });
    for (const Lines& words :
         {Lines{"--help"}, Lines{"check", "-s", "web"}, Lines{"check", "-s", "web", "--json"},
          Lines{"patterns", "-s", "web"}, Lines{"patterns", "-s", "web", "--url", "/"},
          Lines{"init", "-s", "new", "logs/access_0"}}) {
        const RunResult run = run_doctor_words(installation, words);
        EXPECT_EQ(run.status, 3) << words.front();
        EXPECT_EQ(run.errors, "zvr_al_doctor: The output cannot be written\n");
    }
}

TEST(CommandLine, AScenarioOfAnyBytesIsValidJson) {
    const RunResult run =
        run_doctor_words(TestInstallation(), {"check", "--json", "-s", "a\xff\x1b\"b"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(nlohmann::json::parse(run.output)["scenario"], "a\\xff\x1b\"b");
}
