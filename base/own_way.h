#pragma once

#include "base/file_descriptor.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A way from directory to directory that no other user can lead elsewhere: every link on it, also
// in what another link leads to, has to be an own one (see is_own). The directories are looked up
// one by one and kept open, so that the way back is that on which one has come, wherever somebody
// moves them meanwhile.
class OwnWay {
  public:
    explicit OwnWay(const FileDescriptor& start); // an open directory

    // Goes on along a path. Returns false, with errno set, when a part of it is neither a directory
    // nor an own link to one; then the way is of no further use.
    bool go(std::string_view path);

    // As `go`, but the directory in which it ends has to be an own one, too.
    bool go_to_own(std::string_view path);

    // Takes the last directory off the way, for looking up what is in it. Not open when there is
    // none left.
    FileDescriptor take_last();

    // Opens the file at the end of a path, when it is an own regular one, for reading and without
    // waiting. Not open, with errno set, when there is none.
    FileDescriptor open_file(std::string path);

  private:
    int here() const { return directories_.back().get(); }
    bool take_step(const std::string& part);
    void step_back();
    std::optional<std::string> target_of(const FileDescriptor& link);

    std::vector<FileDescriptor> directories_; // not empty before they are taken
    int link_count_ = 0;
};
