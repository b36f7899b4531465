#include "companions/common/output_file.h"

#include "base/failure.h"
#include "base/new_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace {

FileDescriptor open_directory_of(const std::filesystem::path& path) {
    const std::filesystem::path directory = path.has_parent_path() ? path.parent_path() : ".";
    return FileDescriptor(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

// A device or a pipe is not to be replaced by a file, and a directory cannot be.
bool is_free_for_file(int directory, const std::string& name) {
    struct stat status;
    return fstatat(directory, name.c_str(), &status, 0) != 0 ? errno == ENOENT
                                                             : S_ISREG(status.st_mode);
}

bool write_all(int file, std::initializer_list<std::string_view> parts) {
    return std::all_of(parts.begin(), parts.end(),
                       [file](std::string_view part) { return write_whole(file, part); });
}

} // namespace

OutputFile::OutputFile(const std::string& path)
    : path_(path), name_(std::filesystem::path(path).filename()),
      directory_(open_directory_of(path)) {
    if (!directory_.is_open() || faccessat(directory_.get(), ".", W_OK, AT_EACCESS) != 0) {
        fail_to_write();
    }
    if (name_.empty() || !is_free_for_file(directory_.get(), name_)) {
        fail("%s is not a file", path_.c_str());
    }
}

void OutputFile::write(std::initializer_list<std::string_view> parts) const {
    const std::string part_name = ".zvr_" + std::to_string(getpid()) + ".part";
    FileDescriptor file = create_new_file(directory_.get(), part_name.c_str(), 0666);
    const bool is_in_place =
        file.is_open() && write_all(file.get(), parts) && file.close() &&
        renameat(directory_.get(), part_name.c_str(), directory_.get(), name_.c_str()) == 0;
    if (!is_in_place) {
        const int error = errno;
        clear_file(directory_.get(), part_name.c_str());
        errno = error;
        fail_to_write();
    }
}

void OutputFile::fail_to_write() const {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread asks
    fail("%s cannot be written: %s", path_.c_str(), std::strerror(errno));
}
