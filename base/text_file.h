#pragma once

#include "base/file_descriptor.h"
#include "base/line_reader.h"

#include <string>

// A file that is read line by line, and closed at the end of its scope.
class TextFile {
  public:
    // `line_size`: as for LineReader, which cuts the lines.
    TextFile(const std::string& path, size_t line_size);

    // The same for a file that is open; `path` names it in messages.
    TextFile(FileDescriptor file, const std::string& path, size_t line_size);

    bool is_open() const { return file_.is_open(); }

    // Gives the next line, valid until the next call; false at the end of the file. Fails when the
    // file cannot be read to its end.
    bool next(LineText& line);

  private:
    std::string path_;
    FileDescriptor file_;
    LineReader lines_;
};
