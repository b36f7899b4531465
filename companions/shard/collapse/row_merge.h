#pragma once

#include "companions/shard/exchange/row_block.h"

#include <deque>
#include <functional>
#include <optional>

// Rows of blocks that follow each other in the order of rows.
class RowStream {
  public:
    // `next_block` gives the blocks, or nothing when there are no more.
    explicit RowStream(std::function<std::optional<Frame>()> next_block)
        : next_block_(std::move(next_block)) {}

    // Goes on to the next row; returns false at the end.
    bool next();

    // The row; its texts stay as they are until the next call of next.
    const ExchangedRow& row() const { return block_->row(); }

  private:
    std::function<std::optional<Frame>()> next_block_;
    std::optional<RowBlockReader> block_;
};

// Calls `take` with each row of all streams, in the order of session, time and place. Fails when a
// block is damaged or a row comes twice.
void merge_rows(std::deque<RowStream>& streams,
                const std::function<void(const ExchangedRow&)>& take);
