#include "base/file_descriptor.h"
#include "cache/work_mark.h"
#include "tests/companions/report/plain_load.h"
#include "tests/companions/report/report_runs.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using nlohmann::json;
namespace fs = std::filesystem;

std::string result_of_load(const TestInstallation& installation, const Lines& words = {}) {
    const RunResult run = run_report(installation, "load", words);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors, "");
    return run.output;
}

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// Every file and directory below the installation, with what it holds; not what a run printed.
std::map<std::string, std::string> all_files(const TestInstallation& installation) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(installation.root())) {
        const std::string path = entry.path();
        if (entry.path().parent_path() != installation.root()) {
            files[path] = entry.is_regular_file() ? installation.read(path) : "";
        }
    }
    return files;
}

std::string some_requests() {
    std::string log;
    for (const char* time : {"13:00:00", "13:00:30", "13:01:00", "13:01:00"}) {
        log += combined_line({.url = "/a", .client = "10.0.0.1", .time = time});
    }
    log += combined_line({.url = "/b", .client = "10.0.0.2", .time = "13:01:00"});
    log += combined_line({.url = "/b", .client = "10.0.0.3", .time = "13:01:01"});
    log += combined_line({.url = "/b", .client = "10.0.0.2", .time = "13:01:01", .status = 500});
    return log;
}

// What a load that succeeds says on standard error when that is a terminal.
std::string errors_on_terminal(TestInstallation& installation) {
    const FileDescriptor terminal(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    EXPECT_EQ(grantpt(terminal.get()) | unlockpt(terminal.get()), 0);
    const FileDescriptor screen(open(ptsname(terminal.get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
    installation.prepare_process([&screen] { dup2(screen.get(), STDERR_FILENO); });
    result_of_load(installation);
    char shown[4096];
    const ssize_t size = read(terminal.get(), shown, sizeof shown);
    return {shown, static_cast<size_t>(std::max<ssize_t>(size, 0))};
}

std::string queries_of(const json& figures) {
    return figures["queries"]["state"];
}

} // namespace

TEST(LoadCommand, TellsWhatIsInAFewRequests) {
    const TestInstallation installation;
    installation.write_patterns("status|type\nactive|main|na|-|Buy|na|-|na|/a\n");
    installation.write_logs({some_requests()});
    const json figures = figures_of(installation);
    const json& sessions = figures["sessions"];
    EXPECT_EQ(number(sessions["count"]), 3);
    // Client 1 until 13:01:00, client 2 from then on, client 3 a second later.
    EXPECT_EQ(sessions["peak_at_work"]["text"], "2000-10-10 13:01:00");
    EXPECT_EQ(number(sessions["peak_at_work"]["count"]), 2);
    EXPECT_EQ(figures["over_time"]["requests"].size(), 62U);
    EXPECT_EQ(number(figures["over_time"]["peak"]), 60);
    EXPECT_EQ(figures["to_set"]["requests_per_minute"]["most"]["text"], "2000-10-10 13:01:00");
    EXPECT_EQ(number(figures["to_set"]["requests_per_minute"]["most"]["count"]), 5);
    EXPECT_EQ(figures["mix"]["transactions"][0]["share"], 1.0);
    EXPECT_EQ(figures["response_time_microseconds"], json());

    const std::string text = result_of_load(installation);
    for (const char* part :
         {"It adds up.", "Peak: 3 requests in the second from 2000-10-10 13:01:00", "Buy",
          "3 sessions, 1 of them with one request; most at one time: 2 at 2000-10-10 13:01:00",
          "Concurrent sessions: 2", "No run has made results"}) {
        EXPECT_TRUE(has(text, part)) << part << "\n" << text;
    }
}

TEST(LoadCommand, IsAtEaseWithoutAnyRequest) {
    const TestInstallation installation;
    for (const Lines& logs : {Lines{"x\n"}, Lines{"# x\n\n", "\n"}}) {
        installation.write_logs(logs);
        const json figures = figures_of(installation);
        EXPECT_TRUE(figures["funnel"]["adds_up"].get<bool>());
        EXPECT_EQ(number(figures["over_time"]["steps"]), 0);
        EXPECT_EQ(figures["sessions"]["peak_at_work"], json());
        EXPECT_EQ(figures["first_request"], json());
        EXPECT_TRUE(has(result_of_load(installation), "No line has a time."));
    }
    installation.write_scenario("");
    EXPECT_EQ(number(figures_of(installation)["funnel"]["lines"]), 0);
}

TEST(LoadCommand, ShowsOddTimesAndPeriodsWithoutLines) {
    const TestInstallation installation;
    installation.write_logs({some_requests() + "10.0.0.1 - - [10/Oct/1975:13:00:00 +0000] \"GET /a "
                                               "HTTP/1.1\" 200\n"});
    installation.write_scenario(installation.read(scenario_directory + "/web.conf") +
                                "REPLAY_PERIOD START 10/10/2000 13:01:01\n");
    const json figures = figures_of(installation);
    EXPECT_EQ(number(figures["funnel"]["before_period"]), 6);
    EXPECT_EQ(figures["over_time"]["lines_far_before"]["last"]["text"], "1975-10-10 13:00:00");
    EXPECT_EQ(figures["over_time"]["start_text"], "2000-10-10 13:00:00");
    EXPECT_EQ(figures["period"]["start"]["text"], "2000-10-10 13:01:01");
    EXPECT_EQ(figures["period"]["end"], json());
    EXPECT_TRUE(has(result_of_load(installation), "Far before this: 1 line"));
}

TEST(LoadCommand, LetsNoTextSteerTerminalOrPage) {
    const TestInstallation installation;
    const std::string url = "/<script>alert('x')</script>]]><!--\\\x1b[2J\xff\xe2\x80\xae|&";
    installation.write_patterns("status|type\nactive|main|na|-|</script>\x1b[31m\xc3|na|-|na|/*\n");
    installation.write_logs(
        {combined_line({.url = url}) + combined_line({.url = "/a", .method = "G\x1b[7mT<"})});
    const RunResult run = run_report(installation, "load", {"--json"});
    EXPECT_FALSE(has(run.output, "<"));
    EXPECT_TRUE(std::all_of(run.output.begin(), run.output.end(),
                            [](char c) { return (c >= ' ' && c <= '~') || c == '\n'; }));
    const json figures = json::parse(run.output);
    const json& rows = figures["urls"]["rows"];
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0][2], "/<script>alert('x')</script>]]><!--\\\x1b[2J\\xff\xe2\x80\xae|&");
    EXPECT_EQ(rows[0][5], "</script>\x1b[31m\\xc3");
    EXPECT_EQ(rows[1][0], "G\x1b[7mT<");

    const std::string text = result_of_load(installation);
    EXPECT_TRUE(has(text, "</script>\\x1b[31m\\xc3"));
    EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= ' ' && c <= '~') || c == '\n';
    })) << text;
}

