#include "tests/companions/doctor/doctor_runs.h"

#include <gtest/gtest.h>

namespace {

using nlohmann::json;

json patterns(const TestInstallation& installation, Lines words = {}) {
    words.push_back("--json");
    const RunResult run = run_doctor(installation, "patterns", words);
    EXPECT_EQ(run.status, 0) << run.errors;
    return json::parse(run.output);
}

// Ten requests: /a four times, /b.gif twice, /b?x and /c once each, and two POST to /a.
void run_tool_on_some_requests(const TestInstallation& installation) {
    std::string log;
    for (const char* url : {"/a", "/a", "/a", "/a", "/b.gif", "/b.gif", "/b?x", "/c"}) {
        log += combined_line({.url = url});
    }
    log += combined_line({.url = "/a", .method = "POST"});
    log += combined_line({.url = "/a", .method = "POST"});
    installation.write_logs({log});
    ASSERT_EQ(installation.run().status, 0);
}

constexpr const char* some_patterns = "status|type\n"
                                      "active|main|POST|-|Send|na|-|na|/a\n"
                                      "active|main|na|-|Page|na|-|na|/a\n"
                                      "active|main|na|-|Later|na|-|na|/a\n"
                                      "active|inline|na|-|na|na|-|na|*.gif\n"
                                      "active|main_without_tx|na|-|na|other|-|na|/b*\n"
                                      "active|main|na|-|Never|na|-|na|/never\n";

json hits(int urls, int requests) {
    return {{"urls", urls}, {"requests", requests}};
}

} // namespace

TEST(PatternsCommand, CountsWhatEachPatternTakesAndLoses) {
    const TestInstallation installation;
    installation.write_patterns(some_patterns);
    installation.write_filters("\n\nactive|na|-|na|/c\n");
    run_tool_on_some_requests(installation);
    const json report = patterns(installation);
    EXPECT_EQ(report["all"], hits(5, 10));
    const json& all = report["patterns"];
    ASSERT_EQ(all.size(), 7U);
    const std::tuple<const char*, int, json, json> expected[] = {
        // kind, line, decided, lost
        {"filter", 3, hits(1, 1), hits(0, 0)},
        {"inline", 5, hits(1, 2), hits(0, 0)},
        {"main", 2, hits(1, 2), hits(0, 0)},
        {"main", 3, hits(1, 4), hits(1, 2)},
        {"main", 4, hits(0, 0), hits(2, 6)},
        {"main", 7, hits(0, 0), hits(0, 0)},
        {"main_without_tx", 6, hits(0, 0), hits(0, 0)},
    };
    for (size_t i = 0; i < all.size(); ++i) {
        const auto& [kind, line, decided, lost] = expected[i];
        EXPECT_EQ(all[i]["kind"], kind) << i;
        EXPECT_EQ(all[i]["line"], line) << i;
        EXPECT_EQ(all[i]["decided"], decided) << i;
        EXPECT_EQ(all[i]["lost"], lost) << i;
    }
    EXPECT_EQ(all[4]["lost_to"][0]["transaction"], "Page") << "most requests first";
    EXPECT_EQ(all[4]["lost_to"][1]["transaction"], "Send");
    EXPECT_EQ(all[1]["examples"][0]["url"], "/b.gif");
    ASSERT_EQ(report["untaken_groups"].size(), 1U);
    EXPECT_EQ(report["untaken_groups"][0]["requests"], 1);
    EXPECT_EQ(patterns(installation, {"--limit", "0"})["untaken_groups"].size(), 0U);
}

TEST(PatternsCommand, TellsHowThePatternsAreTriedOnAUrl) {
    const TestInstallation installation;
    installation.write_patterns(some_patterns);
    installation.add_settings("IGNORE_URL_QUERY_PARAM 1\n");
    const auto outcomes = [&](const Lines& words) {
        Lines found;
        const json tried = patterns(installation, words);
        for (const json& trial : tried["trials"]) {
            found.push_back(trial["outcome"].get<std::string>() + trial["part"].get<std::string>());
        }
        return found;
    };
    EXPECT_EQ(outcomes({"--url", "/a"}), (Lines{"covers_nothing", "other_method", "decides",
                                                "fits_too", "covers_nothing", "covers_nothing"}));
    EXPECT_EQ(outcomes({"--url", "/a/b.gif", "--method", "post"}),
              (Lines{"decides", "covers_part/a", "covers_part/a", "covers_part/a", "covers_nothing",
                     "covers_part/b.gif"}));
    EXPECT_EQ(outcomes({"--url", "/b?x", "--host", "other"}).back(), "decides");
    EXPECT_EQ(outcomes({"--url", "/b?x", "--host", "Other"}).back(), "other_host");
    EXPECT_EQ(patterns(installation, {"--url", "/b?x"})["url"], "/b?*");
}

TEST(PatternsCommand, TellsPeopleTheSameAndIsNotSteeredByALog) {
    const TestInstallation installation;
    installation.write_patterns(some_patterns);
    installation.write_logs({combined_line({.url = "/\x1b[2J\xe2\x80\xae"})});
    ASSERT_EQ(installation.run().status, 0);
    const RunResult run = run_doctor(installation, "patterns");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_NE(run.output.find("1 URL, 1 request; no pattern takes 1 URL, 1 request (100.0 %)"),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("replay_url_patterns.dat:7: main /never"), std::string::npos);
    EXPECT_EQ(run.output.find('\x1b'), std::string::npos);
    EXPECT_EQ(run.output.find("\xe2\x80\xae"), std::string::npos);
}

TEST(PatternsCommand, NeedsResultsAndSaysWhenTheyAreOlderThanTheirInputs) {
    const TestInstallation installation;
    installation.write_patterns(some_patterns);
    run_tool_on_some_requests(installation);
    EXPECT_EQ(run_doctor(installation, "patterns").errors, "");
    installation.add_settings("# another comment\n");
    EXPECT_NE(run_doctor(installation, "patterns").errors.find("changed after the last run"),
              std::string::npos);
    std::filesystem::remove_all(installation.path(config_directory));
    const RunResult without = run_doctor(installation, "patterns");
    EXPECT_EQ(without.status, 3);
    EXPECT_NE(without.errors.find("There are no results of this scenario"), std::string::npos);
    installation.add_settings("AL_FIELD HOST_HEADER 7\n");
    installation.write_logs({combined_line({.more = "\"a|b\""})});
    ASSERT_EQ(installation.run().status, 0);
    const RunResult odd_host = run_doctor(installation, "patterns", {});
    EXPECT_EQ(odd_host.status, 3);
    EXPECT_NE(odd_host.errors.find("method or host holds a '|'"), std::string::npos);
}
