#include "base/own_directory.h"

#include "base/inherited_rights.h"
#include "base/new_file.h"
#include "base/own_way.h"

#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace {

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
    OwnWay way(parent);
    return way.go_to_own(name) ? way.take_last() : FileDescriptor();
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

OwnDirectory::OwnDirectory(const std::string& path) : path_(path) {
    const auto [above, name] = split_last(path);
    const auto [start, name_above] = split_last(above);
    OwnWay way(FileDescriptor(open(start.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)));
    if (way.go_to_own(name_above) && way.go_to_own(name)) {
        descriptor_ = way.take_last();
        above_ = open_own_directory(way.take_last(), "."); // may be another than a link stood in
    }
}

OwnDirectory OwnDirectory::beside(const std::string& name) const {
    return {path_ + "/../" + name, open_own_directory(above_, name.c_str())};
}

OwnDirectory OwnDirectory::make_beside(const std::string& name, mode_t permissions) const {
    return {path_ + "/../" + name, make_own_directory(above_, name.c_str(), permissions)};
}

FileDescriptor OwnDirectory::create(const char* name, mode_t permissions) const {
    return create_new_file(descriptor(), name, permissions);
}

bool OwnDirectory::clear(const char* name) const {
    return clear_file(descriptor(), name);
}

FileDescriptor OwnDirectory::open_file(const char* name) const {
    return OwnWay(descriptor_).open_file(name);
}

bool OwnDirectory::remove(const char* name) const {
    return unlinkat(descriptor(), name, 0) == 0;
}
