#include "companions/shard/plan/input_hashes.h"

#include "base/failure.h"
#include "base/file_descriptor.h"
#include "cache/input_copies.h"
#include "tools/driver/paths.h"

#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <system_error>
#include <xxhash.h>

namespace {

constexpr size_t max_input_size = size_t{1} << 28;

std::optional<std::string> read_input(const std::string& path) {
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.is_open() && errno == ENOENT) {
        return std::nullopt;
    }
    std::optional<std::string> content = read_whole(file, max_input_size);
    if (!content) {
        fail("Failed to read file %s. Error = '%s'", path.c_str(),
             std::generic_category().message(errno).c_str());
    }
    return content;
}

uint64_t hash_of(const std::optional<std::string>& content) {
    return content ? XXH3_64bits(content->data(), content->size()) : 0;
}

} // namespace

std::vector<uint64_t> hash_inputs(std::string& settings) {
    const std::optional<std::string> own_settings =
        read_input(replay_profile_file_path(settings_name));
    settings = own_settings.value_or("");
    return {hash_of(read_input(scenario_file_path())), hash_of(own_settings),
            hash_of(read_input(replay_profile_file_path(url_patterns_name))),
            hash_of(read_input(replay_profile_file_path(filter_patterns_name))),
            hash_of(read_input(std::string(g_wdir) + "/sys/replay_settings.default"))};
}
