#include "base/file_state.h"

int64_t nanoseconds(const timespec& time) {
    return time.tv_sec * int64_t{1'000'000'000} + time.tv_nsec;
}

std::string state_text(const struct stat& status) {
    return "size " + std::to_string(status.st_size) + " modified " +
           std::to_string(nanoseconds(status.st_mtim)) + " changed " +
           std::to_string(nanoseconds(status.st_ctim)) + " inode " + std::to_string(status.st_ino) +
           " of device " + std::to_string(status.st_dev);
}

std::optional<std::string> file_state(int descriptor) {
    struct stat status;
    return fstat(descriptor, &status) == 0 ? std::optional(state_text(status)) : std::nullopt;
}
