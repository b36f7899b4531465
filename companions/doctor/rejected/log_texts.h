#pragma once

#include "base/file_descriptor.h"
#include "tools/load/log_pieces.h"

#include <cstdint>
#include <string>
#include <string_view>

// Texts of lines in a piece of a log that has been loaded, read once more.

// Not open when the log is gone.
FileDescriptor open_log_again(const LogPiece& piece);

struct LogText {
    std::string_view text;         // of any characters, NUL included, without the line end
    const char* missing = nullptr; // why there is none; null: there is one
};

class LogTexts {
  public:
    // `size`: bytes that are needed of a text, which may be cut behind them.
    LogTexts(const LogPiece& piece, size_t size);

    // The text of the line at this offset (as in LineNote), to be asked for in ascending order. It
    // lives until the next call. The log may have changed since it was loaded, and so the text.
    LogText at(uint32_t offset);

  private:
    bool read(uint64_t offset);

    const LogPiece& piece_;
    FileDescriptor file_;
    size_t size_;
    std::string buffer_;
    uint64_t buffer_offset_ = 0; // in the file
};
