#include "companions/shard/exchange/spill_file.h"

#include "base/failure.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

std::string spill_directory() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody sets it
    const char* const wanted = std::getenv("TMPDIR");
    return wanted == nullptr || *wanted == '\0' ? "/tmp" : wanted;
}

FileDescriptor open_spill_file() {
    const std::string directory = spill_directory();
    std::string name = directory + "/zvr_al_shard.XXXXXX";
    FileDescriptor file(mkostemp(name.data(), O_CLOEXEC));
    if (!file.is_open() || unlink(name.c_str()) != 0) {
        fail("No file can be made in %s. Error = '%s'", directory.c_str(),
             std::generic_category().message(errno).c_str());
    }
    return file;
}
