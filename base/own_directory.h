#pragma once

#include "base/file_descriptor.h"

#include <string>
#include <sys/types.h>
#include <utility>

// A directory that holds files of this process's user while other users may write into it and into
// the one above it, too. What others plant there (links, pipes, files of theirs) is neither
// followed nor waited for nor believed: everything goes by the directory's descriptor. What "own"
// means is_own says.
class OwnDirectory {
  public:
    OwnDirectory() = default; // none

    // Opens a directory by its absolute path of at least two parts. The last two have to be own
    // directories, or own links (see OwnWay) to own directories; otherwise it is not open, and
    // errno says why.
    explicit OwnDirectory(const std::string& path);

    bool is_open() const { return descriptor_.is_open(); }
    int descriptor() const { return descriptor_.get(); }
    const std::string& path() const { return path_; } // as given

    // The directory `name` in the one in which this one stood when it was opened, wherever somebody
    // has moved it since. Both have to be as the last two parts of a path. The result has itself
    // none beside it.
    OwnDirectory beside(const std::string& name) const;

    // Makes the directory `name` there, with `permissions` less the process's mask, unless there is
    // one, and opens it under the same conditions.
    OwnDirectory make_beside(const std::string& name, mode_t permissions) const;

    // Creates a file anew, as create_new_file does.
    FileDescriptor create(const char* name, mode_t permissions) const;

    // Removes or at least empties a file, as clear_file does.
    bool clear(const char* name) const;

    // Opens an own regular file, or the one that own links lead to, for reading. Not open when
    // there is none.
    FileDescriptor open_file(const char* name) const;

    // Returns false, with errno set, when the file cannot be removed, for instance as there is
    // none.
    bool remove(const char* name) const;

  private:
    OwnDirectory(std::string path, FileDescriptor descriptor)
        : path_(std::move(path)), descriptor_(std::move(descriptor)) {}

    std::string path_;
    FileDescriptor descriptor_;
    FileDescriptor above_;
};

// Opens the directory `name` in `parent` for looking up what is in it: an own directory, or the one
// that own links lead to. Not open, with errno set, when there is none.
FileDescriptor open_own_directory(const FileDescriptor& parent, const char* name);

// Makes the directory `name` in `parent` with `permissions` less the process's mask, unless it is
// there, and opens it likewise. A new one passes no access control list on to what is made in it.
FileDescriptor make_own_directory(const FileDescriptor& parent, const char* name,
                                  mode_t permissions);
