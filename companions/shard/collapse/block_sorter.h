#pragma once

#include "base/file_descriptor.h"
#include "companions/shard/collapse/row_merge.h"
#include "companions/shard/exchange/frame.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// Brings the rows of blocks that come in any order into the order of session, time and place. Keeps
// blocks in memory up to a limit; then their rows go in order to a file without a name, and such
// files are joined when there are many.
class BlockSorter {
  public:
    explicit BlockSorter(std::string plan_id) : plan_id_(std::move(plan_id)) {}

    void add(Frame block);

    // Calls `take` with each row in order. To be called once, after the last block. Fails as
    // merge_rows does.
    void take_all(const std::function<void(const ExchangedRow&)>& take);

  private:
    struct Run {
        FileDescriptor file;
        unsigned level; // how often its rows have been written
    };

    void spill();
    void join_runs(size_t count);
    void write_run(std::deque<RowStream> streams, unsigned level);
    void add_blocks(std::deque<RowStream>& streams);
    void add_runs(std::deque<RowStream>& streams, size_t first) const;

    std::string plan_id_;
    std::vector<Frame> blocks_;
    size_t size_ = 0;       // of these, bytes, about
    std::vector<Run> runs_; // of falling levels
};

// Bytes of blocks that are kept in memory at most, about. Tests set it.
extern size_t kept_blocks_size;
