#include "tests/companions/report/plain_load.h"
#include "tests/companions/report/report_runs.h"
#include "tests/unit_helpers.h"

#include <algorithm>
#include <ctime>
#include <map>

namespace {

using nlohmann::json;

constexpr long midnight = 1'773'100'800; // 10 March 2026, UTC

enum class Fate { bad, comment, blank, early, late, counts };

struct Line {
    Fate fate;
    long time;
    int user; // 0: no session
    size_t url;
    size_t method;
    int status;
};

// By number: a filtered one, one of an inline object, three of two transactions, one without, one
// that no pattern fits.
constexpr const char* urls[] = {"/hidden", "/logo.gif", "/shop", "/pay", "/cart", "/about", "/odd"};
constexpr bool url_is_main[] = {false, false, true, true, true, true, true};
constexpr const char* methods[] = {"GET", "POST", "get"};

constexpr const char* patterns = "status|type\n"
                                 "active|inline|na|-|na|na|-|na|*.gif\n"
                                 "active|main|na|-|Shop|na|-|na|/shop\n"
                                 "active|main|na|-|Pay|na|-|na|/pay\n"
                                 "active|main|na|-|Pay|na|-|na|/cart\n"
                                 "active|main_without_tx|na|-|na|na|-|na|/about\n";
constexpr const char* filters = "\n\nactive|na|-|na|/hidden\n";

// Some traffic and how it is logged.
struct Traffic {
    std::string dialect; // APACHE, IIS or other
    bool by_cookie;
    bool lists_inline;
    bool counts_without_session;
    long first; // of the period
    long last;
    std::vector<std::vector<Line>> logs;
};

Fate random_fate(Choices& choices) {
    return choices.one_in(30)   ? Fate::bad
           : choices.one_in(40) ? Fate::comment
           : choices.one_in(40) ? Fate::blank
                                : Fate::counts;
}

Line random_line(Choices& choices, const Traffic& traffic, int user, long time) {
    constexpr int statuses[] = {200, 200, 200, 304, 404, 500, 101, 0, 999};
    Line line = {random_fate(choices),
                 time,
                 user,
                 choices.below(std::size(urls)),
                 choices.below(std::size(methods)),
                 choices.of(statuses)};
    if (line.fate == Fate::counts) {
        line.fate = time < traffic.first  ? Fate::early
                    : time > traffic.last ? Fate::late
                                          : Fate::counts;
    }
    return line;
}

Traffic random_traffic(Choices& choices, const std::string& dialect, bool by_cookie) {
    const long span = choices.of(std::vector<long>{600, 20'000, 400'000});
    Traffic traffic = {dialect, by_cookie, choices.one_in(2), choices.one_in(2), 0, 0, {}};
    traffic.first = midnight + span / 5;
    traffic.last = midnight + span * 4 / 5;
    traffic.logs.resize(1 + choices.below(3));
    for (size_t count = choices.below(60); count > 0; --count) {
        const int user = choices.one_in(10) ? 0 : static_cast<int>(count);
        long time = midnight + static_cast<long>(choices.below(static_cast<size_t>(span)));
        for (size_t size = 1 + choices.below(12); size > 0; --size) {
            const size_t pause = choices.of(std::vector<size_t>{1, 2, 40, 300});
            time = std::min(time + static_cast<long>(choices.below(pause)), midnight + span);
            traffic.logs[choices.below(traffic.logs.size())].push_back(
                random_line(choices, traffic, user, time));
        }
    }
    for (std::vector<Line>& log : traffic.logs) {
        std::stable_sort(log.begin(), log.end(),
                         [](const Line& a, const Line& b) { return a.time < b.time; });
    }
    return traffic;
}

std::string time_text(long time, const char* format) {
    tm fields;
    gmtime_r(&time, &fields);
    char text[64];
    std::strftime(text, sizeof text, format, &fields);
    return text;
}

std::string logged(const Traffic& traffic, const Line& line) {
    if (line.fate != Fate::early && line.fate != Fate::late && line.fate != Fate::counts) {
        return line.fate == Fate::bad ? "x y\n" : line.fate == Fate::comment ? "# x\n" : "\n";
    }
    const std::string client = line.user == 0 ? "-" : "10.0.0." + std::to_string(line.user);
    const std::string cookie = line.user == 0 ? "-" : "ID=u" + std::to_string(line.user);
    const std::string method = methods[line.method];
    const std::string status = std::to_string(line.status);
    if (traffic.dialect == "APACHE") {
        return client + " - - [" + time_text(line.time - 3600, "%d/%b/%Y:%H:%M:%S") +
               " -0100] 1 \"" + method + " " + urls[line.url] + " HTTP/1.1\" " + status +
               " - - - - \"" + cookie + "\" \"-\" h -\n";
    }
    const std::string begin = client + time_text(line.time, " %Y-%m-%d %H:%M:%S ") + method + " ";
    if (traffic.dialect == "IIS") {
        return begin + urls[line.url] + " - HTTP/1.1 " + status + " - - - " + cookie + " - h -\n";
    }
    return begin + "x " + urls[line.url] + " " + status + " - - - " + cookie + " - h -\n";
}

void write_installation(const TestInstallation& installation, const Traffic& traffic) {
    Lines texts;
    for (const std::vector<Line>& log : traffic.logs) {
        std::string& text = texts.emplace_back();
        for (const Line& line : log) {
            text += logged(traffic, line);
        }
    }
    installation.write_logs(texts);
    installation.write_scenario(
        installation.read(scenario_directory + "/web.conf") +
        time_text(traffic.first, "REPLAY_PERIOD START %m/%d/%Y %H:%M:%S\n") +
        time_text(traffic.last, "REPLAY_PERIOD END %m/%d/%Y %H:%M:%S\n"));
    installation.write_settings(
        "ACCESS_LOG_TYPE " + traffic.dialect + "\nUSER_SESSION_KEY " +
        (traffic.by_cookie ? "cookie" : "client_ip") + "\nCOOKIE_NAME ID\nINLINE_OBJECT_MODE " +
        (traffic.lists_inline ? "asperlog" : "skip") + "\nIGNORE_NON_SESSION_URLS " +
        (traffic.counts_without_session ? "0" : "1") + "\n");
    installation.write_patterns(patterns);
    installation.write_filters(filters);
}

bool counts(const Traffic& traffic, const Line& line) {
    return line.fate == Fate::counts && (line.user != 0 || traffic.counts_without_session);
}

std::vector<PlainVisit> visits_of(const Traffic& traffic) {
    std::vector<PlainVisit> visits;
    for (const std::vector<Line>& log : traffic.logs) {
        for (const Line& line : log) {
            if (counts(traffic, line)) {
                visits.push_back({line.time, line.user == 0 ? "" : std::to_string(line.user),
                                  url_is_main[line.url]});
            }
        }
    }
    return visits;
}

// Lines for which `is_meant` holds.
template <typename IsMeant> long count_lines(const Traffic& traffic, const IsMeant& is_meant) {
    long count = 0;
    for (const std::vector<Line>& log : traffic.logs) {
        count += std::count_if(log.begin(), log.end(), is_meant);
    }
    return count;
}

void expect_funnel(const json& funnel, const Traffic& traffic) {
    const auto with_fate = [&](Fate fate) {
        return count_lines(traffic, [&](const Line& line) { return line.fate == fate; });
    };
    const auto with_url = [&](size_t first, size_t last) {
        return count_lines(traffic, [&](const Line& line) {
            return counts(traffic, line) && first <= line.url && line.url <= last;
        });
    };
    EXPECT_TRUE(funnel["adds_up"].get<bool>());
    const std::map<std::string, long> expected = {
        {"lines", count_lines(traffic, [](const Line&) { return true; })},
        {"blank", with_fate(Fate::blank)},
        {"comments", with_fate(Fate::comment)},
        {"bad", with_fate(Fate::bad)},
        {"before_period", with_fate(Fate::early)},
        {"after_period", with_fate(Fate::late)},
        {"loaded", with_fate(Fate::counts)},
        {"redirect_follow_ups", 0},
        {"counted", count_lines(traffic, [&](const Line& line) { return counts(traffic, line); })},
        {"filtered", with_url(0, 0)},
        {"inline_left_out", traffic.lists_inline ? 0 : with_url(1, 1)},
        {"inline_listed", traffic.lists_inline ? with_url(1, 1) : 0},
        {"main_with_transaction", with_url(2, 4)},
        {"main_without_transaction", with_url(5, 5)},
        {"no_pattern", with_url(6, 6)}};
    for (const auto& [name, count] : expected) {
        EXPECT_EQ(number(funnel[name]), count) << name;
    }
}

void expect_transactions(const json& mix, const Traffic& traffic) {
    std::map<std::string, long> told;
    for (const json& transaction : mix["transactions"]) {
        told[transaction["name"]] = number(transaction["requests"]);
    }
    const auto requests = [&](size_t first, size_t last) {
        return count_lines(traffic, [&](const Line& line) {
            return counts(traffic, line) && first <= line.url && line.url <= last;
        });
    };
    std::map<std::string, long> expected = {{"Shop", requests(2, 2)}, {"Pay", requests(3, 4)}};
    std::erase_if(expected, [](const auto& entry) { return entry.second == 0; });
    EXPECT_EQ(told, expected);
    EXPECT_EQ(number(mix["without_transaction"]["requests"]), requests(5, 6));
}

void expect_responses(const json& over_time, const Traffic& traffic) {
    const auto is_parsed = [](const Line& line) {
        return line.fate == Fate::early || line.fate == Fate::late || line.fate == Fate::counts;
    };
    const long start = number(over_time["start"]);
    const long seconds = number(over_time["step_seconds"]);
    for (const auto& [name, series] : over_time["responses"].items()) {
        const int digit = name == "other" ? 0 : name[0] - '0';
        for (size_t i = 0; i < series.size(); ++i) {
            const long begin = start + static_cast<long>(i) * seconds;
            const long expected = count_lines(traffic, [&](const Line& line) {
                const int status_class = line.status / 100;
                return is_parsed(line) && begin <= line.time && line.time < begin + seconds &&
                       (status_class < 1 || status_class > 5 ? 0 : status_class) == digit;
            });
            EXPECT_EQ(number(series[i]), expected) << name << " " << i;
        }
    }
}

// As url.list has the row.
std::string listed(const json& row) {
    const auto or_na = [](const json& cell) { return cell.is_null() ? "NA" : cell; };
    const std::map<std::string, std::string> types = {
        {"main", "MAIN"}, {"main_without_transaction", "MAIN_WITHOUT_TX"}, {"inline", "INLINE"}};
    std::string text = row[4].get<bool>() ? "YES" : "NO";
    const std::string cells[] = {types.at(row[3]), row[0], row[2], row[6].dump(),
                                 or_na(row[5]),    row[1], "-1",   or_na(row[7]),
                                 or_na(row[8])};
    for (const std::string& cell : cells) {
        text += "|" + cell;
    }
    return text;
}

void expect_results(const TestInstallation& installation, const json& figures) {
    const RunResult run = installation.run();
    EXPECT_EQ(run.output, figures["funnel"]["summary"].get<std::string>() + "\n");
    Lines rows;
    for (const json& row : figures["urls"]["rows"]) {
        rows.push_back(listed(row));
    }
    EXPECT_EQ(rows, installation.url_rows());
}

struct Logging {
    const char* dialect;
    bool by_cookie;
};

class RandomLoad : public testing::TestWithParam<Logging> {};

} // namespace

TEST_P(RandomLoad, IsWhatWasLogged) {
    for (uint32_t seed = 1; seed <= 8; ++seed) {
        SCOPED_TRACE(seed);
        Choices choices(seed);
        const Traffic traffic = random_traffic(choices, GetParam().dialect, GetParam().by_cookie);
        const TestInstallation installation;
        write_installation(installation, traffic);
        const json figures = figures_of(installation, {"-t", std::to_string(1 + choices.below(3))});
        expect_load(figures, visits_of(traffic));
        expect_funnel(figures["funnel"], traffic);
        expect_transactions(figures["mix"], traffic);
        expect_responses(figures["over_time"], traffic);
        expect_results(installation, figures);
    }
}

INSTANTIATE_TEST_SUITE_P(Logs, RandomLoad,
                         testing::Values(Logging{"APACHE", true}, Logging{"APACHE", false},
                                         Logging{"IIS", true}, Logging{"IIS", false},
                                         Logging{"OTHER", true}, Logging{"OTHER", false}),
                         [](const auto& logging) {
                             return std::string(logging.param.dialect) +
                                    (logging.param.by_cookie ? "ByCookie" : "ByClient");
                         });
