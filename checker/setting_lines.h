#pragma once

#include "base/file_descriptor.h"

#include <string>
#include <vector>

// The lines of a settings file, as the tool reads them.
class SettingLines {
  public:
    // Returns false when the file cannot be read.
    bool read(const FileDescriptor& file);

    // The lines that may have a say in what complete_url.list holds, in their order: all but
    // comments, empty lines and the keywords that are known to have none.
    std::vector<std::string> loading_lines() const;

    // Value of the keyword's last line as a number; `absent` when there is no such line.
    int number(const char* keyword, int absent) const;

  private:
    std::vector<std::string> lines_;
};
