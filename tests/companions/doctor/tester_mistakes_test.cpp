#include "tests/companions/doctor/doctor_runs.h"
#include "tests/support/permissions.h"

#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

const std::string settings_file = profile_directory + "/replay_settings.dat";
const std::string patterns_file = profile_directory + "/replay_url_patterns.dat";
const std::string filters_file = profile_directory + "/replay_url_filter_patterns.dat";
const std::string scenario_file = scenario_directory + "/web.conf";

enum class RunEffect { fails, gives_nothing, goes_on };

// A mistake, and how "check" names it.
struct Mistake {
    std::string name;
    std::function<void(const TestInstallation&)> make;
    std::string id;
    std::string file; // relative to the installation
    int line;
    RunEffect effect;
    std::string in_cure;
};

// An installation of which nothing is wrong.
void make_sound(const TestInstallation& installation) {
    installation.write_logs({combined_line() + combined_line({.url = "/b"})});
}

// UTF-16, the low byte of each character first.
std::string wide(const std::string& text) {
    std::string twice;
    for (const char c : text) {
        twice += c;
        twice += '\0';
    }
    return twice;
}

// Has the settings that an installation begins with in five lines, and these from line 6 on.
std::function<void(const TestInstallation&)> settings(const std::string& lines) {
    return [lines](const TestInstallation& installation) { installation.add_settings(lines); };
}

// One log, at line 1 of the scenario.
std::function<void(const TestInstallation&)> log(const std::string& text) {
    return [text](const TestInstallation& installation) { installation.write_logs({text}); };
}

// Line 2 of the scenario.
std::function<void(const TestInstallation&)> scenario_line(const std::string& line) {
    return [line](const TestInstallation& installation) {
        installation.write_scenario("REPLAY_LOG_FILE logs/access_0 x 0 HTTP\n" + line + "\n");
    };
}

std::function<void(const TestInstallation&)> main_pattern(const std::string& pattern) {
    return [pattern](const TestInstallation& installation) {
        installation.write_patterns("Status|\nactive|main|na|-|T|na|-|na|" + pattern + "\n");
    };
}

void expect_run(const TestInstallation& installation, RunEffect effect) {
    const RunResult run = installation.run();
    EXPECT_EQ(run.status, effect == RunEffect::fails ? 255 : 0) << run.output;
    if (effect != RunEffect::fails) {
        EXPECT_EQ(installation.url_rows().empty(), effect == RunEffect::gives_nothing);
    }
}

void expect_named(const Mistake& mistake) {
    TestInstallation installation;
    make_sound(installation);
    mistake.make(installation);
    const CheckRun run = check(installation);
    const bool is_error = mistake.effect != RunEffect::goes_on;
    EXPECT_EQ(run.status, is_error ? 2 : 1);
    const nlohmann::json found = run.of(mistake.id);
    ASSERT_EQ(found.size(), 1U) << run.findings;
    EXPECT_EQ(found[0]["severity"], is_error ? "error" : "warning");
    EXPECT_EQ(found[0]["file"], installation.path(mistake.file));
    EXPECT_EQ(found[0]["line"], mistake.line);
    EXPECT_NE(found[0]["meaning"], "");
    EXPECT_NE(found[0]["cure"].get<std::string>().find(mistake.in_cure), std::string::npos)
        << found[0]["cure"];
    expect_run(installation, mistake.effect);
}

using enum RunEffect;

