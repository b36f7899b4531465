#include "base/input_file.h"

#include "base/file_state.h"
#include "base/regular_file.h"

#include <fcntl.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <utility>

namespace {

constexpr const char* null_device = "/dev/null";

// The state in which each path was found first. The main thread alone reads inputs.
std::map<std::string, std::string> first_states;
bool have_changed = false;

void note_state(const char* path, const std::string& state) {
    have_changed |= first_states.try_emplace(path, state).first->second != state;
}

bool is_null_device(const char* path) {
    struct stat status;
    struct stat null_status;
    return stat(path, &status) == 0 && stat(null_device, &null_status) == 0 &&
           S_ISCHR(status.st_mode) && status.st_rdev == null_status.st_rdev;
}

} // namespace

FileDescriptor open_input_file(const char* path) {
    if (is_null_device(path)) {
        note_state(path, null_device);
        return FileDescriptor(open(null_device, O_RDONLY | O_CLOEXEC));
    }
    FileDescriptor file = open_regular_file(path);
    note_state(path, file_state(file.get()).value_or("not open"));
    return file;
}

bool inputs_held_still() {
    return !have_changed;
}
