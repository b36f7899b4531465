#pragma once

#include "base/own_directory.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

// A result file while it is written, through a large buffer. A write that fails is remembered until
// close tells, so that a file is known to be whole or known not to be.
class ResultFile {
  public:
    ResultFile() = default;
    ~ResultFile();
    ResultFile(const ResultFile&) = delete;
    ResultFile& operator=(const ResultFile&) = delete;

    // Creates the file anew in `directory`, with permission 0666 less the process's mask. Returns
    // false when that fails.
    bool create(const OwnDirectory& directory, const char* name);

    bool is_open() const { return file_.is_open(); }
    bool has_failed() const { return has_failed_; }

    void append(std::string_view text);
    void append(char c) { append(std::string_view(&c, 1)); }
    void append_unsigned(uint64_t number);
    void append_signed(int64_t number);

    // Writes `text` over what stands at the start of the file.
    void overwrite_start(std::string_view text);

    // Writes out what is buffered, notes the state in which the file is left, and closes it.
    // Returns whether all of it was written.
    bool close();

  private:
    void flush();
    void write_all(std::string_view text);

    FileDescriptor file_;
    std::string name_;
    bool has_failed_ = false;
    size_t used_ = 0;
    std::unique_ptr<char[]> buffer_;
};
