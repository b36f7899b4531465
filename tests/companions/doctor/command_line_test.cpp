#include "tests/companions/doctor/doctor_runs.h"

#include <gtest/gtest.h>

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
          Lines{"check", "-s", "web", "more\x1b[2J"}}) {
        const RunResult run = run_doctor_words(installation, words);
        EXPECT_EQ(run.status, 3);
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.errors.rfind("zvr_al_doctor: ", 0), 0U) << run.errors;
        EXPECT_EQ(run.errors.find('\x1b'), std::string::npos) << run.errors;
    }
}

TEST(CommandLine, AWordThatIsNoCommandIsNamed) {
    const RunResult run = run_doctor_words(TestInstallation(), {"chekc", "-s", "web"});
    EXPECT_NE(run.errors.find("'chekc'"), std::string::npos) << run.errors;
}
