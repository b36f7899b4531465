#include "companions/doctor/init/written_files.h"

#include "base/failure.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

[[noreturn]] void fail_to_make(const std::string& path, int error) {
    fail("Cannot make '%s': %s", path.c_str(), std::generic_category().message(error).c_str());
}

FileDescriptor enter(const FileDescriptor& parent, const std::string& name) {
    constexpr int flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    FileDescriptor directory(openat(parent.get(), name.c_str(), flags));
    return directory.is_open() || errno != ENOENT ? std::move(directory)
                                                  : make_own_directory(parent, name.c_str(), 0777);
}

} // namespace

OwnDirectory make_directories(const std::string& path) {
    FileDescriptor directory(open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    std::string_view rest = path;
    while (!rest.empty()) {
        const std::string part(rest.substr(0, rest.find('/')));
        rest.remove_prefix(std::min(part.size() + 1, rest.size()));
        if (part.empty()) {
            continue;
        }
        directory = enter(directory, part);
        if (!directory.is_open()) {
            fail_to_make(path, errno);
        }
    }
    OwnDirectory own(path);
    if (!own.is_open()) {
        fail("Directory '%s' cannot be used: %s. It and the one above it have to be of this user "
             "or of root",
             path.c_str(), std::generic_category().message(errno).c_str());
    }
    return own;
}

bool is_taken(const OwnDirectory& directory, const std::string& name) {
    return faccessat(directory.descriptor(), name.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0;
}

void write_file(const OwnDirectory& directory, const std::string& name, std::string_view text) {
    const std::string path = directory.path() + "/" + name;
    FileDescriptor file = directory.create(name.c_str(), 0666);
    if (!file.is_open()) {
        fail_to_make(path, errno);
    }
    const bool is_written = write_whole(file.get(), text);
    const int error = errno;
    if (!is_written || !file.close()) {
        directory.remove(name.c_str());
        fail_to_make(path, is_written ? errno : error);
    }
}