const Mistake mistakes[] = {
    {"misspelt keyword", settings("COOKIENAME JSESSIONID\n"), "unknown-keyword", settings_file, 6,
     goes_on, "COOKIE_NAME"},
    {"keyword behind a blank", settings(" NUM_THREAD 2\n"), "unknown-keyword", settings_file, 6,
     goes_on, "NUM_THREAD"},
    {"keyword that begins like another", settings("AUTO_REDIRECT_COUNT 5\n"), "keyword-prefix",
     settings_file, 6, goes_on, "AUTO_REDIRECT and a blank"},
    {"misspelt value", settings("INLINE_OBJECT_MODE skippp\n"), "rest-ignored", settings_file, 6,
     goes_on, "skip"},
    {"yes for a flag", settings("AUTO_REDIRECT yes\n"), "not-a-number", settings_file, 6, goes_on,
     "1 for on"},
    {"four for a number", settings("NUM_THREAD four\n"), "not-a-number", settings_file, 6, goes_on,
     "a number"},
    {"negative number of threads", settings("NUM_THREAD -2\n"), "thread-count", settings_file, 0,
     fails, "NUM_THREAD 0"},
    {"field in small letters", settings("AL_FIELD host_header 8\n"), "unknown-value", settings_file,
     6, goes_on, "HOST_HEADER"},
    {"field that is set twice", settings("AL_FIELD LOCATION 5\n"), "field-position", settings_file,
     6, fails, "LOCATION"},
    {"position that no line has", settings("AL_FIELD LOCATION 26\n"), "field-position",
     settings_file, 6, fails, "LOCATION"},
    {"sessions by a cookie whose field is missing",
     settings("USER_SESSION_KEY cookie\nCOOKIE_NAME J\n"), "field-missing", settings_file, 0, fails,
     "REQUEST_COOKIE"},
    {"response time without its field", settings("CONSIDER_RESPONSE_TIME 1\n"), "field-missing",
     settings_file, 0, fails, "RESPONSE_TIME"},
    {"sessions by a cookie without a name", settings("USER_SESSION_KEY cookie\n"),
     "settings-refused", settings_file, 0, fails, "COOKIE_NAME"},
    {"misspelt keyword that is needed",
     settings("USER_SESSION_KEY cookie\nAL_FIELD REQUEST_COOKIE 7\nCOOKIENAME J\n"),
     "settings-refused", settings_file, 8, fails, "COOKIE_NAME"},
    {"time of two parts", settings("NEW_USER_TIME 00:30\n"), "value-refused", settings_file, 6,
     fails, "hh:mm:ss"},
    {"carriage returns", settings("COOKIE_NAME J\r\n"), "carriage-return-in-value", settings_file,
     6, goes_on, "Take it out"},
    {"byte-order mark",
     [](const TestInstallation& installation) {
         installation.write_settings("\xef\xbb\xbf# mine\n" + installation.read(settings_file));
     },
     "byte-order-mark", settings_file, 1, goes_on, "sed"},
    {"settings in UTF-16",
     [](const TestInstallation& installation) {
         installation.write_settings(wide(installation.read(settings_file)));
     },
     "utf-16", settings_file, 1, fails, "iconv"},
    {"no settings",
     [](const TestInstallation& installation) { fs::remove(installation.path(settings_file)); },
     "settings-missing", settings_file, 0, fails, "--replay_profile"},
    {"no pattern file",
     [](const TestInstallation& installation) { fs::remove(installation.path(filters_file)); },
     "patterns-missing", filters_file, 0, fails, "empty file"},
    {"zone without a sign",
     [](const TestInstallation& installation) {
         installation.write("sys/replay_settings.default", "#\nGMT_OFFSET 0530\n");
     },
     "unknown-zone", "sys/replay_settings.default", 2, goes_on, "+0530"},
    {"name of a zone",
     [](const TestInstallation& installation) {
         installation.write("sys/replay_settings.default", "GMT_OFFSET IST\n");
     },
     "unknown-zone", "sys/replay_settings.default", 1, goes_on, "+0530"},
    {"period in another form", scenario_line("REPLAY_PERIOD START 2000-10-10 13:00:00"),
     "period-malformed", scenario_file, 2, fails, "mm/dd/yyyy"},
    {"day for month", scenario_line("REPLAY_PERIOD END 13/10/2000 13:00:00"), "date-out-of-range",
     scenario_file, 2, goes_on, "mm/dd/yyyy"},
    {"half of the day", scenario_line("REPLAY_PERIOD END 10/10/2001 13:00:00 PM"), "rest-ignored",
     scenario_file, 2, goes_on, "mm/dd/yyyy"},
    {"period that ends before it starts",
     scenario_line("REPLAY_PERIOD START 10/11/2000 00:00:00\nREPLAY_PERIOD END 10/10/2000 "
                   "00:00:00"),
     "period-empty", scenario_file, 3, gives_nothing, "ends"},
    {"misspelt word of the scenario", scenario_line("REPLAY_LOGFILE logs/a x 0 HTTP"),
     "unknown-keyword", scenario_file, 2, goes_on, "REPLAY_LOG_FILE"},
    {"column that is missing", scenario_line("REPLAY_LOG_FILE logs/access_0 0 HTTP"),
     "log-line-refused", scenario_file, 2, fails, "REPLAY_LOG_FILE PATH"},
    {"log that is missing", scenario_line("REPLAY_LOG_FILE /none x 0 HTTP"), "log-missing",
     scenario_file, 2, fails, "path"},
    {"log that is a folder", scenario_line("REPLAY_LOG_FILE logs x 0 HTTP"), "log-not-regular",
     scenario_file, 2, fails, "each of its files"},
    {"empty log", log(""), "log-empty", scenario_file, 1, fails, "log that is meant"},
    {"one log twice", scenario_line("REPLAY_LOG_FILE logs/access_0 x 0 HTTP"), "log-twice",
     scenario_file, 2, goes_on, "Take one"},
    {"one log by two paths", scenario_line("REPLAY_LOG_FILE logs/../logs/access_0 x 0 HTTP"),
     "log-twice", scenario_file, 2, goes_on, "Take one"},
    {"no line feed at the end", log(combined_line() + "10.0.0.1"), "log-no-line-feed",
     scenario_file, 1, goes_on, "echo"},
    {"no line feed at all", log("10.0.0.1"), "log-no-line-feed", scenario_file, 1, fails, "echo"},
    {"log in UTF-16", log("\xff\xfe" + wide(combined_line())), "log-utf-16", scenario_file, 1,
     gives_nothing, "iconv"},
    {"log in UTF-16 without its mark", log(wide(combined_line())), "log-utf-16", scenario_file, 1,
     gives_nothing, "iconv"},
    {"log with a byte-order mark", log("\xef\xbb\xbf" + combined_line() + combined_line()),
     "log-byte-order-mark", scenario_file, 1, goes_on, "tail"},
    {"gzip", log("\x1f\x8b\x08\n\n"), "log-compressed", scenario_file, 1, gives_nothing, "Unpack"},
    {"no log", [](const TestInstallation& installation) { installation.write_scenario("#\n"); },
     "no-logs", scenario_file, 0, gives_nothing, "REPLAY_LOG_FILE"},
    {"pattern that does not compile", main_pattern("/a("), "pattern-refused", patterns_file, 2,
     fails, "backslash"},
    {"question mark", main_pattern("/search?q=*"), "question-mark-operator", patterns_file, 2,
     goes_on, "/search\\?q=*"},
    {"misspelt type",
     [](const TestInstallation& installation) {
         installation.write_patterns("active|mian|na|-|T|na|-|na|/a\n");
     },
     "unknown-type", patterns_file, 1, goes_on, "main"},
    {"body that is missing",
     [](const TestInstallation& installation) {
         installation.write_patterns("active|main|na|-|T|na|-|body|/a\n");
     },
     "post-data-missing", patterns_file, 1, fails, "NA"},
    {"column that is empty",
     [](const TestInstallation& installation) { installation.write_filters("active||-|na|/a\n"); },
     "too-few-columns", filters_file, 1, fails, "active|METHOD"},
};

} // namespace

