#pragma once

#include "base/file_descriptor.h"
#include "companions/shard/exchange/exchanged_row.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

// Texts of requests that wait, by their places. What does not fit in memory is kept in a file
// without a name.
class WaitingTexts {
  public:
    void put(RequestPlace place, std::string text);

    // Gives a text that was put and forgets it. Fails when there is none, or the file cannot be
    // read.
    std::string take(RequestPlace place);

    bool is_empty() const { return texts_.empty(); }

  private:
    struct Kept {
        std::string text;
        uint64_t offset; // in the file, when it is kept there
        size_t size;
        bool is_in_file;
    };

    uint64_t write(const std::string& text);
    std::string read(const Kept& kept);

    std::map<RequestPlace, Kept> texts_;
    size_t size_in_memory_ = 0; // bytes
    FileDescriptor file_;
    uint64_t file_size_ = 0;
    size_t count_in_file_ = 0;
};

// Bytes of texts that are kept in memory at most. Tests set it.
extern size_t kept_texts_size;
