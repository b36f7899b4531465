#include "base/own_way.h"

#include "base/own_file.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <utility>

namespace {

constexpr int max_links = 40; // as the system has it

// Nothing is followed.
FileDescriptor look_up(int directory, const char* name) {
    return FileDescriptor(openat(directory, name, O_PATH | O_NOFOLLOW | O_CLOEXEC));
}

} // namespace

OwnWay::OwnWay(const FileDescriptor& start) {
    directories_.emplace_back(fcntl(start.get(), F_DUPFD_CLOEXEC, 0));
}

bool OwnWay::go(std::string_view path) {
    if (path.starts_with('/')) {
        directories_.clear();
        directories_.push_back(look_up(AT_FDCWD, "/"));
    }
    while (!path.empty()) {
        const size_t size = std::min(path.find('/'), path.size());
        if (size > 0 && !take_step(std::string(path.substr(0, size)))) {
            return false;
        }
        path.remove_prefix(std::min(size + 1, path.size()));
    }
    return true;
}

bool OwnWay::go_to_own(std::string_view path) {
    struct stat status;
    if (!go(path) || fstat(here(), &status) != 0) {
        return false;
    }
    if (!is_own(status)) {
        errno = EPERM;
        return false;
    }
    return true;
}

FileDescriptor OwnWay::take_last() {
    if (directories_.empty()) {
        return {};
    }
    FileDescriptor last = std::move(directories_.back());
    directories_.pop_back();
    return last;
}

FileDescriptor OwnWay::open_file(std::string path) {
    for (;;) {
        const size_t name_at = path.rfind('/') + 1;
        const std::string name = path.substr(name_at);
        if (!go(path.substr(0, name_at))) {
            return {};
        }
        FileDescriptor file = open_own_file(here(), name.c_str());
        if (file.is_open() || errno != ELOOP) {
            return file;
        }
        const std::optional<std::string> target = target_of(look_up(here(), name.c_str()));
        if (!target) {
            return {};
        }
        path = *target;
    }
}

bool OwnWay::take_step(const std::string& part) {
    if (part == ".") {
        return true;
    }
    if (part == "..") {
        step_back();
        return true;
    }
    FileDescriptor found = look_up(here(), part.c_str());
    struct stat status;
    if (!found.is_open() || fstat(found.get(), &status) != 0) {
        return false;
    }
    if (S_ISDIR(status.st_mode)) {
        directories_.push_back(std::move(found));
        return true;
    }
    const std::optional<std::string> target = target_of(found);
    return target && go(*target);
}

// Before the start there is only the directory's own word for what is above it.
void OwnWay::step_back() {
    if (directories_.size() > 1) {
        directories_.pop_back();
    } else {
        directories_.back() = look_up(here(), "..");
    }
}

// The link is read by its descriptor, so that nobody can put another one in its place.
std::optional<std::string> OwnWay::target_of(const FileDescriptor& link) {
    struct stat status;
    char target[PATH_MAX];
    if (!link.is_open() || fstat(link.get(), &status) != 0) {
        return std::nullopt;
    }
    if (!S_ISLNK(status.st_mode) || !is_own(status)) {
        errno = S_ISLNK(status.st_mode) ? EPERM : ENOTDIR;
        return std::nullopt;
    }
    if (++link_count_ > max_links) {
        errno = ELOOP;
        return std::nullopt;
    }
    const ssize_t size = readlinkat(link.get(), "", target, sizeof target);
    return size > 0 ? std::optional(std::string(target, static_cast<size_t>(size))) : std::nullopt;
}