TEST(TesterMistakes, AreNamedWithPlaceAndCure) {
    for (const Mistake& mistake : mistakes) {
        SCOPED_TRACE(mistake.name);
        expect_named(mistake);
    }
}

TEST(TesterMistakes, OfAKeywordThatIsNeededAreOneFinding) {
    TestInstallation installation;
    make_sound(installation);
    installation.add_settings("USER_SESSION_KEY cookie\nAL_FIELD REQUEST_COOKIE 7\n"
                              "COOKIENAME J\n");
    const CheckRun run = check(installation);
    EXPECT_EQ(run.of("settings-refused")[0]["value"], "COOKIENAME J");
    EXPECT_EQ(run.of("unknown-keyword").size(), 0U) << run.findings;
}

TEST(TesterMistakes, InASoundScenarioAreNone) {
    const TestInstallation installation;
    make_sound(installation);
    const CheckRun run = check(installation);
    EXPECT_EQ(run.status, 0) << run.findings;
    expect_run(installation, goes_on);
}

TEST(TesterMistakes, AreAllNamedAtOnce) {
    const TestInstallation installation;
    installation.add_settings("NEW_USER_TIME 1\nNEW_USER_TIME 2\nAL_FIELD REFERER 5\n"
                              "CONSIDER_RESPONSE_TIME 1\n");
    installation.write_patterns("active|inline|na|-|-|na|-|-|(\nactive|inline|na|-|-|na|-|-|[\n");
    installation.write_filters("active\n");
    installation.write_scenario("REPLAY_LOG_FILE\nREPLAY_PERIOD END x\n"
                                "REPLAY_LOG_FILE /none x 0 HTTP\nREPLAY_LOG_FILE /none x 0 HTTP\n");
    const CheckRun run = check(installation);
    EXPECT_EQ(run.of("value-refused").size(), 2U);
    EXPECT_EQ(run.of("field-position").size(), 1U);
    EXPECT_EQ(run.of("field-missing").size(), 1U);
    EXPECT_EQ(run.of("pattern-refused").size(), 2U);
    EXPECT_EQ(run.of("too-few-columns").size(), 1U);
    EXPECT_EQ(run.of("log-line-refused").size(), 1U);
    EXPECT_EQ(run.of("period-malformed").size(), 1U);
    EXPECT_EQ(run.of("log-missing").size(), 2U);
}

