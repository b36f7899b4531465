#include "companions/shard/exchange/row_block.h"

#include "base/failure.h"
#include "companions/shard/cut/cut_rows.h"
#include "companions/shard/exchange/range_key.h"
#include "tests/companions/shard/frames_in_file.h"
#include "tests/companions/shard/random_rows.h"
#include "tools/config/replay_settings.h"

#include <algorithm>
#include <array>
#include <set>

namespace {

std::string text_of(const ExchangedRow& row) {
    const auto shown = [](const char* text) { return text == nullptr ? "-" : std::string(text); };
    return std::string(row.session) + "|" + std::string(row.url_key) + "|" +
           std::to_string(row.time) + "|" + std::to_string(row.place.log_piece) + "." +
           std::to_string(row.place.row) + "|" + std::to_string(row.is_redirect) + "|" +
           shown(row.own_texts.location) + "|" + shown(row.own_texts.full_url) + "|" +
           shown(row.own_texts.method) + "|" + std::to_string(row.own_texts.has_secondary_cookie);
}

// In the order of the frames.
std::vector<std::string> rows_in(FramesInFile& file) {
    std::vector<std::string> texts;
    for (Frame& frame : file.frames()) {
        RowBlockReader reader(std::move(frame));
        while (reader.next()) {
            texts.push_back(text_of(reader.row()));
        }
    }
    return texts;
}

std::vector<std::string> sorted(std::vector<std::string> texts) {
    std::sort(texts.begin(), texts.end());
    return texts;
}

// Keys of rows, as whoever divides the sessions chooses them, and others.
std::vector<std::string> keys_by_chance(Choices& choices, FramesInFile& blocks) {
    std::set<std::string> keys;
    for (const Frame& frame : blocks.frames()) {
        if (choices.one_in(20)) {
            const std::string digits = frame.label.at(choices.one_in(2) ? "first" : "last");
            keys.insert(key_of_hex(digits));
        }
    }
    if (choices.one_in(3)) {
        keys.insert(choices.text("a1\xe9", 3));
    }
    return {keys.begin(), keys.end()};
}

void expect_inside_range(Frame frame, const std::vector<std::string>& keys) {
    const size_t range = frame.label.at("range");
    RowBlockReader reader(std::move(frame));
    while (reader.next()) {
        const std::string key = range_key(reader.row().session, reader.row().time);
        EXPECT_TRUE(range == 0 || keys.at(range - 1) <= key);
        EXPECT_TRUE(range == keys.size() || key < keys.at(range));
    }
}

} // namespace

TEST(RowBlocks, GiveBackTheRowsAlsoWhenTheyWereCut) {
    run_in_child([] {
        for (uint32_t seed = 0; seed < 100 && !testing::Test::HasFailure(); ++seed) {
            Choices choices(seed);
            session_mode = choices.one_in(2) ? SESSION_MODE_COOKIE : SESSION_MODE_CLIENT_IP;
            ignore_query_flag = choices.one_in(2);
            const RequestTable table = random_requests(choices, choices.below(500), 6);
            const std::vector<PlacedRow> rows = placed_rows(choices, table);
            std::vector<std::string> expected;
            for (const PlacedRow& row : rows) {
                expected.push_back(text_of(exchanged_row(table.texts, row)));
            }
            FramesInFile blocks;
            FrameWriter to_blocks = blocks.writer();
            write_blocks(choices, table.texts, rows, to_blocks);
            EXPECT_EQ(sorted(rows_in(blocks)), sorted(expected)) << "seed " << seed;

            const std::vector<std::string> keys = keys_by_chance(choices, blocks);
            FramesInFile cut;
            FrameReader from = blocks.reader();
            FrameWriter to_cut = cut.writer();
            cut_rows(from, keys, to_cut);
            EXPECT_EQ(rows_in(cut), rows_in(blocks)) << "seed " << seed;
            for (Frame& frame : cut.frames()) {
                expect_inside_range(std::move(frame), keys);
            }
        }
    });
}

// A byte that was changed before the frame got its checksum: an error or other rows, no crash.
TEST(RowBlocks, SurviveAnyByte) {
    run_in_child([] {
        Choices choices(3);
        session_mode = SESSION_MODE_COOKIE;
        ignore_query_flag = 1;
        const RequestTable table = random_requests(choices, 60, 6);
        FramesInFile blocks;
        FrameWriter to_blocks = blocks.writer();
        std::vector<PlacedRow> rows = placed_rows(choices, table);
        sort_rows(table.texts, rows);
        RowBlockWriter writer(to_blocks, nlohmann::json::object());
        for (const PlacedRow& row : rows) {
            writer.add(exchanged_row(table.texts, row));
        }
        writer.finish();
        const Frame whole = blocks.frames().at(0);
        size_t refused = 0;
        for (size_t i = 0; i < whole.payload.size(); ++i) {
            for (const char c : {'\0', '\x01', '\x7f', '\x80', '\xff'}) {
                Frame damaged = whole;
                damaged.payload[i] = c;
                try {
                    RowBlockReader reader(std::move(damaged));
                    while (reader.next()) {
                        EXPECT_LE(text_of(reader.row()).size(), 2 * whole.payload.size());
                    }
                } catch (const Failure&) {
                    ++refused;
                }
            }
        }
        EXPECT_GT(refused, whole.payload.size());
    });
}
