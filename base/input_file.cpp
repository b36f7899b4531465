#include "base/input_file.h"

#include "base/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace {

constexpr const char* null_device = "/dev/null";

bool is_null_device(const char* path) {
    struct stat status;
    struct stat null_status;
    return stat(path, &status) == 0 && stat(null_device, &null_status) == 0 &&
           S_ISCHR(status.st_mode) && status.st_rdev == null_status.st_rdev;
}

} // namespace

FileDescriptor open_input_file(const char* path) {
    if (is_null_device(path)) {
        return FileDescriptor(open(null_device, O_RDONLY | O_CLOEXEC));
    }
    return open_regular_file(path);
}