TEST(TesterMistakes, OfPlacesAreOneClearError) {
    const TestInstallation installation;
    make_sound(installation);
    const struct {
        Lines words;
        Environment environment;
        std::string id;
        std::string in_cure;
    } rows[] = {
        {{"-s", "wbe"}, {}, "scenario-missing", "Write web"},
        {{"-s", "a/b"}, {}, "scenario-name", "workspace/profile"},
        {{"-s", "web", "-r", "none"}, {}, "profile-missing", "--replay_profile"},
        {{"-s", "web"}, {{"ZV_WDIR", "relative"}}, "work-directory", "--work-dir"},
        {{"-s", "web"}, {{"ZV_WDIR", "/none"}}, "work-directory", "--work-dir"},
        {{"-s", "web", "--work-dir", "none"}, {}, "work-directory", "--work-dir"},
    };
    for (const auto& [words, environment, id, in_cure] : rows) {
        Lines all = {"check", "--json"};
        all.insert(all.end(), words.begin(), words.end());
        const RunResult run = run_doctor_words(installation, all, environment);
        EXPECT_EQ(run.status, 2) << id;
        const nlohmann::json findings = nlohmann::json::parse(run.output)["findings"];
        ASSERT_EQ(findings.size(), 1U) << findings;
        EXPECT_EQ(findings[0]["id"], id);
        EXPECT_NE(findings[0]["cure"].get<std::string>().find(in_cure), std::string::npos);
    }
}

TEST(TesterMistakes, IncludeAFolderThatMayNotBeRead) {
    TestInstallation installation;
    make_sound(installation);
    fs::permissions(installation.path("logs"), fs::perms::none);
    installation.prepare_process([] { obey_permissions(); });
    const RunResult run = run_doctor(installation, "check", {"--json"});
    fs::permissions(installation.path("logs"), fs::perms::all);
    if (run.status == not_permitted) {
        GTEST_SKIP() << "the machine does not let a process lose its rights";
    }
    EXPECT_EQ(run.status, 2);
    const nlohmann::json found = nlohmann::json::parse(run.output)["findings"][0];
    EXPECT_EQ(found["id"], "log-unreadable");
    EXPECT_EQ(found["line"], 1);
    EXPECT_NE(found["cure"].get<std::string>().find("folders"), std::string::npos);
}

TEST(TesterMistakes, OfFilesThatAreNoneStopNobody) {
    const TestInstallation installation;
    for (const std::string& file : {settings_file, patterns_file, scenario_file}) {
        make_sound(installation);
        fs::rename(installation.path(file), installation.path("kept"));
        ASSERT_EQ(mkfifo(installation.path(file).c_str(), 0600), 0);
        EXPECT_EQ(check(installation).of("not-regular")[0]["file"], installation.path(file));
        fs::rename(installation.path("kept"), installation.path(file));
    }
    ASSERT_EQ(mkfifo(installation.path("logs/pipe").c_str(), 0600), 0);
    installation.name_logs({"logs/pipe"});
    EXPECT_EQ(check(installation).of("log-not-regular")[0]["severity"], "error");
    installation.name_logs({"logs/pipe"}, "1000");
    EXPECT_EQ(check(installation).of("log-not-regular")[0]["severity"], "note");
}
