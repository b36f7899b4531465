#include "companions/shard/merge/tool_program.h"

#include <cstdlib>
#include <sstream>
#include <string>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* tool = "zvr_al_gen_url_list";

bool is_program(const fs::path& path) {
    return access(path.c_str(), X_OK) == 0 && fs::is_regular_file(path);
}

} // namespace

fs::path find_tool() {
    std::error_code error;
    fs::path beside = fs::read_symlink("/proc/self/exe", error).replace_filename(tool);
    if (!error && is_program(beside)) {
        return beside;
    }
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no thread has been started
    const char* const path = std::getenv("PATH");
    std::istringstream directories(path == nullptr ? "" : path);
    for (std::string directory; std::getline(directories, directory, ':');) {
        if (is_program(fs::path(directory) / tool)) {
            return fs::path(directory) / tool;
        }
    }
    return {};
}
