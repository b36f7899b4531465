#include "tools/load/read_logs.h"

#include "base/file_state.h"

#include <mutex>

namespace {

std::mutex mutex;
std::set<std::pair<std::string, std::string>> logs;

} // namespace

void note_read_log(const char* path, int descriptor) {
    note_read_log(path, file_state(descriptor).value_or("unknown"));
}

void note_read_log(const char* path, const std::string& state) {
    const std::lock_guard lock(mutex);
    logs.emplace(path, state);
}

const std::set<std::pair<std::string, std::string>>& read_logs() {
    return logs;
}
