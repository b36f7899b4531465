#pragma once

#include "base/file_descriptor.h"

#include <cstdio>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

// A file that the user asks for, whole or not at all: written beside the place where it is to stand
// and then put there, so that what stood there stays until then.
class OutputFile {
  public:
    // `path`: where it is to stand. Fails when its directory cannot be written to, or when
    // something else than a file stands there.
    explicit OutputFile(const std::string& path);

    // Writes all of the parts, one after the other, with permission 0666 less the process's mask.
    // Fails, and leaves everything as it was, when it cannot.
    void write(std::initializer_list<std::string_view> parts) const;

    // The same with what `write_text` writes into a stream. Whatever it throws leaves everything as
    // it was, too; a std::system_error is one of the file.
    void write(const std::function<void(FILE*)>& write_text) const;

  private:
    [[noreturn]] void fail_to_write() const; // by errno

    std::string path_; // as given
    std::string name_; // in the directory
    FileDescriptor directory_;
};
