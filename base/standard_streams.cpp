#include "base/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

void occupy_standard_streams() {
    int descriptor;
    do {
        descriptor = open("/dev/null", O_RDONLY);
    } while (descriptor != -1 && descriptor <= STDERR_FILENO);
    close(descriptor);
}
