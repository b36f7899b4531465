#include "checker/file_state.h"

#include "base/file_state.h"
#include "base/line_reader.h"

#include <cerrno>
#include <ctime>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// "missing" for a file that does not exist; nothing for what is no regular file.
std::optional<std::string> state_at(const fs::path& path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        return errno == ENOENT ? std::optional<std::string>("missing") : std::nullopt;
    }
    return S_ISREG(status.st_mode) ? std::optional(state_text(status)) : std::nullopt;
}

// The time now on the clock that file times are taken from.
int64_t file_time_now() {
    timespec time;
    clock_gettime(CLOCK_REALTIME_COARSE, &time);
    return nanoseconds(time);
}

// Whether the file system's clock has surely advanced since the file was changed. One that counts
// whole seconds shows it by the lack of a fraction.
bool has_settled(const fs::path& path) {
    constexpr int64_t second = 1'000'000'000;
    constexpr int64_t fine_step = second / 50;
    constexpr int64_t coarse_step = 2 * second;
    const std::optional<int64_t> changed = change_time(path);
    if (!changed) {
        return true; // missing
    }
    const bool is_coarse = *changed % second == 0;
    return file_time_now() - *changed >= (is_coarse ? coarse_step : fine_step);
}

bool is_at_end(int descriptor) {
    struct stat status;
    return fstat(descriptor, &status) == 0 && lseek(descriptor, 0, SEEK_CUR) == status.st_size;
}

// A file in blocks.
class Blocks {
  public:
    explicit Blocks(const FileDescriptor& file) : file_(file) {}

    // A full block but for the last; an empty one at the end. Nothing when reading fails.
    std::optional<std::string_view> next() {
        size_t size = 0;
        while (size < sizeof block_) {
            const ssize_t count = pread(file_.get(), block_ + size, sizeof block_ - size,
                                        static_cast<off_t>(offset_));
            if (count == 0) {
                break;
            }
            if (count == -1 && errno != EINTR) {
                return std::nullopt;
            }
            size += count > 0 ? static_cast<size_t>(count) : 0;
            offset_ += count > 0 ? static_cast<uint64_t>(count) : 0;
        }
        return std::string_view(block_, size);
    }

    uint64_t offset() const { return offset_; }

  private:
    const FileDescriptor& file_;
    uint64_t offset_ = 0;
    char block_[4096] = {};
};

} // namespace

std::optional<std::string> settled_file_state(const fs::path& path) {
    constexpr int attempts = 4;
    constexpr useconds_t step = 20'000;
    for (int i = 0; i < attempts; ++i) {
        std::optional<std::string> state = state_at(path);
        if (!state || has_settled(path)) {
            return state;
        }
        usleep(step);
    }
    return std::nullopt;
}

std::optional<int64_t> change_time(const fs::path& path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return nanoseconds(status.st_ctim);
}

std::optional<std::string> file_digest(const FileDescriptor& file) {
    Blocks blocks(file);
    uint64_t hash = 0xcbf29ce484222325; // FNV-1a
    std::optional<std::string_view> block;
    while ((block = blocks.next()) && !block->empty()) {
        for (const char c : *block) {
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
        }
    }
    if (!block) {
        return std::nullopt;
    }
    return "size " + std::to_string(blocks.offset()) + " hash " + std::to_string(hash);
}

bool have_same_bytes(const FileDescriptor& a, const FileDescriptor& b) {
    Blocks blocks_a(a);
    Blocks blocks_b(b);
    std::optional<std::string_view> block;
    do {
        block = blocks_a.next();
        if (!block || block != blocks_b.next()) {
            return false;
        }
    } while (!block->empty());
    return true;
}

bool read_lines(const FileDescriptor& file, size_t line_size,
                const std::function<void(LineText)>& take) {
    LineReader lines(file.get(), line_size);
    LineText line;
    while (lines.next(line)) {
        take(line);
    }
    return is_at_end(file.get());
}
