#include "companions/common/log_file.h"

#include <fcntl.h>

FileDescriptor open_log_at_once(const std::string& path) {
    return FileDescriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}
