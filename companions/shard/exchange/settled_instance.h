#pragma once

#include "companions/shard/exchange/exchanged_row.h"
#include "companions/shard/exchange/frame.h"
#include "companions/shard/plan/plan.h"
#include "tools/parse/parsing_thread.h"

#include <cstdint>
#include <string>
#include <vector>

// What loading an instance came to, once its events are settled, as a frame of kind "settled". The
// label tells "instance", the totals "total_req", "bad_req" and "time_filtered_req" (see
// threadCounter), and "rows", how many requests were accepted. Payload, in packed numbers: the
// count of cuts, and first log piece, end and rows of each, in the order of log pieces.

// Log pieces [first, end) of each of which only the first `rows` rows count: loading ended there,
// by a line budget or because no more requests could wait.
struct LoadingCut {
    uint32_t first;
    uint32_t end;
    uint32_t rows;
};

struct SettledInstance {
    int32_t instance;
    threadCounter counters;
    uint64_t row_count; // of rows that count
    std::vector<LoadingCut> cuts;
};

void write_settled(const SettledInstance& settled, FrameWriter& frames);

// Fails when the frame is damaged or of another kind.
SettledInstance read_settled(const Frame& frame);

// Of all instances of the plan, in order, from the frames of kind "settled" in these files. Fails
// when an instance is missing or there twice.
std::vector<SettledInstance> read_settled_files(const Plan& plan,
                                                const std::vector<std::string>& paths);

// The cuts of all instances.
class LoadingCuts {
  public:
    explicit LoadingCuts(const std::vector<SettledInstance>& instances);

    // Whether the row was not loaded.
    bool exclude(RequestPlace place) const;

  private:
    std::vector<LoadingCut> cuts_; // in order
};
