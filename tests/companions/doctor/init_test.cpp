#include "tests/companions/doctor/doctor_runs.h"
#include "tests/companions/doctor/packed_files.h"

#include <cstdio>
#include <fmt/core.h>
#include <gtest/gtest.h>
#include <map>

namespace {

using Counts = std::map<std::string, long>; // by method and URL

std::string combined(const std::string& client, const std::string& time, const std::string& url,
                     const std::string& more = "") {
    return fmt::format("{} - - [10/Oct/2000:{} +0200] \"GET {} HTTP/1.1\" 200 17 "
                       "\"https://www.example.com/\" \"Mozilla/5.0 (X11)\"{}",
                       client, time, url, more);
}

struct InitRun {
    int status;
    std::string errors;
    nlohmann::json output;

    bool has_finding(const std::string& id) const {
        return std::any_of(output["findings"].begin(), output["findings"].end(),
                           [&](const nlohmann::json& finding) { return finding["id"] == id; });
    }
    const nlohmann::json& fields() const { return output["layout"]["fields"]; }
};

// Logs in a folder, for which a scenario is written into an installation that is not there yet.
class Init : public testing::Test {
  protected:
    std::string work_dir() const { return files_.path("new/installation"); }

    Lines words(const Lines& more) const {
        Lines words = {"init", "--scenario", "new", "--work-dir", work_dir()};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }

    InitRun init(const Lines& more) const {
        Lines all = words(more);
        all.push_back("--json");
        const RunResult run = run_doctor_words(files_, all);
        nlohmann::json output = nlohmann::json::parse(run.output, nullptr, false);
        EXPECT_EQ(output.is_discarded(), run.status == 3) << run.output << run.errors;
        return {run.status, run.errors, output};
    }

    // Runs the tool on the new scenario.
    Counts run_tool() const {
        const RunResult run = files_.run_words({"--scenario", "new"}, {{"ZV_WDIR", work_dir()}});
        EXPECT_EQ(run.status, 0) << run.output;
        return counts_in(files_.read(result_path()));
    }

    std::string result_path() const {
        return "new/installation/workspace/admin/default/quarvel/default/default/"
               "ReplayAccessLogs/new/config/url.list";
    }

    std::string profile_file(const std::string& name) const {
        return files_.read("new/installation/workspace/admin/default/quarvel/default/default/"
                           "replay_profiles/new/" +
                           name);
    }

    static Counts counts_in(const std::string& url_list) {
        Counts counts;
        const Lines lines = lines_of(url_list);
        for (size_t i = 2; i < lines.size(); ++i) { // behind summary and columns
            Lines columns;
            std::string column;
            std::istringstream text(lines[i]);
            while (std::getline(text, column, '|')) {
                columns.push_back(column);
            }
            counts[columns.at(2) + " " + columns.at(3)] += std::stol(columns.at(4));
        }
        return counts;
    }

    // The same by an awk program that prints method and URL of each request.
    Counts counts_by_awk(const std::string& log, const std::string& program) const {
        const std::string command = "awk '" + program + "' " + files_.path(log);
        FILE* pipe = popen(command.c_str(), "r");
        Counts counts;
        char line[1000];
        while (std::fgets(line, sizeof line, pipe) != nullptr) {
            ++counts[lines_of(line).at(0)];
        }
        EXPECT_EQ(pclose(pipe), 0);
        return counts;
    }

    // Lines that a form makes of client, time, URL and session.
    template <typename Form> static std::string log_of(int count, const Form& form) {
        std::string text;
        for (int i = 0; i < count; ++i) {
            const int client = i * 7 % 11;
            const std::string time = fmt::format("{:02}:{:02}:00", i / 60 % 24, i % 60);
            text += form(fmt::format("10.0.0.{}", client), time,
                         fmt::format("/page{}?x={}", i % 5, i % 3), fmt::format("S{}", client)) +
                    "\n";
        }
        return text;
    }

    static std::string combined_log(int count) {
        return log_of(count,
                      [](const std::string& client, const std::string& time, const std::string& url,
                         const std::string&) { return combined(client, time, url); });
    }

    TestInstallation files_;
};

constexpr const char* apache_awk = R"({ print substr($6, 2) " " $7 })";

} // namespace