TEST(LoadCommand, CountsTheMostFrequentQueriesOfCutUrls) {
    const TestInstallation installation;
    std::string log;
    for (int query = 0; query < 30; ++query) {
        for (int i = query == 7 ? -2 : 0; i < 1 + query % 2; ++i) {
            log += combined_line({.url = "/a?q=" + std::to_string(query)});
        }
    }
    log += combined_line({.url = "/a"}) + combined_line({.url = "/b;x?y"});
    installation.write_logs({log});
    EXPECT_EQ(queries_of(figures_of(installation)), "not_cut");
    installation.add_settings("IGNORE_URL_QUERY_PARAM 1\n");
    EXPECT_EQ(queries_of(figures_of(installation, {"-q", "0"})), "not_wanted");
    const json figures = figures_of(installation);
    EXPECT_EQ(queries_of(figures), "listed");
    const json& of_urls = figures["queries"]["of_urls"];
    ASSERT_EQ(of_urls.size(), 2U);
    EXPECT_EQ(figures["urls"]["rows"][of_urls[0]["url"].get<size_t>()][2], "/a?*");
    EXPECT_EQ(number(of_urls[0]["different"]), 30);
    const json& most = of_urls[0]["most_frequent"];
    ASSERT_EQ(most.size(), 20U);
    EXPECT_EQ(most[0], json({"q=7", 4}));
    EXPECT_EQ(most[1], json({"q=1", 2}));
    EXPECT_EQ(most[2], json({"q=11", 2}));
    EXPECT_EQ(most[19], json({"q=16", 1}));
    EXPECT_EQ(of_urls[1]["most_frequent"], json::parse(R"([["x?y", 1]])"));
}

