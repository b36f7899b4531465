#pragma once

#include "base/own_directory.h"

#include <cstdint>
#include <string>
#include <string_view>

// How much may still be unpacked.
struct SizeBudget {
    uint64_t left; // bytes
    uint64_t limit;
};

// A log while it is written under another name than it will have. Unless it is kept, nothing of it
// stays.
class CopiedLog {
  public:
    // Fails when the file cannot be made.
    CopiedLog(const OwnDirectory& directory, const std::string& name, SizeBudget& budget);
    ~CopiedLog();
    CopiedLog(const CopiedLog&) = delete;
    CopiedLog& operator=(const CopiedLog&) = delete;

    // Fails when the disk is full or the budget used up.
    void append(std::string_view text);

    // Gives the log its name, with a line feed at its end if it lacks one.
    void keep();

    // The file, which is also read from.
    int descriptor() const { return file_.get(); }

  private:
    const OwnDirectory& directory_;
    std::string name_;
    std::string working_name_;
    SizeBudget& budget_;
    FileDescriptor file_;
    char last_character_ = '\n';
    bool is_kept_ = false;
};
