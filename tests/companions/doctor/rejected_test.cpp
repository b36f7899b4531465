#include "tests/companions/doctor/rejected_runs.h"

#include <algorithm>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace std::string_literals;

namespace {

const std::string cookie_settings = "USER_SESSION_KEY cookie\nCOOKIE_NAME ID\n"
                                    "AL_FIELD REQUEST_COOKIE 7\nAL_FIELD SET_COOKIE 8\n"
                                    "AL_FIELD LOCATION 9\n";
const std::string log_0 = "logs/access_0";

std::string cookie_line(const std::string& url, const std::string& cookie,
                        const std::string& set_cookie = "-") {
    return combined_line(
        {.url = url, .client = "-", .more = "\"" + cookie + "\" \"" + set_cookie + "\" -"});
}

std::string redirect_line(const std::string& url, const std::string& location) {
    return combined_line({.url = url, .status = 302, .more = "ID=1 - " + location});
}

std::string at(std::string line, const std::string& time) {
    return line.replace(line.find("13:55:36"), time.size(), time);
}

class Rejected : public testing::Test {
  protected:
    TestInstallation installation_;
};

TEST_F(Rejected, LinesThatNoParserTakes) {
    installation_.write_logs(
        {"\n"
         "\r\n"
         "# comment\n"
         "[unclosed\n" +
         combined_line() + "10.0.0.1 - -\n" + combined_line({.client = "10.0.0.256"}) +
         combined_line({.client = "-"}) + combined_line({.client = "0.0.0.0"}) +
         combined_line({.time = "13-55-36"}) +
         "10.0.0.1 - - [10/Oct/2000:13:55:36 +0000] GET 200\n"});
    EXPECT_EQ(rejected(installation_).reasons(log_0),
              (Lines{"1 blank", "2 blank", "3 comment", "4 unclosed-field", "6 too-few-fields",
                     "7 invalid-client-address", "8 no-client-address", "9 no-client-address",
                     "10 invalid-time", "11 invalid-request-line"}));
    installation_.add_settings("IGNORE_NON_SESSION_URLS 0\n");
    EXPECT_EQ(rejected(installation_).counts.count("no-client-address"), 0U);
}

TEST_F(Rejected, LinesOfSeparateFields) {
    installation_.write_settings("ACCESS_LOG_TYPE IIS\nUSER_SESSION_KEY client_ip\n");
    const std::string rest = " GET /a - HTTP/1.1 200 - - - - - h -\n";
    installation_.write_logs({"#Fields: date time\n1.2.3.4 2026-03-01 10:00:00" + rest +
                              "1.2.3.4 2026-03-01 10-00" + rest + "1.2.3.4 2026-03-01\n"});
    EXPECT_EQ(rejected(installation_).reasons(log_0),
              (Lines{"1 comment", "3 invalid-time", "4 too-few-fields"}));
    installation_.write_settings("ACCESS_LOG_TYPE other\nUSER_SESSION_KEY client_ip\n");
    EXPECT_EQ(rejected(installation_).reasons(log_0),
              (Lines{"1 comment", "3 invalid-time", "4 too-few-fields"}));
}

TEST_F(Rejected, RequestsWithoutASessionAndThoseThatFollowARedirect) {
    installation_.add_settings(cookie_settings);
    installation_.write_logs(
        {cookie_line("/a", "ID=1") + cookie_line("/b", "-") + cookie_line("/c", "ID=;x=1") +
             cookie_line("/d", "akaau=never") + cookie_line("/e", "akaau=later") +
             cookie_line("/f", "x=1", "ID=2") + cookie_line("/g", "-", "akaau=later"),
         cookie_line("/h", "akaau=later", "ID=3") + redirect_line("/i", "/a") +
             cookie_line("/a", "ID=1") + cookie_line("/a", "ID=1")});
    const RejectedRun run = rejected(installation_, {"-t", "1"});
    EXPECT_EQ(run.reasons(log_0),
              (Lines{"2 no-session-cookie", "3 session-cookie-empty", "4 session-never-set"}));
    // The request of the first log comes before it in the session: all have one time.
    EXPECT_EQ(run.reasons("logs/access_1"), (Lines{"3 redirect-follow-up"}));
    EXPECT_EQ(run.totals["counted"], 7);
}

TEST_F(Rejected, LinesOutsideThePeriod) {
    installation_.write_logs(
        {at(combined_line(), "13:55:35") + combined_line() + at(combined_line(), "13:55:37")});
    installation_.write_scenario("REPLAY_PERIOD START 10/10/2000 13:55:36\n"
                                 "REPLAY_PERIOD END 10/10/2000 13:55:36\n"
                                 "REPLAY_LOG_FILE logs/access_0 x 0 HTTP\n");
    EXPECT_EQ(rejected(installation_).reasons(log_0), (Lines{"1 before-period", "3 after-period"}));
}

TEST_F(Rejected, LinesThatAreNotRead) {
    const std::string line = combined_line();
    const std::string rest = "rest";
    installation_.write_logs({line + line + line + rest});
    EXPECT_EQ(rejected(installation_).reasons(log_0), Lines{"4 no-line-feed"});
    installation_.name_logs({log_0}, "2");
    EXPECT_EQ(rejected(installation_).reasons(log_0),
              (Lines{"3 behind-line-count", "4 behind-line-count"}));
    installation_.name_logs({log_0}, "5");
    EXPECT_EQ(rejected(installation_).reasons(log_0), Lines{"4 too-few-fields"});
}

// Each piece of a line that is longer than the limit takes the place of a line at the end.
TEST_F(Rejected, LinesThatComeInPieces) {
    const std::string line = combined_line();
    const std::string long_line = combined_line({.url = "/" + std::string(210'000, 'x')});
    installation_.write_logs({line + long_line + line + line + line + "rest"});
    const RejectedRun run = rejected(installation_);
    EXPECT_EQ(run.reasons(log_0),
              (Lines{"2 unclosed-field", "3 too-few-fields", "4 too-few-fields",
                     "6 behind-line-count", "7 behind-line-count", "8 no-line-feed"}));
    EXPECT_EQ(run.lines[1].text.substr(0, 3), "xxx");
    const RunResult wide = run_doctor(installation_, "rejected", {"--json", "--width", "300000"});
    EXPECT_EQ(parse_rejected(wide.output).lines[1].text, std::string(102'399, 'x'));
}

TEST_F(Rejected, LinesBehindTheLimitOnWaitingRequests) {
    std::string log;
    for (int i = 0; i < 250'000; ++i) {
        log += "- - - [1/Oct/2000:1:1:1 +0] \"GET /w 1\" 200 akaau=K - -\n";
    }
    log += cookie_line("/with", "ID=1") + cookie_line("/full", "akaau=K2") +
           cookie_line("/later", "ID=1");
    installation_.add_settings(cookie_settings);
    installation_.write_logs({cookie_line("/first", "ID=1"), log, cookie_line("/next", "ID=1")});
    const RejectedRun run = rejected(installation_, {"-t", "1"});
    EXPECT_EQ(run.reasons(log_0), Lines{});
    const Lines reasons = run.reasons("logs/access_1");
    EXPECT_EQ(reasons.size(), 250'002U);
    EXPECT_EQ(Lines(reasons.end() - 3, reasons.end()),
              (Lines{"250000 session-never-set", "250002 waiting-limit-reached",
                     "250003 behind-waiting-limit"}));
    EXPECT_EQ(run.reasons("logs/access_2"), Lines{"1 behind-waiting-limit"});
}

TEST_F(Rejected, AFileOfBodiesIsNoLogAndAPipeGivesItsLinesOnce) {
    ASSERT_EQ(mkfifo(installation_.path("pipe").c_str(), 0600), 0);
    installation_.write("bodies", "a\n");
    installation_.write_scenario(
        "REPLAY_LOG_FILE pipe x 9 HTTP\nREPLAY_LOG_FILE bodies x 0 POST\n");
    std::thread writer(
        [&] { std::ofstream(installation_.path("pipe")) << combined_line() << "x\n"; });
    const RunResult run = run_doctor(installation_, "rejected", {"--json"});
    writer.join();
    const RejectedRun listed = parse_rejected(run.output);
    ASSERT_EQ(listed.lines.size(), 1U) << run.errors;
    EXPECT_EQ(listed.lines[0].reason, "too-few-fields");
    EXPECT_EQ(listed.lines[0].text, "(a pipe gives its lines only once)");
    EXPECT_EQ(listed.totals["counted"], 1);
}

TEST_F(Rejected, TheFormsTellTheSameAndSteerNoTerminal) {
    installation_.write_logs({std::string("a\x1b[2J\tb\"\\\r\n") + "c\0d\n"s + combined_line() +
                              std::string(201, 'x') + "\n"});
    const std::string cut = std::string(197, 'x') + "...";
    const std::string tail = "#count\tlogs/access_0\ttoo-few-fields\tBadRequest\t3\n"
                             "#total\tCounted\t1\n#total\tTotal\t4\n#total\tRedirected\t0\n"
                             "#total\tTimeBasedFiltered\t0\n#total\tBadRequest\t3\n"
                             "#total\tNonSessionRequest\t0\n";
    EXPECT_EQ(run_doctor(installation_, "rejected", {"--tsv"}).output,
              "file\tline\treason\ttext\n"
              "logs/access_0\t1\ttoo-few-fields\ta\\x1b[2J\\tb\"\\\n"
              "logs/access_0\t2\ttoo-few-fields\tc\\x00d\n"
              "logs/access_0\t4\ttoo-few-fields\t" +
                  cut + "\n" + tail);
    const RejectedRun json = rejected(installation_);
    ASSERT_EQ(json.lines.size(), 3U);
    EXPECT_EQ(json.lines[0].text, "a\\x1b[2J\\tb\"\\");
    EXPECT_EQ(json.lines[2].text, cut);
    EXPECT_EQ(run_doctor(installation_, "rejected", {"--limit", "2", "--width", "5"}).output,
              "File           Lines  Reason          In counter  Meaning\n"
              "logs/access_0      3  too-few-fields  BadRequest  fewer fields than the field "
              "layout names\n"
              "\n"
              "File           Line  Reason          Text\n"
              "logs/access_0     1  too-few-fields  a\\...\n"
              "logs/access_0     2  too-few-fields  c\\...\n"
              "2 of 3 lines that do not count; --limit 0 lists all\n"
              "\n"
              "1 requests count of Total=4;Redirected=0;TimeBasedFiltered=0;BadRequest=3;"
              "NonSessionRequest=0\n");
}

TEST_F(Rejected, ListsAsManyAsAreAskedFor) {
    installation_.write_logs({std::string(60, '\n'), std::string(7, '\n')});
    const auto listed = [&](const Lines& words) {
        const Lines lines = lines_of(run_doctor(installation_, "rejected", words).output);
        return std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
            return line.find("logs/") != line.npos && line.find("empty line") == line.npos &&
                   line.find("count") == line.npos;
        });
    };
    EXPECT_EQ(listed({}), 50);
    EXPECT_EQ(listed({"--limit", "0"}), 67);
    EXPECT_EQ(listed({"--limit", "61"}), 61);
    EXPECT_EQ(listed({"--tsv"}), 67);
    EXPECT_EQ(listed({"--json", "--limit", "3"}), 3);
    EXPECT_EQ(run_doctor(installation_, "rejected", {"--tsv", "--json"}).status, 3);
    EXPECT_EQ(run_doctor(installation_, "rejected", {"--limit", "x"}).status, 3);
}

// Relative to the installation: path, size and time of the last change of each file and folder.
Lines state_of(const TestInstallation& installation) {
    Lines state;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(installation.root())) {
        const std::string name = entry.path().lexically_relative(installation.root());
        if (name.starts_with("output.") || name.starts_with("errors.")) {
            continue; // of the program that the test has run
        }
        struct stat status;
        stat(entry.path().c_str(), &status);
        state.push_back(name + " " + std::to_string(status.st_size) + " " +
                        std::to_string(status.st_mtim.tv_sec) + "." +
                        std::to_string(status.st_mtim.tv_nsec));
    }
    std::sort(state.begin(), state.end());
    return state;
}

TEST_F(Rejected, ChangesNothingAndSaysWhatARunWouldFailOf) {
    installation_.write_logs({combined_line() + "x\n"});
    const Lines before = state_of(installation_);
    EXPECT_EQ(run_doctor(installation_, "rejected").status, 0);
    EXPECT_EQ(state_of(installation_), before);
    installation_.name_logs({log_0, "logs/missing"});
    const RunResult run = run_doctor(installation_, "rejected");
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "zvr_al_doctor: Failed to calculate Number of records from file "
                          "'logs/missing'\n");
}

TEST_F(Rejected, AFullDiskIsNoSuccess) {
    installation_.write_logs({combined_line() + "x\n"});
    installation_.prepare_process([] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); });
    for (const std::string form : {"--json", "--tsv", "--limit=1"}) {
        const RunResult run = run_doctor(installation_, "rejected", {form});
        EXPECT_EQ(run.status, 3);
        EXPECT_EQ(run.errors, "zvr_al_doctor: The output cannot be written\n");
    }
}

} // namespace
