#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

// A descriptor of an open file that is closed at the end of its scope.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {} // -1: not open
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        close();
        descriptor_ = other.release();
        return *this;
    }
    ~FileDescriptor() { close(); }

    int get() const { return descriptor_; }
    bool is_open() const { return descriptor_ != -1; }

    // Gives the descriptor to the caller, who closes it.
    int release() { return std::exchange(descriptor_, -1); }

    // Returns whether it was open and the system reports no loss.
    bool close() { return is_open() && ::close(release()) == 0; }

  private:
    int descriptor_ = -1;
};

// Makes a stream of an open file, for the `mode` of fopen; null when it is not open or no stream
// can be had.
FILE* open_stream(FileDescriptor file, const char* mode);

// The whole file, from its start; nothing when it is longer than `max_size` bytes or cannot be
// read.
std::optional<std::string> read_whole(const FileDescriptor& file, size_t max_size);

// Whether this very file stands under `name` in an open directory.
bool is_at(int directory, const char* name, const FileDescriptor& file);

// Writes all of `text`, however often the system takes only a part of it or is interrupted. Returns
// false when it cannot.
bool write_whole(int descriptor, std::string_view text);
