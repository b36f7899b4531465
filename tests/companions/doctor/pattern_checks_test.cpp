#include "companions/doctor/pattern_reach.h"
#include "companions/doctor/pattern_traps.h"
#include "tests/companions/doctor/doctor_runs.h"
#include "tests/properties/properties.h"
#include "tools/config/replay_profile.h"
#include "tools/patterns/pattern_files.h"
#include "tools/patterns/pattern_matcher.h"

#include <gtest/gtest.h>
#include <random>
#include <set>

namespace {

// Fills the tables anew with inline patterns, the lines of which are made of method, host and
// pattern.
struct InlinePattern {
    std::string pattern;
    std::string method = "na";
    std::string host = "na";
};

void fill_tables(const std::vector<InlinePattern>& patterns) {
    static char profile[] = "/nonexistent";
    replay_profile = replay_profile_dir = profile;
    std::string text;
    for (const InlinePattern& pattern : patterns) {
        text += "active|inline|" + pattern.method + "|-|-|" + pattern.host + "|-|-|" +
                pattern.pattern + "\n";
    }
    const TemporaryDirectory directory;
    forget_patterns();
    save_url_pattern(directory.write("patterns", text).c_str());
    sort_pattern_tables();
}

std::set<std::string> unreached_of(const std::vector<InlinePattern>& patterns) {
    fill_tables(patterns);
    std::set<std::string> texts;
    for (const UnreachedEntry& unreached : find_unreached_entries()) {
        texts.insert(unreached.entry->url_ptrn_string);
    }
    forget_patterns();
    return texts;
}

using Texts = std::set<std::string>;

} // namespace

TEST(PatternTraps, AreFoundWithWhatWasLikelyMeant) {
    using enum TrapKind;
    const struct {
        std::string pattern;
        bool queries_are_cut;
        std::vector<std::pair<TrapKind, std::string>> traps;
    } rows[] = {
        {"/a/b*", true, {}},
        {"/search\\?*", true, {}},
        {"/search\\?q=*", false, {}},
        {"/images?/x", true, {}},
        {"/colou?r", false, {}},
        {"/item/[0-9]{1,}", false, {}},
        {"*\\.gif", false, {}},
        {"/[?]a=*", false, {}},
        {"/(a|b)*", false, {}},
        {"http://www\\.x/*", false, {}},
        {"/search?*", false, {{question_mark_operator, "/search\\?*"}}},
        {"/a?q=1", false, {{question_mark_operator, "/a\\?q=1"}}},
        {"/a?q=1", true, {{question_mark_operator, "/a\\?*"}}},
        {"/a?", true, {{question_mark_operator, "/a\\?*"}}},
        {"/index.html", false, {{dot_operator, "/index\\.html"}}},
        {"/a/.*", false, {{dot_star, "/a/*"}}},
        {"/item/[0-9]*", false, {{star_after_set, "/item/[0-9]{0,}"}}},
        {"/[]^a-z[:digit:]]*", false, {{star_after_set, "/[]^a-z[:digit:]]{0,}"}}},
        {"/a\\?\\*", false, {{escaped_star, "/a\\?."}}},
        {"/p\\?x=*", true, {{behind_the_cut, "/p\\?*"}}},
        {"/p\\?", true, {{no_star_at_the_cut, "/p\\?*"}}},
        {"/p;", true, {{no_star_at_the_cut, "/p;*"}}},
        {"img/a", false, {{no_slash_at_start, "*img/a"}}},
    };
    for (const auto& [pattern, queries_are_cut, traps] : rows) {
        std::vector<std::pair<TrapKind, std::string>> found;
        for (const PatternTrap& trap : find_traps(pattern, queries_are_cut)) {
            found.emplace_back(trap.kind, trap.likely);
        }
        EXPECT_EQ(found, traps) << pattern;
    }
}

TEST(PatternTraps, TellWhereARefusedPatternIsWrong) {
    EXPECT_EQ(find_refused_place("/a(b"), ", from character 3 on: '(b'");
    EXPECT_EQ(find_refused_place("/a[b]c[d"), ", from character 7 on: '[d'");
    EXPECT_EQ(find_refused_place("?a=b"), ", from character 1 on: '?a=b'");
    EXPECT_EQ(find_refused_place("/a\\"), ", from character 3 on: '\\'");
}

TEST(PatternReach, FindsPatternsOfWhichAnEarlierOneTakesAll) {
    EXPECT_EQ(unreached_of({{"*\\.gif"}, {"/img/a\\.gif"}, {"/img/a\\.png"}}),
              (Texts{"/img/a\\.gif"}));
    EXPECT_EQ(unreached_of({{"/a*"}, {"/a/[0-9]{1,3}"}, {"/b"}}), (Texts{"/a/[0-9]{1,3}"}));
    EXPECT_EQ(unreached_of({{"/a(b{0,1}c{0,1})d"}, {"/abd"}, {"/a[bc]d"}, {"/acd*"}}),
              (Texts{"/abd", "/a[bc]d"}));
    EXPECT_EQ(unreached_of({{"/b"}, {"/b*"}}), Texts()); // the longer one only comes later
    EXPECT_EQ(unreached_of({{"/a"}, {"/a"}}), (Texts{"/a"}));
    EXPECT_EQ(unreached_of({{"(a)\\1"}, {"aa"}}), Texts()); // not decided
}

