#pragma once

#include "companions/shard/exchange/frame.h"
#include "companions/shard/exchange/spill_file.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

// Tables of unique URLs (exchange/url_table.h) that wait on disk for each other.
class TableSpool {
  public:
    TableSpool() : file_(open_spill_file()) {}

    // Takes the next frame of kind "urls": of the table at work, or the first of another one. Fails
    // when the disk is full.
    void add(const Frame& frame);

    // In the order in which they came.
    size_t table_count() const { return tables_.size(); }

    // A frame of a table; nothing behind the last.
    std::optional<Frame> part(size_t table, size_t number) const;

  private:
    struct Place {
        uint64_t offset;
        uint32_t label_size;
        uint32_t payload_size;
    };

    FileDescriptor file_;
    uint64_t end_ = 0; // bytes written
    std::vector<std::vector<Place>> tables_;
};