TEST_F(Init, ACombinedLogGivesTheCountsOfItsRequests) {
    const std::string log = combined_log(300);
    files_.write("logs/access.log", log);
    const InitRun run = init({"logs/access.log"});
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_EQ(run.output["layout"]["name"], "combined (Apache), default of nginx");
    EXPECT_EQ(run.output["session"]["key"], "client_ip");
    EXPECT_EQ(run.output["logs"][0], files_.path("logs/access.log")); // absolute
    const nlohmann::json& findings = run.output["findings"];
    ASSERT_EQ(findings.size(), 2U) << findings; // and what the log holds
    EXPECT_EQ(findings[0]["id"], "headers-not-logged");
    EXPECT_EQ(findings[0]["value"], "REQUEST_COOKIE, HOST_HEADER, LOCATION");
    EXPECT_EQ(
        files_.read("new/installation/sys/replay_settings.default").find("GMT_OFFSET +0200") ==
            std::string::npos,
        false);
    EXPECT_EQ(run_tool(), counts_by_awk("logs/access.log", apache_awk));
}

TEST_F(Init, FieldsBehindThoseOfAKnownLayoutAreFoundByWhatTheyHold) {
    int line = 0;
    const std::string log = log_of(200, [&](const std::string& client, const std::string& time,
                                            const std::string& url, const std::string& session) {
        const bool is_first = line++ < 11;
        return combined(client, time, url,
                        fmt::format(R"( 1234 "{}" "{}" "www.example.com:8080" "HIT")",
                                    is_first ? "-" : "lang=de; JSESSIONID=" + session,
                                    is_first ? "JSESSIONID=" + session + "; Path=/" : "-"));
    });
    files_.write("logs/access.log", log);
    const InitRun run = init({"logs"});
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_EQ(run.fields()["REQUEST_COOKIE"], 11);
    EXPECT_EQ(run.fields()["SET_COOKIE"], 12);
    EXPECT_EQ(run.fields()["HOST_HEADER"], 13);
    EXPECT_FALSE(run.fields().contains("LOCATION"));
    EXPECT_TRUE(run.has_finding("unknown-number"));
    EXPECT_EQ(run.output["findings"][1]["id"], "field-found");
    EXPECT_EQ(run.output["findings"][1]["value"], "fields 11, 12, 13");
    EXPECT_EQ(run.output["session"]["cookie"], "JSESSIONID");
    EXPECT_EQ(run_tool(), counts_by_awk("logs/access.log", apache_awk));
}