TEST(PatternReach, GoesByMethodAndHost) {
    EXPECT_EQ(unreached_of({{"/a*", "GET"}, {"/ab", "get"}, {"/ac"}, {"/ad", "POST"}}),
              (Texts{"/ab"}));
    EXPECT_EQ(unreached_of({{"/a*", "na", "h"}, {"/ab", "na", "h"}, {"/ac", "na", "H"}, {"/ad"}}),
              (Texts{"/ab"}));
}

// Whatever is said to be unreachable decides no URL, of all those that short patterns can tell
// apart; and where no taker is found, there is a URL of the pattern's own.
TEST(PatternReach, AgreesWithWhatDecidesUrls) {
    std::vector<std::string> urls = {""};
    for (size_t i = 0; i < urls.size() && urls[i].size() < 5; ++i) {
        for (const char c : {'a', 'b', 'c'}) { // the last one is in no set
            urls.push_back(urls[i] + c);
        }
    }
    const char* const parts[] = {"a", "b", ".", "*", "a?", "[ab]", "(ab){0,1}", "b{0,2}"};
    std::mt19937 random(1);
    size_t unreached_count = 0;
    for (int round = 0; round < 300; ++round) {
        std::vector<InlinePattern> patterns(2);
        for (InlinePattern& pattern : patterns) {
            for (size_t i = 0; i < 1 + random() % 3; ++i) {
                pattern.pattern += parts[random() % std::size(parts)];
            }
        }
        if (patterns[0].pattern == patterns[1].pattern) {
            continue;
        }
        const Texts unreached = unreached_of(patterns);
        fill_tables(patterns);
        const PatternIndex index;
        PatternMatcher matcher(index);
        std::set<int32_t> deciding;
        for (const std::string& url : urls) {
            deciding.insert(matcher.find(url.c_str(), "GET", "h").index);
        }
        const bool second_decides = deciding.contains(1);
        EXPECT_EQ(unreached.empty(), second_decides)
            << patterns[0].pattern << " and " << patterns[1].pattern;
        unreached_count += unreached.size();
        forget_patterns();
    }
    EXPECT_GT(unreached_count, 20U);
}

TEST(PatternChecks, NameHostsAndTransactionsThatAreOdd) {
    const TestInstallation installation;
    installation.write_logs({combined_line()});
    installation.write_result("hosts.list", "www.example.com\nm.example.com:8080\n");
    installation.write_patterns("active|main|na|-|Home|www.exmaple.com|-|na|/a\n"
                                "active|main|na|-|Home|m.example.com:8080|-|na|/b\n"
                                "active|main|na|-|na|na|-|na|/c\nactive|main|na|-|na|na|-|na|/d\n"
                                "actve|main|na|-|x|na|-|na|/e\ninactive|main|na|-|x|na|-|na|/f\n");
    const CheckRun run = check(installation);
    EXPECT_EQ(run.status, 1);
    ASSERT_EQ(run.of("unknown-host").size(), 1U);
    EXPECT_EQ(run.of("unknown-host")[0]["cure"],
              "Write www.example.com if that is meant, or na for any host.");
    ASSERT_EQ(run.of("transaction-twice").size(), 1U);
    EXPECT_EQ(run.of("transaction-twice")[0]["line"], 2);
    ASSERT_EQ(run.of("unknown-status").size(), 1U);
    EXPECT_EQ(run.of("unknown-status")[0]["line"], 5);
}

TEST(PatternChecks, TellOfDotsOnceForEachFile) {
    const TestInstallation installation;
    installation.write_logs({combined_line()});
    installation.write_filters("active|na|-|na|/a.gif\nactive|na|-|na|/b.gif\n");
    const CheckRun run = check(installation);
    EXPECT_EQ(run.status, 0);
    ASSERT_EQ(run.of("dot-operator").size(), 1U);
    EXPECT_EQ(run.of("dot-operator")[0]["line"], 1);
}

TEST(PatternChecks, NameTheTakerOfAPatternThatIsNotReached) {
    const TestInstallation installation;
    installation.write_logs({combined_line()});
    installation.write_patterns("active|main|na|-|A|na|-|na|/shop/cart\n"
                                "active|main|na|-|B|na|-|na|/*\n");
    const CheckRun run = check(installation);
    EXPECT_EQ(run.status, 1);
    ASSERT_EQ(run.of("unreachable").size(), 1U);
    EXPECT_EQ(run.of("unreachable")[0]["line"], 1);
    EXPECT_NE(run.of("unreachable")[0]["meaning"].get<std::string>().find("/*, line 2"),
              std::string::npos);
}
