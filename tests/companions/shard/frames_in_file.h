#pragma once

#include "companions/shard/exchange/frame.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <optional>
#include <unistd.h>
#include <vector>

// Frames of plan "p" by way of an unnamed file.
class FramesInFile {
  public:
    FramesInFile() : file_(std::tmpfile()) {}
    ~FramesInFile() { std::fclose(file_); }
    FramesInFile(const FramesInFile&) = delete;
    FramesInFile& operator=(const FramesInFile&) = delete;

    FrameWriter writer() { return {fileno(file_), "p"}; }

    // From the start.
    FrameReader reader(StreamEnd end = StreamEnd::bare) {
        lseek(fileno(file_), 0, SEEK_SET);
        return {fileno(file_), "p", end};
    }

    std::vector<Frame> frames() {
        FrameReader from = reader();
        std::vector<Frame> all;
        while (std::optional<Frame> frame = from.next()) {
            all.push_back(std::move(*frame));
        }
        return all;
    }

  private:
    FILE* file_;
};
