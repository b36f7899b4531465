#include "companions/shard/exchange/url_table.h"

#include "base/failure.h"
#include "tests/companions/shard/frames_in_file.h"
#include "tests/unit_helpers.h"
#include "tools/urls/url_order.h"

#include <algorithm>
#include <map>
#include <string>

namespace {

struct OwnUrl {
    uint64_t count;
    std::string own_method;
    std::vector<std::string> queries;

    bool operator==(const OwnUrl&) const = default;
};

struct KeyOrder {
    bool operator()(const std::string& a, const std::string& b) const {
        return stands_before(UrlKey(a), UrlKey(b));
    }
};

using Table = std::map<std::string, OwnUrl, KeyOrder>;

std::string key_of(const char* method, const std::string& host, const std::string& url) {
    std::string key(method);
    key.resize(max_method_length);
    return key + host + '\0' + url;
}

Table random_table(Choices& choices) {
    Table table;
    for (size_t left = choices.below(100); left != 0; --left) {
        const char* const method = choices.of(std::array{"get", "post", "propfind12345678"});
        const std::string key = key_of(method, choices.text("ab.", 3), choices.text("/abc?", 6));
        OwnUrl url = {1 + choices.below(5), choices.one_in(3) ? "gEt" : "", {}};
        for (uint64_t i = 0; choices.one_in(2) && i != url.count; ++i) {
            url.queries.push_back(
                choices.text("q=&", choices.of(std::array{5U, 5U, 5U, 100'000U})));
        }
        if (url.queries.size() != url.count) {
            url.queries.clear();
        }
        table.emplace(key, url);
    }
    return table;
}

void write_table(const Table& table, FrameWriter& frames) {
    UrlTableWriter writer(frames, 7);
    for (const auto& [key, url] : table) {
        writer.add_url({key, url.count, url.own_method, url.queries.size()});
        for (const std::string& query : url.queries) {
            writer.add_query(query);
        }
    }
    writer.finish();
}

// `reads_all`: else only some of the queries.
Table read_table(FrameReader frames, bool reads_all) {
    Table table;
    UrlTableReader reader([&] { return frames.next(); });
    while (reader.next_url()) {
        const TabledUrl& url = reader.url();
        OwnUrl& read = table.emplace(url.key, OwnUrl{url.count, std::string(url.own_method), {}})
                           .first->second;
        for (uint64_t left = reads_all ? url.query_count : url.query_count / 2; left != 0; --left) {
            read.queries.emplace_back(reader.next_query());
        }
    }
    return table;
}

} // namespace

TEST(UrlTable, GivesBackWhatWasWritten) {
    for (uint32_t seed = 0; seed < 60; ++seed) {
        Choices choices(seed);
        Table table = random_table(choices);
        FramesInFile file;
        FrameWriter frames = file.writer();
        write_table(table, frames);
        EXPECT_EQ(read_table(file.reader(), true), table) << "seed " << seed;
        for (auto& [key, url] : table) {
            url.queries.resize(url.queries.size() / 2);
        }
        EXPECT_EQ(read_table(file.reader(), false), table) << "seed " << seed;
    }
}

TEST(UrlTable, HasFramesOfABoundedSizeThatTellTheirPlace) {
    FramesInFile file;
    FrameWriter frames = file.writer();
    const std::string key = key_of("get", "h", "/u?");
    Table table = {{key, {4000, "", std::vector<std::string>(4000, std::string(100, 'q'))}}};
    write_table(table, frames);
    const std::vector<Frame> parts = file.frames();
    ASSERT_GT(parts.size(), 5U);
    for (size_t i = 0; i < parts.size(); ++i) {
        EXPECT_LT(parts[i].payload.size(), url_frame_size + 200);
        EXPECT_EQ(parts[i].label.at("table"), 7);
        EXPECT_EQ(parts[i].label.at("part"), i);
        EXPECT_EQ(parts[i].label.at("is_last"), i + 1 == parts.size());
    }
}

TEST(UrlTable, IsRefusedWhenAPartIsMissing) {
    FramesInFile file;
    FrameWriter frames = file.writer();
    const std::string key = key_of("get", "h", "/u?");
    write_table({{key, {4000, "", std::vector<std::string>(4000, std::string(100, 'q'))}}}, frames);
    const std::vector<Frame> parts = file.frames();
    for (size_t missing = 0; missing < parts.size(); ++missing) {
        std::vector<Frame> rest = parts;
        rest.erase(rest.begin() + static_cast<ptrdiff_t>(missing));
        size_t next = 0;
        UrlTableReader reader([&]() -> std::optional<Frame> {
            return next == rest.size() ? std::nullopt : std::optional(rest[next++]);
        });
        EXPECT_THROW(while (reader.next_url()){}, Failure) << "part " << missing;
    }
}

TEST(UrlTable, IsRefusedWhenDamaged) {
    const auto read_all = [](const std::vector<TabledUrl>& urls) {
        FramesInFile file;
        FrameWriter frames = file.writer();
        UrlTableWriter writer(frames, 0);
        for (const TabledUrl& url : urls) {
            writer.add_url(url);
        }
        writer.finish();
        read_table(file.reader(), true);
    };
    const std::string a = key_of("get", "h", "/a");
    const std::string b = key_of("get", "h", "/b");
    EXPECT_NO_THROW(read_all({{a, 1, "", 0}, {b, 1, "", 0}}));
    EXPECT_THROW(read_all({{b, 1, "", 0}, {a, 1, "", 0}}), Failure) << "not in order";
    EXPECT_THROW(read_all({{a, 1, "", 0}, {a, 1, "", 0}}), Failure) << "the same one twice";
    EXPECT_THROW(read_all({{a, 0, "", 0}}), Failure) << "no requests";
    EXPECT_THROW(read_all({{a, 2, "", 1}}), Failure) << "too few queries";
    EXPECT_THROW(read_all({{a, 1, "", 1}}), Failure) << "no query behind its URL";
    EXPECT_THROW(read_all({{a, 1, "a-method-too-long", 0}}), Failure);
    EXPECT_THROW(read_all({{"get", 1, "", 0}}), Failure) << "no key";
}
