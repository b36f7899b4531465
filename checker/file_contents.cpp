#include "checker/file_contents.h"

#include "base/line_reader.h"

#include <cerrno>
#include <cstdint>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

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
