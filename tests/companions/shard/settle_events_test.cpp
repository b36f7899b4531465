#include "companions/shard/settle/settle_events.h"

#include "base/failure.h"
#include "companions/shard/exchange/event_records.h"
#include "companions/shard/exchange/row_block.h"
#include "companions/shard/exchange/settled_instance.h"
#include "companions/shard/settle/settled_rows.h"
#include "companions/shard/settle/waiting_texts.h"
#include "tests/companions/shard/frames_in_file.h"
#include "tests/support/test_installation.h"
#include "tests/unit_helpers.h"
#include "tools/config/log_files.h"
#include "tools/config/replay_settings.h"
#include "tools/load/input_files.h"
#include "tools/load/log_pieces.h"

#include <map>

namespace {

constexpr uint32_t pieces_a_log = 4;
constexpr uint64_t bytes_a_piece = 1000;

struct OwnEvent {
    bool waits;
    uint32_t row;
    std::string akaau_id;
    std::string session; // that the response sets
};

using Places = std::map<RequestPlace, std::string>; // sessions of requests that have waited

// Two instances of two logs each, and what happened in their pieces.
struct RandomEvents {
    Plan plan = {};
    std::vector<std::vector<OwnEvent>> pieces;
};

RandomEvents random_events(Choices& choices) {
    RandomEvents events;
    log_piece_size = bytes_a_piece;
    num_al_files = 0;
    for (int i = 0; i < 4; ++i) {
        static char name[] = "no/such/log";
        seq_file_path[num_al_files++] = {name, 0, 0, 0, i / 2};
        PlannedLog log = {};
        log.size = pieces_a_log * bytes_a_piece;
        log.instance = i / 2;
        events.plan.logs.push_back(log);
    }
    g_num_instance = 2;
    events.pieces.resize(events.plan.logs.size() * pieces_a_log);
    for (std::vector<OwnEvent>& piece : events.pieces) {
        for (uint32_t row = 0; row < 40; ++row) {
            if (choices.one_in(2)) {
                const bool waits = !choices.one_in(3);
                piece.push_back({waits, row, "=k" + std::to_string(choices.below(9)),
                                 waits ? "" : choices.text("ab", 2)});
            }
        }
    }
    return events;
}

// Each instance by itself, request by request.
Places plain_settling(const RandomEvents& events) {
    Places sessions;
    std::multimap<std::string, RequestPlace> waiting;
    for (uint32_t i = 0; i < events.pieces.size(); ++i) {
        if (i == 2 * pieces_a_log) {
            waiting.clear();
        }
        for (const OwnEvent& event : events.pieces[i]) {
            if (event.waits) {
                waiting.emplace(event.akaau_id, RequestPlace{i, event.row});
                sessions[{i, event.row}] = "";
                continue;
            }
            const auto [begin, end] = waiting.equal_range(event.akaau_id);
            for (auto receiver = begin; receiver != end; ++receiver) {
                sessions[receiver->second] = event.session;
            }
            waiting.erase(begin, end);
        }
    }
    return sessions;
}

std::string own_key(uint32_t piece, uint32_t row) {
    return std::string("get") + std::string(max_method_length - 3, '\0') + "host" + '\0' + "/" +
           std::to_string(piece) + "." + std::to_string(row);
}

// Begins a new frame now and then.
void write_events(Choices& choices, const RandomEvents& events, const std::vector<uint32_t>& pieces,
                  FrameWriter& frames) {
    EventFrameWriter writer(frames);
    for (const uint32_t i : pieces) {
        const std::vector<OwnEvent>& piece = events.pieces[i];
        if (choices.one_in(3)) {
            writer.finish();
        }
        writer.add_piece({.log_piece = i,
                          .line_count = 50,
                          .counters = {.total_req = 45, .time_filtered_req = 2, .bad_req = 3},
                          .row_count = 40,
                          .has_line_pieces = false},
                         events.plan.logs[i / pieces_a_log].instance, piece.size());
        for (const OwnEvent& event : piece) {
            const std::string key = own_key(i, event.row);
            ExchangedRow request = {};
            request.session = event.session;
            request.url_key = key;
            request.place = {i, event.row};
            request.time = event.row % 3;
            request.own_texts.has_secondary_cookie = event.waits;
            writer.add_event({event.waits, event.row + 1, event.akaau_id, request});
        }
    }
    writer.finish();
}

std::vector<uint32_t> all_pieces(const RandomEvents& events) {
    std::vector<uint32_t> pieces(events.pieces.size());
    for (uint32_t i = 0; i < pieces.size(); ++i) {
        pieces[i] = i;
    }
    return pieces;
}

void settle(Choices& choices, const RandomEvents& events, const std::vector<uint32_t>& pieces,
            const std::vector<int32_t>& instances, FramesInFile& settled) {
    FramesInFile file;
    FrameWriter writer = file.writer();
    write_events(choices, events, pieces, writer);
    FrameReader from = file.reader();
    FrameWriter to = settled.writer();
    settle_events(events.plan, instances, from, to);
}

// Adds the rows of a block to `sessions`.
void read_block(Frame block, Places& sessions) {
    RowBlockReader reader(std::move(block));
    while (reader.next()) {
        const ExchangedRow& row = reader.row();
        EXPECT_EQ(row.url_key, own_key(row.place.log_piece, row.place.row));
        EXPECT_EQ(row.time, row.place.row % 3);
        EXPECT_TRUE(row.own_texts.has_secondary_cookie);
        EXPECT_TRUE(sessions.emplace(row.place, row.session).second) << "a row came twice";
    }
}

void check_settling(uint32_t seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Choices choices(seed);
    session_mode = SESSION_MODE_COOKIE;
    kept_texts_size = choices.of(std::array<size_t, 3>{0, 500, 1'000'000});
    settled_run_size = choices.of(std::array<size_t, 3>{0, 70'000, 1'000'000});
    const RandomEvents events = random_events(choices);
    FramesInFile settled;
    settle(choices, events, all_pieces(events), {}, settled);
    Places sessions;
    int32_t instances = 0;
    for (Frame& frame : settled.frames()) {
        if (frame.kind == FrameKind::rows) {
            read_block(std::move(frame), sessions);
            continue;
        }
        const SettledInstance instance = read_settled(frame);
        EXPECT_EQ(instance.instance, instances++);
        EXPECT_EQ(instance.row_count, 40 * 2 * pieces_a_log);
        EXPECT_EQ(instance.counters.total_req, 45 * 2 * pieces_a_log);
        EXPECT_EQ(instance.counters.bad_req, 3 * 2 * pieces_a_log);
        EXPECT_EQ(instance.counters.time_filtered_req, 2 * 2 * pieces_a_log);
        EXPECT_TRUE(instance.cuts.empty());
    }
    EXPECT_EQ(instances, 2);
    EXPECT_EQ(sessions, plain_settling(events));
}

} // namespace

TEST(SettleEvents, GivesEachInstancesSessionsToThoseThatWait) {
    run_in_child([] {
        for (uint32_t seed = 0; seed < 60 && !testing::Test::HasFailure(); ++seed) {
            check_settling(seed);
        }
    });
}

TEST(SettleEvents, RefusesLogPiecesThatAreMissingOrNotInOrder) {
    run_in_child([] {
        session_mode = SESSION_MODE_COOKIE;
        Choices choices(1);
        const RandomEvents events = random_events(choices);
        const std::vector<uint32_t> whole = all_pieces(events);
        for (size_t i = 0; i < whole.size(); ++i) {
            const auto place = static_cast<ptrdiff_t>(i);
            FramesInFile settled;
            std::vector<uint32_t> wrong = whole;
            wrong.erase(wrong.begin() + place);
            EXPECT_THROW(settle(choices, events, wrong, {}, settled), Failure) << i << " missing";
            wrong.insert(wrong.begin() + place, 2, whole[i]);
            EXPECT_THROW(settle(choices, events, wrong, {}, settled), Failure) << i << " twice";
        }
        std::vector<uint32_t> swapped = whole;
        std::swap(swapped[1], swapped[2]);
        FramesInFile settled;
        EXPECT_THROW(settle(choices, events, swapped, {}, settled), Failure);
    });
}

TEST(SettleEvents, TakesSomeInstancesByThemselves) {
    run_in_child([] {
        session_mode = SESSION_MODE_COOKIE;
        Choices choices(1);
        const RandomEvents events = random_events(choices);
        FramesInFile settled;
        settle(choices, events, all_pieces(events), {1}, settled);
        Places sessions;
        for (Frame& frame : settled.frames()) {
            if (frame.kind == FrameKind::rows) {
                read_block(std::move(frame), sessions);
            } else {
                EXPECT_EQ(read_settled(frame).instance, 1);
            }
        }
        Places expected = plain_settling(events);
        expected.erase(expected.begin(), expected.lower_bound({2 * pieces_a_log, 0}));
        EXPECT_EQ(sessions, expected);
        EXPECT_THROW(settle(choices, events, all_pieces(events), {2}, settled), Failure);
    });
}

// As a run ends loading: the request that finds no room does not count, nor does anything behind.
TEST(SettleEvents, EndsAnInstanceWhereNoMoreRequestsCanWait) {
    TestInstallation installation;
    installation.add_settings("USER_SESSION_KEY cookie\nCOOKIE_NAME JSESSIONID\n"
                              "AL_FIELD REQUEST_COOKIE 7\nAL_FIELD SET_COOKIE 8\n");
    const std::string known = "- - - [1/Oct/2000:1:1:1 +0] \"GET /k 1\" 200 JSESSIONID=S -\n";
    const std::string waits = "- - - [1/Oct/2000:1:1:1 +0] \"GET /w 1\" 200 akaau=K -\n";
    std::string log;
    for (int i = 0; i < 250'000; ++i) {
        log += waits;
    }
    installation.write_logs({log + known + waits + known, known});
    for (const std::string pieces : {"0", "0 1 2 3 4 5 6"}) {
        const size_t count = (pieces.size() + 1) / 2;
        const RunResult job = installation.run_program(
            "/bin/sh", {"-c", "S=" ZVR_SHARD_PATH "; set -e; $S plan -s web --pieces " +
                                  std::to_string(count) + " -o p; $S load --plan p " + pieces +
                                  " > l; $S settle --plan p < l > s;"
                                  " /bin/cat l s | $S collapse --plan p --settled s > c"});
        ASSERT_EQ(job.status, 0) << job.errors;
        const std::string settled = installation.read("s");
        EXPECT_NE(settled.find("\"rows\":250001,"), std::string::npos) << count << " pieces";
        EXPECT_NE(settled.find("\"total_req\":250002}"), std::string::npos) << count << " pieces";
        const std::string collapsed = installation.read("c");
        EXPECT_NE(collapsed.find("\"rows\":250001,"), std::string::npos) << count << " pieces";
        EXPECT_NE(collapsed.find("\"non_session\":250000,"), std::string::npos);
    }
}
