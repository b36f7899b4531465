#include "base/file_descriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

FILE* open_stream(FileDescriptor file, const char* mode) {
    FILE* stream = file.is_open() ? fdopen(file.get(), mode) : nullptr;
    if (stream != nullptr) {
        file.release(); // the stream closes it
    }
    return stream;
}

std::optional<std::string> read_whole(const FileDescriptor& file, size_t max_size) {
    std::string text;
    char block[1 << 12];
    for (;;) {
        const ssize_t count =
            pread(file.get(), block, sizeof block, static_cast<off_t>(text.size()));
        if (count == 0) {
            return text;
        }
        if (count > 0) {
            text.append(block, static_cast<size_t>(count));
        }
        if ((count == -1 && errno != EINTR) || text.size() > max_size) {
            return std::nullopt;
        }
    }
}

bool is_at(int directory, const char* name, const FileDescriptor& file) {
    struct stat status, at_name;
    return fstat(file.get(), &status) == 0 &&
           fstatat(directory, name, &at_name, AT_SYMLINK_NOFOLLOW) == 0 &&
           status.st_dev == at_name.st_dev && status.st_ino == at_name.st_ino;
}

bool write_whole(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(descriptor, text.data(), text.size());
        if (count > 0) {
            text.remove_prefix(static_cast<size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}
