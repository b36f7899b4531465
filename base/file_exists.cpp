#include "base/file_exists.h"

#include <sys/stat.h>

bool file_exists(const char* path) {
    struct stat status;
    return stat(path, &status) == 0;
}
