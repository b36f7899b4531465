#include "base/own_directory.h"

#include "base/inherited_rights.h"
#include "base/new_file.h"

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace {

constexpr int read_only = O_RDONLY | O_NONBLOCK; // never waits

bool is_own(const struct stat& status) {
    return status.st_uid == geteuid() || status.st_uid == 0;
}

// The link itself, when `name` is an own link; else not open.
FileDescriptor open_own_link(int directory, const char* name) {
    FileDescriptor link(openat(directory, name, O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status;
    if (!link.is_open() || fstat(link.get(), &status) != 0) {
        return {};
    }
    if (!S_ISLNK(status.st_mode) || !is_own(status)) {
        errno = S_ISLNK(status.st_mode) ? EPERM : ENOTDIR;
        return {};
    }
    return link;
}

// Opens what an own link leads to. The link is read by its descriptor, so that nobody can put
// another one in its place.
FileDescriptor follow_own_link(int directory, const char* name, int flags) {
    const FileDescriptor link = open_own_link(directory, name);
    char target[PATH_MAX];
    if (!link.is_open()) {
        return {};
    }
    const ssize_t length = readlinkat(link.get(), "", target, sizeof target - 1);
    if (length <= 0) {
        return {};
    }
    target[length] = '\0';
    return FileDescriptor(openat(directory, target, flags | O_CLOEXEC));
}

// For a directory that was opened for looking up only.
bool loses_list(const FileDescriptor& directory) {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    const FileDescriptor opened(directory.is_open() ? openat(directory.get(), ".", flags) : -1);
    return opened.is_open() && pass_no_rights_on(opened.get());
}

// A path without "/" at its end, cut before its last part: what comes before it, with its "/", and
// the part.
std::pair<std::string, std::string> split_last(std::string_view path) {
    while (path.ends_with('/')) {
        path.remove_suffix(1);
    }
    const size_t part = path.rfind('/') + 1;
    return {std::string(path.substr(0, part)), std::string(path.substr(part))};
}

} // namespace

FileDescriptor open_own_directory(const FileDescriptor& parent, const char* name) {
    constexpr int flags = O_PATH | O_DIRECTORY;
    if (!parent.is_open()) {
        return {};
    }
    FileDescriptor directory(openat(parent.get(), name, flags | O_NOFOLLOW | O_CLOEXEC));
    struct stat status;
    if (!directory.is_open() && errno == ENOTDIR) { // so for a link
        return follow_own_link(parent.get(), name, flags);
    }
    if (directory.is_open() && (fstat(directory.get(), &status) != 0 || !is_own(status))) {
        directory.close();
        errno = EPERM;
    }
    return directory;
}

FileDescriptor make_own_directory(const FileDescriptor& parent, const char* name,
                                  mode_t permissions) {
    const bool is_new = mkdirat(parent.get(), name, permissions) == 0;
    if (!is_new && errno != EEXIST) {
        return {};
    }
    FileDescriptor directory = open_own_directory(parent, name);
    if (is_new) {
        return loses_list(directory) ? std::move(directory) : FileDescriptor();
    }
    if (!directory.is_open() && errno != EPERM) {
        errno = EEXIST; // as something else
    }
    return directory;
}

FileDescriptor open_own_file(int directory, const char* name) {
    FileDescriptor file(openat(directory, name, read_only | O_NOFOLLOW | O_CLOEXEC));
    struct stat status;
    if (file.is_open() &&
        (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) || !is_own(status))) {
        file.close();
        errno = EPERM;
    }
    return file;
}

OwnDirectory::OwnDirectory(const std::string& path) : path_(path) {
    const auto [above, name] = split_last(path);
    const auto [start, name_above] = split_last(above);
    const FileDescriptor first(open(start.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    const FileDescriptor second =
        open_own_directory(first, name_above.empty() ? "." : name_above.c_str());
    descriptor_ = open_own_directory(second, name.c_str());
}

OwnDirectory OwnDirectory::beside(const std::string& name) const {
    OwnDirectory other;
    other.path_ = path_ + "/../" + name;
    other.descriptor_ = open_own_directory(open_own_directory(descriptor_, ".."), name.c_str());
    return other;
}

OwnDirectory OwnDirectory::make_beside(const std::string& name, mode_t permissions) const {
    OwnDirectory other;
    other.path_ = path_ + "/../" + name;
    other.descriptor_ =
        make_own_directory(open_own_directory(descriptor_, ".."), name.c_str(), permissions);
    return other;
}

FileDescriptor OwnDirectory::create(const char* name, mode_t permissions) const {
    return create_new_file(descriptor(), name, permissions);
}

FileDescriptor OwnDirectory::open_file(const char* name) const {
    FileDescriptor file = open_own_file(descriptor(), name);
    if (file.is_open() || errno != ELOOP) {
        return file;
    }
    file = follow_own_link(descriptor(), name, read_only);
    struct stat status;
    const bool is_usable =
        file.is_open() && fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
    return is_usable ? std::move(file) : FileDescriptor();
}

bool OwnDirectory::remove(const char* name) const {
    return unlinkat(descriptor(), name, 0) == 0;
}