TEST(LoadCommand, KnowsResponseTimesWhereTheLogsHaveThem) {
    const TestInstallation installation;
    struct Unit {
        const char* field;
        std::vector<std::string> texts;
        std::vector<long> usec;
    };
    const Unit units[] = {
        {"RESPONSE_TIME_USEC", {"90", "200", "-7", "-", "100"}, {90, 200, 0, 100}},
        {"RESPONSE_TIME",
         {"0.000250", "0.1234567", "12", "-", "1.5"},
         {250, 123'456, 12'000'000, 1'500'000}}};
    for (const auto& [field, texts, usec] : units) {
        std::string log;
        for (const std::string& text : texts) {
            log += combined_line({.more = text});
        }
        installation.write_logs({log});
        installation.add_settings("AL_FIELD " + std::string(field) + " 7\n");
        const json times = figures_of(installation)["response_time_microseconds"];
        EXPECT_EQ(number(times["count"]), 4); // a dash is no time
        std::vector<long> sorted = usec;
        std::sort(sorted.begin(), sorted.end());
        EXPECT_NEAR(static_cast<double>(number(times["median"])), static_cast<double>(sorted[1]),
                    static_cast<double>(sorted[1]) / 100);
        EXPECT_NEAR(static_cast<double>(number(times["largest"])), static_cast<double>(sorted[3]),
                    static_cast<double>(sorted[3]) / 100);
        EXPECT_EQ(installation.run().output,
                  figures_of(installation)["funnel"]["summary"].get<std::string>() + "\n");
    }
}

TEST(LoadCommand, MovesTimesBackByTheResponseTimeAsARunDoes) {
    const TestInstallation installation;
    installation.write_logs({combined_line({.time = "13:00:10", .more = "10"})});
    installation.add_settings("AL_FIELD RESPONSE_TIME 7\n");
    EXPECT_EQ(figures_of(installation)["first_request"]["text"], "2000-10-10 13:00:10");
    installation.add_settings("AL_FIELD RESPONSE_TIME 7\nCONSIDER_RESPONSE_TIME 1\n");
    EXPECT_EQ(figures_of(installation)["first_request"]["text"], "2000-10-10 13:00:00");
}

TEST(LoadCommand, SaysHowTheResultsStandToTheirInputs) {
    const TestInstallation installation;
    installation.write_logs({some_requests()});
    const auto state = [&] { return figures_of(installation)["freshness"]; };
    EXPECT_EQ(state()["results"], "none");
    ASSERT_EQ(installation.run().status, 0);
    EXPECT_EQ(state()["results"], "current");
    {
        const OwnDirectory config_dir(installation.path(config_directory));
        const FileDescriptor mark = mark_work(config_dir);
        EXPECT_EQ(state()["results"], "being_written");
        EXPECT_TRUE(has(result_of_load(installation), "A run is just making the results"));
    }
    const std::string inputs[] = {"logs/access_0",
                                  profile_directory + "/replay_settings.dat",
                                  profile_directory + "/replay_url_patterns.dat",
                                  profile_directory + "/replay_url_filter_patterns.dat",
                                  scenario_directory + "/web.conf",
                                  "sys/replay_settings.default"};
    for (const std::string& input : inputs) {
        ASSERT_EQ(installation.run().status, 0);
        let_files_settle();
        installation.write(input, installation.read(input));
        const json older = state();
        EXPECT_EQ(older["results"], "older");
        ASSERT_EQ(older["newer_inputs"].size(), 1U) << older;
        EXPECT_TRUE(has(older["newer_inputs"][0], fs::path(input).filename())) << older;
    }
    EXPECT_TRUE(has(result_of_load(installation), "are older than"));
}

TEST(LoadCommand, KnowsResultsOfAnotherProfile) {
    const TestInstallation installation;
    installation.write_logs({some_requests()});
    for (const char* name :
         {"replay_settings.dat", "replay_url_patterns.dat", "replay_url_filter_patterns.dat"}) {
        installation.write(std::string("replay_profiles/default/default/other/") + name,
                           installation.read(profile_directory + "/" + name));
    }
    const auto state = [&](const Lines& words = {}) {
        return figures_of(installation, words)["freshness"];
    };
    const Lines other = {"-r", "other"};
    ASSERT_EQ(installation.run().status, 0);
    EXPECT_EQ(state(other)["results"], "current"); // they would be the same
    installation.write("replay_profiles/default/default/other/replay_url_patterns.dat",
                       "status|type\nactive|main|na|-|Buy|na|-|na|/a\n");
    let_files_settle();
    ASSERT_EQ(installation.run().status, 0);
    EXPECT_EQ(state()["results"], "current");
    const json freshness = state(other);
    EXPECT_EQ(freshness["results"], "of_other_inputs");
    ASSERT_EQ(freshness["other_inputs"].size(), 1U);
    EXPECT_TRUE(has(freshness["other_inputs"][0], "default/other/replay_url_patterns.dat"));
    EXPECT_TRUE(has(result_of_load(installation, other), "of another replay profile"));
    ASSERT_EQ(installation.run(other).status, 0);
    EXPECT_EQ(state(other)["results"], "current");
    EXPECT_EQ(state()["results"], "of_other_inputs");
}

TEST(LoadCommand, KnowsAnOldLogThatWasPutInPlace) {
    const TestInstallation installation;
    installation.write_logs({some_requests()});
    installation.write("logs/older", combined_line());
    let_files_settle();
    ASSERT_EQ(installation.run().status, 0);
    let_files_settle();
    fs::rename(installation.root() / "logs/older", installation.root() / "logs/access_0");
    EXPECT_EQ(figures_of(installation)["freshness"]["results"], "older");
}

TEST(LoadCommand, MissesAQueryListThatShouldBeThere) {
    const TestInstallation installation;
    installation.write_logs({some_requests()});
    installation.add_settings("IGNORE_URL_QUERY_PARAM 1\n");
    ASSERT_EQ(installation.run().status, 0);
    const auto lacks_it = [&] {
        return figures_of(installation)["freshness"]["lacks_query_list"].get<bool>();
    };
    EXPECT_FALSE(lacks_it());
    fs::remove(installation.path(config_directory + "/query_url.list"));
    EXPECT_TRUE(lacks_it());
    EXPECT_TRUE(has(result_of_load(installation), "no query_url.list"));
}

TEST(LoadCommand, CountsTheRequestThatCannotWaitForItsSession) {
    constexpr long most_waiting = 250'000;
    const TestInstallation installation;
    std::string log;
    for (long i = 0; i < most_waiting + 5; ++i) {
        log += combined_line({.more = "akaau=1 -"});
    }
    installation.write_logs({log});
    installation.write_settings(
        "COOKIE_NAME ID\nAL_FIELD DATE_AND_TIME 4\nAL_FIELD REQUEST_LINE 5\n"
        "AL_FIELD STATUS_CODE 6\nAL_FIELD REQUEST_COOKIE 7\n");
    const json funnel = figures_of(installation)["funnel"];
    EXPECT_TRUE(funnel["adds_up"].get<bool>());
    EXPECT_EQ(number(funnel["beyond_waiting_limit"]), 1);
    EXPECT_EQ(number(funnel["without_session"]), most_waiting);
    EXPECT_EQ(installation.run().output, funnel["summary"].get<std::string>() + "\n");
}

TEST(LoadCommand, WritesNothing) {
    const TestInstallation installation;
    installation.write_logs({some_requests()});
    installation.add_settings("IGNORE_URL_QUERY_PARAM 1\n");
    const auto before = all_files(installation);
    figures_of(installation);
    EXPECT_EQ(all_files(installation), before);
}

TEST(LoadCommand, ShowsItsProgressOnATerminalOnceItTakesLong) {
    TestInstallation quick;
    quick.write_logs({some_requests()});
    EXPECT_EQ(errors_on_terminal(quick), "");

    TestInstallation slow;
    slow.write_logs({some_requests()});
    ASSERT_EQ(mkfifo(slow.path("logs/access_1").c_str(), 0666), 0);
    slow.name_logs({"logs/access_0", "logs/access_1"}, "1000");
    std::thread writer([&slow] {
        std::ofstream log(slow.path("logs/access_1"));
        std::this_thread::sleep_for(std::chrono::milliseconds(1'100));
        log << combined_line();
    });
    const std::string errors = errors_on_terminal(slow);
    writer.join();
    EXPECT_TRUE(errors.starts_with("\rReading logs [####")) << errors;
    EXPECT_TRUE(errors.ends_with("\r\x1b[K")) << errors; // and it is gone
}

TEST(LoadCommand, RefusesWhatItCannotRead) {
    const TestInstallation installation;
    installation.write_logs({some_requests()});
    for (const Lines& words : {Lines{"load"}, Lines{"load", "-s", "none"}, Lines{"unload"},
                               Lines{"load", "-s", "web", "-t", "-1"}}) {
        const RunResult run = installation.run_program(ZVR_REPORT_PATH, words);
        EXPECT_EQ(run.status, 3);
        EXPECT_EQ(run.output, "");
        EXPECT_TRUE(has(run.errors, "zvr_al_report: "));
    }
    installation.name_logs({"logs/access_0", "logs/missing"});
    const RunResult run = run_report(installation, "load");
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.errors,
              "zvr_al_report: Failed to calculate Number of records from file 'logs/missing'\n");
}
