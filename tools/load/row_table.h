#pragma once

#include "tools/parse/request_interner.h"

#include <cstdint>
#include <utility>
#include <vector>

// The rows of all batches as one table. They stay in the memory that they were written to.
class RowTable {
  public:
    // Puts rows behind those that are there.
    void add(RequestRows rows);

    uint32_t size() const { return size_; }

    // The row with this index, which must be below size().
    const RequestRow& operator[](uint32_t index) const {
        const Part* part = &parts_[first_part_[index / rows_a_step]];
        while (part->end <= index) {
            ++part;
        }
        return part->rows[index - part->begin];
    }
    RequestRow& operator[](uint32_t index) {
        return const_cast<RequestRow&>(std::as_const(*this)[index]);
    }

    // Calls `use` with each index and row, in their order.
    template <typename Use> void for_each(const Use& use) const {
        for (const Part& part : parts_) {
            uint32_t index = part.begin;
            for (const RequestRow& row : part.rows) {
                use(index++, row);
            }
        }
    }

  private:
    static constexpr uint32_t rows_a_step = 4096;

    struct Part {
        uint32_t begin; // index of the first row
        uint32_t end;
        RequestRows rows; // not empty
    };

    std::vector<Part> parts_;
    std::vector<uint32_t> first_part_; // of every 4,096th row: the part that it is in
    uint32_t size_ = 0;
};
