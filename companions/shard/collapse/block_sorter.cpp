#include "companions/shard/collapse/block_sorter.h"

#include "companions/shard/exchange/spill_file.h"

#include <unistd.h>
#include <utility>

size_t kept_blocks_size = size_t{96} << 20;

namespace {

constexpr size_t block_overhead = 2048; // bytes that even a small block takes, rather too many
constexpr size_t max_joined_runs = 32;  // each has a block in memory while they are joined

} // namespace

void BlockSorter::add(Frame block) {
    size_ += block.payload.size() + block_overhead;
    blocks_.push_back(std::move(block));
    if (size_ >= kept_blocks_size) {
        spill();
    }
}

void BlockSorter::take_all(const std::function<void(const ExchangedRow&)>& take) {
    while (runs_.size() > max_joined_runs) {
        join_runs(max_joined_runs);
    }
    std::deque<RowStream> streams;
    add_runs(streams, 0);
    add_blocks(streams);
    merge_rows(streams, take);
}

void BlockSorter::spill() {
    std::deque<RowStream> streams;
    add_blocks(streams);
    write_run(std::move(streams), 0);
    blocks_.clear();
    size_ = 0;
    while (runs_.size() >= max_joined_runs &&
           runs_[runs_.size() - max_joined_runs].level == runs_.back().level) {
        join_runs(max_joined_runs);
    }
}

// Makes one of the last runs, which are the short ones.
void BlockSorter::join_runs(size_t count) {
    const size_t first = runs_.size() - count;
    std::deque<RowStream> streams;
    add_runs(streams, first);
    write_run(std::move(streams), runs_[first].level + 1);
    runs_.erase(runs_.begin() + static_cast<ptrdiff_t>(first), runs_.end() - 1);
}

void BlockSorter::write_run(std::deque<RowStream> streams, unsigned level) {
    Run run = {open_spill_file(), level};
    FrameWriter frames(run.file.get(), plan_id_, spill_directory());
    RowBlockWriter writer(frames, nlohmann::json::object());
    merge_rows(streams, [&](const ExchangedRow& row) { writer.add(row); });
    writer.finish();
    frames.end();
    lseek(run.file.get(), 0, SEEK_SET);
    runs_.push_back(std::move(run));
}

void BlockSorter::add_blocks(std::deque<RowStream>& streams) {
    for (Frame& block : blocks_) {
        streams.emplace_back([left = &block]() mutable -> std::optional<Frame> {
            Frame* const next = std::exchange(left, nullptr);
            return next == nullptr ? std::nullopt : std::optional(std::move(*next));
        });
    }
}

void BlockSorter::add_runs(std::deque<RowStream>& streams, size_t first) const {
    for (size_t i = first; i < runs_.size(); ++i) {
        streams.emplace_back(
            [frames = FrameReader(runs_[i].file.get(), plan_id_, StreamEnd::marked)]() mutable {
                return frames.next();
            });
    }
}
