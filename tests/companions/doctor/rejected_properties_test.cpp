#include "base/line_reader.h"
#include "companions/common/installation.h"
#include "companions/common/shown_text.h"
#include "companions/doctor/rejected/explained_logs.h"
#include "companions/doctor/rejected/rejected_output.h"
#include "tests/companions/doctor/rejected_runs.h"
#include "tests/unit_helpers.h"
#include "tools/load/log_pieces.h"
#include "tools/parse/log_loader.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <set>

namespace {

struct Dialect {
    std::string log_type;
    std::string layout;
    std::string line; // any text for '~', cookies for '@'
};

const Dialect dialects[] = {
    {"apache", "",
     " - - [1~/Mar/2026:1~:00:59 ~+0~000] - \"~GET /~ HTTP/1.1\" 30~2 - - - - "
     "\"@\" \"@\" h~ /~"},
    {"IIS", "", " 2026-03-1~ 1~:00:59 ~GET /~ ~- HTTP/1.1 30~2 - - - @ @ h~ /~"},
    {"other", "", " 2026-03-1~ 1~:00:59 ~GET /~ /~?~ 30~2 - - - @ ~@ h~ /~ -"},
};

const std::string clients[] = {"10.0.0.7", "10.0.0.~8", "-", "0.0.0.0"};

const std::string cookies[] = {"-",       "ID=~;akaau=~", "akaau=k~",     "akaau=k", "akaau=k2",
                               "ID=~",    "ID=s;akaau=k", "akaau=k2;ID=", "ID=",     "",
                               "~XID=1;x"};

std::string random_line(Choices& choices, const Dialect& dialect) {
    std::string line = choices.of(clients) + dialect.line;
    for (size_t at = 0; (at = line.find('@')) != std::string::npos;) {
        line.replace(at, 1, choices.of(cookies));
    }
    for (size_t at = 0; (at = line.find('~', at)) != std::string::npos;) {
        const std::string text = choices.text("aZ09=?#;/. \\\"\t[]-", 30);
        line.replace(at, 1, choices.one_in(8) ? text : text.substr(0, choices.one_in(3)));
    }
    if (choices.one_in(5)) {
        choices.edit(line, std::string_view("\" \t-09a\0\xff\r", 10));
    }
    return choices.one_in(15) ? "" : choices.one_in(15) ? "#" + line : line;
}

std::string random_log(Choices& choices, const Dialect& dialect) {
    std::string log;
    for (size_t count = 1 + choices.below(40); count > 0; --count) {
        log += random_line(choices, dialect) + (choices.one_in(10) ? "\r\n" : "\n");
        if (choices.one_in(200)) { // longer than a line may be, so that it comes in pieces
            log.insert(log.size() - 1, 102'399 + choices.below(3) * 60'000, 'x');
        }
    }
    return log + (choices.one_in(4) ? "rest" : "");
}

std::string random_settings(Choices& choices, const Dialect& dialect) {
    std::string settings = "ACCESS_LOG_TYPE " + dialect.log_type + "\n" + dialect.layout;
    settings += choices.one_in(3) ? "USER_SESSION_KEY client_ip\n"
                                  : "USER_SESSION_KEY cookie\nCOOKIE_NAME ID\n";
    settings += choices.one_in(4) ? "SECONDARY_COOKIE 0\n" : "";
    settings += choices.one_in(4) ? "IGNORE_NON_SESSION_URLS 0\n" : "";
    settings += choices.one_in(4) ? "AUTO_REDIRECT 0\n" : "";
    return settings;
}

std::string random_scenario(Choices& choices, const Lines& paths) {
    std::string scenario;
    scenario += choices.one_in(2) ? "REPLAY_PERIOD START 03/12/2026 10:00:00\n" : "";
    scenario += choices.one_in(2) ? "REPLAY_PERIOD END 03/15/2026 18:00:00\n" : "";
    for (const std::string& path : paths) {
        const size_t budget = choices.one_in(3) ? 1 + choices.below(50) : 0;
        scenario += "REPLAY_LOG_FILE " + path + " x " + std::to_string(budget) + " HTTP\n";
    }
    return scenario;
}

// What the command writes, with pieces of any size and in this process, a child's.
void write_in_pieces(const TestInstallation& installation, int threads, Choices& choices) {
    ASSERT_EQ(chdir(installation.path().c_str()), 0);
    log_piece_size = 1 + choices.below(5000);
    LineReader::block_size = 1 + choices.below(2 * log_piece_size);
    RunOptions options;
    options.scenario = "web";
    options.work_dir = installation.path();
    options.num_thread = threads;
    read_installation(options);
    FILE* file = std::fopen("in_pieces", "w");
    constexpr uint64_t all = std::numeric_limits<uint64_t>::max();
    write_rejected(file, explain_logs(), {RejectedOutput::Form::json, all, 200'000});
    std::fclose(file);
}

// The lines of a log by a plain way: at most 102,399 characters each, the line feed included.
Lines plain_lines(const std::string& log) {
    Lines lines;
    for (size_t begin = 0; begin < log.size();) {
        const size_t line_feed = std::min(log.find('\n', begin), log.size());
        const size_t end = std::min(line_feed + 1, begin + log_line_size - 1);
        lines.push_back(log.substr(begin, std::min(end, line_feed) - begin));
        begin = end;
        if (lines.back().ends_with('\r')) {
            lines.back().pop_back();
        }
    }
    return lines;
}

// Each line is listed or counts, the listed ones with their texts.
void expect_lines_of_logs(const RejectedRun& run, const TestInstallation& installation,
                          const Lines& paths) {
    long counted = run.totals["counted"];
    for (const std::string& path : paths) {
        const Lines lines = plain_lines(installation.read(path));
        counted -= static_cast<long>(lines.size());
        for (const ListedLine& line : run.lines) {
            if (line.log == path) {
                ++counted;
                ASSERT_LE(line.line_num, static_cast<long>(lines.size()));
                EXPECT_EQ(line.text, shown_text(lines[static_cast<size_t>(line.line_num) - 1]));
            }
        }
    }
    EXPECT_EQ(counted, 0);
}

} // namespace

TEST(RejectedProperties, TheCountsAddUpToTheSummaryOfARun) {
    std::set<std::string> reasons;
    for (unsigned seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        Choices choices(seed);
        const Dialect& dialect = choices.of(dialects);
        const TestInstallation installation;
        installation.write_settings(random_settings(choices, dialect));
        const Lines all_paths = {"logs/a_1", "logs/a_2", "logs/b_1", "logs/c"};
        const Lines paths(all_paths.begin(), all_paths.begin() + 1 + choices.below(4));
        for (const std::string& path : paths) {
            installation.write(path, random_log(choices, dialect));
        }
        installation.write_scenario(random_scenario(choices, paths));
        const int threads = 1 + static_cast<int>(choices.below(4));
        const RunResult run = installation.run({"-t", std::to_string(threads)});
        if (run.status != 0) { // a log without any line feed
            continue;
        }
        run_in_child([&] { write_in_pieces(installation, threads, choices); });
        const RejectedRun rejected = parse_rejected(installation.read("in_pieces"));
        expect_sums_of_run(rejected, run);
        expect_lines_of_logs(rejected, installation, paths);
        for (const auto& [reason, count] : rejected.counts) {
            reasons.insert(reason);
        }
    }
    // All reasons but one that no layout gives, and those of the limit on waiting requests.
    EXPECT_EQ(reasons.size(), rejection_count - 4) << testing::PrintToString(reasons);
}