TEST_F(Init, TheServersOwnFormatIsTaken) {
    const std::string log = log_of(100, [](const std::string& client, const std::string& time,
                                           const std::string& url, const std::string& session) {
        return fmt::format(R"(0.003 "sid={}" [10/Oct/2000:{} +0000] "GET {} HTTP/1.1" 200 {})",
                           session, time, url, client);
    });
    files_.write("logs/access.log", log);
    const InitRun unknown = init({"logs"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_TRUE(unknown.has_finding("no-clear-layout"));
    EXPECT_EQ(unknown.output["written"].size(), 0U);
    EXPECT_GE(unknown.output["scores"].size(), 3U);

    const InitRun run = init(
        {"logs", "--log-format",
         R"(log_format x '$request_time "$http_cookie" [$time_local] "$request" $status $remote_addr';)"});
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_NE(profile_file("replay_settings.dat").find("\nCONSIDER_RESPONSE_TIME 1\n"),
              std::string::npos);
    EXPECT_EQ(run_tool(), counts_by_awk("logs/access.log", R"({ print substr($5, 2) " " $6 })"));
}

TEST_F(Init, AFormatThatDoesNotFitIsRefused) {
    files_.write("logs/a.log", combined_log(50));
    const InitRun run = init({"logs", "--log-format", R"(%t %h "%r" %>s)"});
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(run.has_finding("format-does-not-fit"));
    EXPECT_FALSE(files_.exists("new"));
}

TEST_F(Init, IisLogsSayTheirFields) {
    const std::string head = "#Software: Microsoft Internet Information Services 10.0\r\n"
                             "#Version: 1.0\r\n"
                             "#Fields: date time s-ip cs-method cs-uri-stem cs-uri-query c-ip "
                             "cs(User-Agent) sc-status time-taken\r\n";
    files_.write("logs/u_ex001010.log",
                 head + log_of(120, [](const std::string& client, const std::string& time,
                                       const std::string& url, const std::string&) {
                     const size_t mark = url.find('?');
                     return fmt::format("2000-10-10 {} 192.0.2.1 GET {} {} {} Mozilla/5.0 200 15\r",
                                        time, url.substr(0, mark), url.substr(mark + 1), client);
                 }));
    const InitRun run = init({"logs/u_ex*.log"});
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_FALSE(run.has_finding("fields-change"));
    EXPECT_EQ(run_tool(),
              counts_by_awk("logs/u_ex001010.log", R"(!/^#/ { print $4 " " $5 "?" $6 })"));
}

TEST_F(Init, LogsThatAllAreLeftOutAreAnError) {
    std::string log = "#Fields: date time cs-method cs-uri-stem cs-uri-query c-ip sc-status\n";
    for (int i = 0; i < 50; ++i) {
        log += "nothing that the fields say\n";
    }
    files_.write("logs/a.log", log);
    const InitRun run = init({"logs"});
    EXPECT_EQ(run.status, 2) << run.output;
    EXPECT_TRUE(run.has_finding("no-logs"));
    EXPECT_EQ(run.output["written"].size(), 0U);
}

TEST_F(Init, FieldsThatChangeWithinALogAreToldAndSurvivedWhereTheyCanBe) {
    const auto lines = [&](int count, bool has_user) {
        return log_of(count, [&](const std::string& client, const std::string& time,
                                 const std::string&, const std::string&) {
            return fmt::format("2000-10-10 {} GET /a - 200 {} {}", time, client,
                               has_user ? "user 7" : "7");
        });
    };
    const std::string common =
        "#Fields: date time cs-method cs-uri-stem cs-uri-query sc-status c-ip";
    files_.write("logs/a.log", common + " sc-bytes\n" + lines(30, false) + common +
                                   " cs-username sc-bytes\n" + lines(20, true));
    const InitRun survived = init({"logs"});
    EXPECT_EQ(survived.status, 0) << survived.output;
    EXPECT_TRUE(survived.has_finding("fields-change"));
    EXPECT_EQ(run_tool(), (Counts{{"GET /a", 50}}));

    files_.write("logs/a.log", common + "\n" + lines(50, false) +
                                   "#Fields: c-ip date time cs-method cs-uri sc-status\n" +
                                   "10.0.0.1 2000-10-10 11:00:00 GET /b 200\n");
    const InitRun warned = init({"logs", "--force"});
    EXPECT_EQ(warned.status, 1) << warned.output;
    EXPECT_EQ(warned.output["findings"][0]["id"], "fields-change");
    EXPECT_EQ(warned.output["findings"][0]["line"], 52);
    EXPECT_EQ(run_tool(), (Counts{{"GET /a", 50}}));
}

TEST_F(Init, PackedLogsNeedAFolderAndThenAreRead) {
    const std::string log =
        log_of(60, [](const std::string& client, const std::string& time, const std::string& url,
                      const std::string&) { return combined(client, time, url); });
    const std::string older = log_of(30, [](const std::string& client, const std::string& time,
                                            const std::string& url, const std::string&) {
        return combined(client, time, url).replace(client.size() + 6, 2, "09");
    });
    files_.write("logs/access.log", log);
    files_.write("logs/access.log.1.gz", compressed(older.substr(0, older.size() - 1), "gzip"));
    files_.write("all.log", log + older);

    const InitRun refused = init({"logs"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_TRUE(refused.has_finding("packed-log"));

    const InitRun run = init({"logs", "--unpack-to", "unpacked", "--force"});
    EXPECT_EQ(run.status, 1) << run.output;
    EXPECT_TRUE(run.has_finding("order-of-logs"));
    EXPECT_EQ(run.output["logs"][1], files_.path("unpacked/access.log.1"));
    EXPECT_EQ(run_tool(), counts_by_awk("all.log", apache_awk));
}

TEST_F(Init, OtherFilesInTheFolderAreLeftOut) {
    files_.write("logs/access.log", combined_log(40));
    files_.write("logs/error.log", "[Tue Oct 10 13:55:36 2000] [error] no such file\n");
    files_.write("logs/empty.log", "");
    files_.write("logs/.hidden", "x\n");
    files_.write("logs/wide.log", std::string("\xff\xfe"
                                              "1\0",
                                              4));
    const InitRun run = init({"logs", "logs/access.log"});
    EXPECT_EQ(run.output["logs"].size(), 1U);
    EXPECT_TRUE(run.has_finding("no-access-log"));
    EXPECT_TRUE(run.has_finding("empty-log"));
    EXPECT_TRUE(run.has_finding("utf16-log"));
}

TEST_F(Init, RequestsFromIpv6AddressesCountWithoutSessions) {
    files_.write("logs/access.log",
                 log_of(40, [](const std::string&, const std::string& time, const std::string& url,
                               const std::string&) { return combined("2001:db8::1", time, url); }));
    const InitRun run = init({"logs"});
    EXPECT_EQ(run.output["session"]["key"], "none");
    EXPECT_EQ(run_tool(), counts_by_awk("logs/access.log", apache_awk));
}

TEST_F(Init, NothingIsReplacedUnlessThatIsAskedFor) {
    files_.write("logs/access.log", combined_log(40));
    EXPECT_EQ(init({"logs"}).status, 0);
    const std::string settings = profile_file("replay_settings.dat");
    const InitRun again = init({"logs"});
    EXPECT_EQ(again.status, 3);
    EXPECT_NE(again.errors.find("replay_settings.dat"), std::string::npos);
    EXPECT_EQ(profile_file("replay_settings.dat"), settings);
    EXPECT_EQ(init({"logs", "--force"}).status, 0);
}

TEST_F(Init, CommentsInItsFilesAreNoPatterns) {
    files_.write("logs/access.log", combined_log(40));
    init({"logs"});
    run_tool();
    for (const std::string& row : lines_of(files_.read(result_path()))) {
        EXPECT_EQ(row.rfind("YES|", 0), std::string::npos) << row;
    }
    EXPECT_NE(profile_file("replay_url_patterns.dat").find("#active|main|GET|"), std::string::npos);
}

TEST_F(Init, ALogCannotSteerTheTerminal) {
    const std::string evil = "\x1b[2J\x1b]0;x\x07\x9b\r";
    std::string log = log_of(40, [&](const std::string& client, const std::string& time,
                                     const std::string& url, const std::string& session) {
        return combined(client, time, url + evil,
                        fmt::format(R"( "sid={}; {}=1" "-")", session, evil));
    });
    log += "garbage " + evil + "\n";
    files_.write("logs/access.log", log);
    files_.write("logs/odd\x1b[2J.log", evil + "\n");
    for (const Lines& more :
         {Lines{"logs"}, Lines{"logs", "--force", "--json"},
          Lines{"logs", "--force", "--log-format", "%h " + evil}, Lines{"logs/none" + evil}}) {
        const RunResult run = run_doctor_words(files_, words(more));
        for (const char c : run.output + run.errors) {
            EXPECT_TRUE(c == '\n' || (c >= ' ' && c <= '~')) << static_cast<int>(c);
        }
    }
}

TEST_F(Init, WrongUseEndsWithAStatusOfItsOwn) {
    EXPECT_EQ(init({}).status, 3);
    EXPECT_EQ(init({"no/such.log"}).status, 3);
    EXPECT_EQ(init({"logs", "--unpack-limit", "much"}).status, 3);
    EXPECT_FALSE(files_.exists("new"));
}

TEST_F(Init, WhatNoLayoutReadsIsExplained) {
    const std::pair<const char*, const char*> rows[] = {
        {R"({"time":"2026-03-10T05:09:58Z","request":"GET / HTTP/1.1"})", "JSON"},
        {R"(10.0.0.1 - - [2026-03-10T05:09:58+00:00] "GET / HTTP/1.1" 200 5)", "times"},
        {"nothing of this kind", "No known layout"},
    };
    for (const auto& [line, meaning] : rows) {
        files_.write("logs/a.log", std::string(line) + "\n");
        const InitRun run = init({"logs"});
        EXPECT_EQ(run.status, 2);
        const std::string said = run.output["findings"][0]["meaning"];
        EXPECT_NE(said.find(meaning), std::string::npos) << said;
    }
}

TEST_F(Init, APathThatAScenarioCannotNameIsCopied) {
    files_.write("my logs/access 1.log", combined_log(40));
    const InitRun refused = init({"my logs"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_TRUE(refused.has_finding("path-with-blank"));

    const InitRun run = init({"my logs", "--unpack-to", "copies/", "--unpack-limit", "1M"});
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_EQ(run.output["logs"], nlohmann::json::array({files_.path("copies/access-1.log")}));
    EXPECT_EQ(run_tool(), counts_by_awk("copies/access-1.log", apache_awk));

    EXPECT_EQ(init({"my logs", "--force", "--unpack-to", "copies", "--unpack-limit", "1K"}).status,
              3);
}

TEST_F(Init, AProfileOfAnotherNameIsWrittenWhereARunLooksForIt) {
    files_.write("logs/access.log", combined_log(40));
    EXPECT_EQ(init({"logs", "--replay_profile", "shared"}).status, 0);
    EXPECT_TRUE(files_.exists(
        "new/installation/replay_profiles/default/default/shared/replay_settings.dat"));
    const RunResult run =
        files_.run_words({"-s", "new", "-r", "shared"}, {{"ZV_WDIR", work_dir()}});
    EXPECT_EQ(run.counter("Total"), 40);
}
