#include "checker/file_state.h"

#include "tools/parse/line_reader.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr int64_t nanoseconds_per_second = 1'000'000'000;

int64_t nanoseconds(const timespec& time) {
    return time.tv_sec * nanoseconds_per_second + time.tv_nsec;
}

std::string state_text(const struct stat& status) {
    return "size " + std::to_string(status.st_size) + " modified " +
           std::to_string(nanoseconds(status.st_mtim)) + " changed " +
           std::to_string(nanoseconds(status.st_ctim)) + " inode " + std::to_string(status.st_ino);
}

// Whether the file system's clock has surely advanced since the file was changed. One that counts
// whole seconds shows it by the lack of a fraction.
bool has_settled(const fs::path& path) {
    constexpr int64_t fine_step = 20'000'000;
    constexpr int64_t coarse_step = 2 * nanoseconds_per_second;
    const std::optional<int64_t> changed = change_time(path);
    if (!changed) {
        return true; // missing
    }
    const bool is_coarse = *changed % nanoseconds_per_second == 0;
    return file_time_now() - *changed >= (is_coarse ? coarse_step : fine_step);
}

bool is_at_end(int descriptor) {
    struct stat status;
    return fstat(descriptor, &status) == 0 && lseek(descriptor, 0, SEEK_CUR) == status.st_size;
}

} // namespace

std::optional<std::string> file_state(const fs::path& path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        return errno == ENOENT ? std::optional<std::string>("missing") : std::nullopt;
    }
    if (!S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return state_text(status);
}

std::optional<std::string> settled_file_state(const fs::path& path) {
    constexpr int attempts = 4;
    constexpr useconds_t step = 20'000;
    for (int i = 0; i < attempts; ++i) {
        std::optional<std::string> state = file_state(path);
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

int64_t file_time_now() {
    timespec time;
    clock_gettime(CLOCK_REALTIME_COARSE, &time);
    return nanoseconds(time);
}

std::optional<std::string> file_digest(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    uint64_t hash = 0xcbf29ce484222325; // FNV-1a
    uint64_t size = 0;
    char block[4096];
    while (file.read(block, sizeof block) || file.gcount() > 0) {
        for (std::streamsize i = 0; i < file.gcount(); ++i) {
            hash = (hash ^ static_cast<unsigned char>(block[i])) * 0x100000001b3;
        }
        size += static_cast<uint64_t>(file.gcount());
    }
    if (!file.eof()) {
        return std::nullopt;
    }
    return "size " + std::to_string(size) + " hash " + std::to_string(hash);
}

bool have_same_bytes(const fs::path& a, const fs::path& b) {
    std::ifstream file_a(a, std::ios::binary);
    std::ifstream file_b(b, std::ios::binary);
    if (!file_a.is_open() || !file_b.is_open()) {
        return false;
    }
    const std::istreambuf_iterator<char> end;
    return std::equal(std::istreambuf_iterator<char>(file_a), end,
                      std::istreambuf_iterator<char>(file_b), end);
}

bool read_lines(const fs::path& path, size_t line_size, const std::function<void(LineText)>& take) {
    FILE* file = std::fopen(path.c_str(), "r");
    if (file == nullptr) {
        return false;
    }
    LineReader lines(fileno(file), line_size);
    LineText line;
    while (lines.next(line)) {
        take(line);
    }
    const bool was_read = is_at_end(fileno(file));
    std::fclose(file);
    return was_read;
}
