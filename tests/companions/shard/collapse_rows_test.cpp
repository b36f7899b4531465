#include "companions/shard/collapse/collapse_rows.h"

#include "base/failure.h"
#include "companions/shard/collapse/block_sorter.h"
#include "companions/shard/exchange/row_block.h"
#include "companions/shard/exchange/url_table.h"
#include "tests/companions/shard/frames_in_file.h"
#include "tests/companions/shard/random_rows.h"
#include "tools/config/replay_settings.h"
#include "tools/urls/query_list.h"
#include "tools/urls/request_collapse.h"
#include "tools/urls/request_selection.h"
#include "tools/urls/url_order.h"

#include <algorithm>
#include <map>

namespace {

struct OwnUrl {
    uint64_t count = 0;
    std::string own_method;
    std::vector<std::string> queries; // full URLs

    bool operator==(const OwnUrl&) const = default;
};

// What comes out: the URLs in their order, and the counters.
struct Outcome {
    std::vector<std::pair<std::string, OwnUrl>> urls;
    std::string counters;

    bool operator==(const Outcome&) const = default;
};

std::string counters(uint64_t redirected, uint64_t non_session, uint64_t with_secondary) {
    return std::to_string(redirected) + " " + std::to_string(non_session) + " " +
           std::to_string(with_secondary);
}

void forget_counters() {
    g_redirected_req = g_total_non_session_req = g_total_non_session_with_secondary_cookie = 0;
}

// As a run does it, in memory.
Outcome collapse_table(const RequestTable& table) {
    forget_counters();
    const CollapsedRequests collapsed = collapse_requests(
        table, select_requests(table, order_by_session(table)), is_query_list_wanted());
    Outcome outcome;
    for (const CollapsedUrl& url : collapsed.urls) {
        const RequestRow& first = table.rows[url.first_row];
        const std::string key(table.texts.urls.text(first.url));
        const char* const method = read_own_texts(first.own_texts).method;
        OwnUrl own = {url.count, method == nullptr ? "" : method, {}};
        if (is_query_list_wanted() && UrlKey(key).has_ignored_query()) {
            for (uint32_t i = url.queries_end - url.count; i < url.queries_end; ++i) {
                own.queries.emplace_back(
                    read_own_texts(table.rows[collapsed.queried[i]].own_texts).full_url);
            }
        }
        outcome.urls.emplace_back(key, own);
    }
    outcome.counters = counters(g_redirected_req, g_total_non_session_req,
                                g_total_non_session_with_secondary_cookie);
    return outcome;
}

void read_table(FrameReader& frames, std::map<std::string, OwnUrl>& urls) {
    UrlTableReader reader([&] { return frames.next(); });
    while (reader.next_url()) {
        const TabledUrl& url = reader.url();
        OwnUrl& own = urls[std::string(url.key)];
        own.own_method = own.count == 0 ? url.own_method : own.own_method;
        own.count += url.count;
        for (uint64_t left = url.query_count; left != 0; --left) {
            own.queries.push_back(std::string(UrlKey(url.key).url) +
                                  std::string(reader.next_query()));
        }
    }
}

// Joins the tables in their order. `row_count`: as the last frame tells it.
Outcome join_tables(FramesInFile& file, uint64_t& row_count) {
    const Frame last = file.frames().back();
    FrameReader frames = file.reader();
    std::map<std::string, OwnUrl> urls;
    for (uint64_t left = last.label.at("tables"); left != 0; --left) {
        read_table(frames, urls);
    }
    row_count = last.label.at("rows");
    Outcome outcome = {{urls.begin(), urls.end()},
                       counters(last.label.at("redirected"), last.label.at("non_session"),
                                last.label.at("non_session_with_secondary"))};
    std::sort(outcome.urls.begin(), outcome.urls.end(), [](const auto& a, const auto& b) {
        return stands_before(UrlKey(a.first), UrlKey(b.first));
    });
    return outcome;
}

// Takes excluded rows away.
void drop_rows(RequestTable& table, const std::vector<PlacedRow>& rows, const LoadingCuts& cuts) {
    RequestRows kept;
    for (const PlacedRow& row : rows) {
        if (!cuts.exclude(row.place)) {
            kept.push_back(row.row);
        }
    }
    table.rows = {};
    table.rows.add(std::move(kept));
}

void choose_settings(Choices& choices) {
    session_mode = choices.one_in(2) ? SESSION_MODE_COOKIE : SESSION_MODE_CLIENT_IP;
    auto_redirect_flag = !choices.one_in(4);
    ignore_non_session_urls = choices.one_in(2);
    ignore_query_flag = choices.one_in(2);
    dump_query_flag = !choices.one_in(4);
    kept_blocks_size = choices.of(std::array<size_t, 3>{1, 20'000, 100'000'000});
    kept_table_size = choices.of(std::array<size_t, 3>{1, 140'000, 100'000'000});
}

SettledInstance cuts_by_chance(Choices& choices) {
    SettledInstance settled = {};
    for (uint32_t end = 0; choices.one_in(2);) {
        const auto first = end + static_cast<uint32_t>(choices.below(3));
        end = first + 1 + static_cast<uint32_t>(choices.below(2));
        settled.cuts.push_back({first, end, static_cast<uint32_t>(choices.below(20))});
    }
    return settled;
}

void check_collapse(uint32_t seed) {
    Choices choices(seed);
    choose_settings(choices);
    RequestTable table = random_requests(choices, choices.below(kept_table_size == 1 ? 60 : 500),
                                         choices.of(std::array<size_t, 2>{6, 3000}));
    const std::vector<PlacedRow> rows = placed_rows(choices, table);
    const LoadingCuts cuts({cuts_by_chance(choices)});
    FramesInFile blocks;
    FrameWriter to_blocks = blocks.writer();
    write_blocks(choices, table.texts, rows, to_blocks);
    drop_rows(table, rows, cuts);
    const Outcome expected = collapse_table(table);
    forget_counters();
    FramesInFile tables;
    FrameReader from = blocks.reader();
    FrameWriter to = tables.writer();
    collapse_rows(from, cuts, "p", to);
    uint64_t row_count = 0;
    EXPECT_EQ(join_tables(tables, row_count), expected) << "seed " << seed;
    EXPECT_EQ(row_count, table.rows.size()) << "seed " << seed;
}

} // namespace

TEST(CollapseRows, GivesWhatARunMakesOfTheSameRequests) {
    run_in_child([] {
        for (uint32_t seed = 0; seed < 60 && !testing::Test::HasFailure(); ++seed) {
            check_collapse(seed);
        }
    });
}

TEST(CollapseRows, RefusesARequestThatComesTwice) {
    run_in_child([] {
        Choices choices(1);
        const RequestTable table = random_requests(choices, 50, 6);
        const std::vector<PlacedRow> rows = placed_rows(choices, table);
        FramesInFile blocks;
        FrameWriter to_blocks = blocks.writer();
        write_blocks(choices, table.texts, rows, to_blocks);
        write_blocks(choices, table.texts, {rows[20]}, to_blocks);
        FramesInFile tables;
        FrameReader from = blocks.reader();
        FrameWriter to = tables.writer();
        EXPECT_THROW(collapse_rows(from, LoadingCuts({}), "p", to), Failure);
    });
}

TEST(LoadingCuts, ExcludeRowsFromTheirPlacesOn) {
    SettledInstance first = {};
    first.cuts = {{2, 3, 5}, {3, 6, 0}};
    SettledInstance second = {};
    second.cuts = {{8, 9, 1}};
    const LoadingCuts cuts({first, second});
    for (const RequestPlace place : {RequestPlace{0, 9}, {2, 4}, {6, 0}, {7, 9}, {8, 0}, {9, 9}}) {
        EXPECT_FALSE(cuts.exclude(place)) << place.log_piece << " " << place.row;
    }
    for (const RequestPlace place : {RequestPlace{2, 5}, {2, 6}, {3, 0}, {5, 7}, {8, 1}}) {
        EXPECT_TRUE(cuts.exclude(place)) << place.log_piece << " " << place.row;
    }
    EXPECT_THROW(LoadingCuts({second, first}), Failure) << "not in order";
}
