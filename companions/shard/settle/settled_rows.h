#pragma once

#include "base/text_arena.h"
#include "companions/shard/exchange/frame.h"
#include "companions/shard/exchange/row_block.h"

#include <cstddef>
#include <string_view>
#include <vector>

// Rows of requests that have waited, as they are settled, into sorted runs of rows frames.
class SettledRows {
  public:
    explicit SettledRows(FrameWriter& frames) : frames_(frames) {}

    // `request`: what append_request has written. `session`: empty when it got none.
    void add(RequestPlace place, std::string_view session, std::string_view request);

    // Writes out what is left.
    void finish();

  private:
    struct Row {
        std::string_view session;
        std::string_view request;
        uint64_t time;
        RequestPlace place;
    };

    std::string_view keep(std::string_view text);

    FrameWriter& frames_;
    TextArena texts_;
    std::vector<Row> rows_;
};

// Bytes of rows that are sorted at a time, about. Tests set it.
extern size_t settled_run_size;
