#include "companions/common/output_file.h"

#include "base/failure.h"
#include "base/new_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

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

// Removes a file at the end of its scope, unless it has been put in its place.
class PartFile {
  public:
    PartFile(int directory, std::string name) : directory_(directory), name_(std::move(name)) {}
    ~PartFile() {
        if (stream_ != nullptr) {
            std::fclose(stream_);
        }
        if (!is_in_place_) {
            clear_file(directory_, name_.c_str());
        }
    }
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    // Null, with errno set, when it cannot be made.
    FILE* open() {
        stream_ = open_stream(create_new_file(directory_, name_.c_str(), 0666), "w");
        return stream_;
    }

    // Returns false, with errno set, when not all has been written or it cannot be put there.
    bool put_in_place(const std::string& name) {
        const bool is_flushed = std::fflush(stream_) == 0 && std::ferror(stream_) == 0;
        const bool is_closed = std::fclose(std::exchange(stream_, nullptr)) == 0;
        is_in_place_ = is_flushed && is_closed &&
                       renameat(directory_, name_.c_str(), directory_, name.c_str()) == 0;
        return is_in_place_;
    }

  private:
    int directory_;
    std::string name_;
    FILE* stream_ = nullptr;
    bool is_in_place_ = false;
};

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
    write([parts](FILE* stream) {
        for (const std::string_view part : parts) {
            std::fwrite(part.data(), 1, part.size(), stream);
        }
    });
}

void OutputFile::write(const std::function<void(FILE*)>& write_text) const {
    PartFile part(directory_.get(), ".zvr_" + std::to_string(getpid()) + ".part");
    FILE* stream = part.open();
    if (stream == nullptr) {
        fail_to_write();
    }
    try {
        write_text(stream);
    } catch (const std::system_error& error) { // as fmt says it
        errno = error.code().value();
        fail_to_write();
    }
    if (!part.put_in_place(name_)) {
        fail_to_write();
    }
}

void OutputFile::fail_to_write() const {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread asks
    fail("%s cannot be written: %s", path_.c_str(), std::strerror(errno));
}
