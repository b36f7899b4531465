#include "tools/load/input_files.h"

#include "base/logs.h"

#include <algorithm>
#include <cstring>
#include <string_view>

int g_num_instance = 0;

namespace {

constexpr const char* fname = "process_input_file_list2";

// What files of one instance have in common.
struct InstanceKey {
    bool has_directory;
    std::string_view directory; // without its final '/'
    std::string_view prefix;    // of the file name, up to its first '_'; empty when it has none

    bool operator==(const InstanceKey&) const = default;
};

InstanceKey instance_key(std::string_view path) {
    const size_t slash = path.rfind('/');
    const bool has_directory = slash != std::string_view::npos;
    const std::string_view name = has_directory ? path.substr(slash + 1) : path;
    const size_t prefix_end = name.find('_');
    return {has_directory, has_directory ? path.substr(0, slash) : path.substr(0, 0),
            prefix_end == std::string_view::npos ? name.substr(0, 0) : name.substr(0, prefix_end)};
}

} // namespace

int sort_seq_files(const InputFileInfo& a, const InputFileInfo& b) {
    return std::strcmp(a.input_file, b.input_file);
}

void process_input_file_list2() {
    std::stable_sort(
        seq_file_path, seq_file_path + num_al_files,
        [](const InputFileInfo& a, const InputFileInfo& b) { return sort_seq_files(a, b) < 0; });
    InstanceKey current = {};
    for (int i = 0; i < num_al_files; ++i) {
        InputFileInfo& file = seq_file_path[i];
        const InstanceKey key = instance_key(file.input_file);
        if (i > 0 && key == current) {
            file.instance_idx = g_num_instance - 1;
            DEBUG_LOG(3, fname, "File %s matched with current instance", file.input_file);
            continue;
        }
        file.instance_idx = g_num_instance++;
        current = key;
        DEBUG_LOG(3, fname, "New instance added for file = %s, base length = %d, prefix len = %d",
                  file.input_file, static_cast<int>(key.directory.size()),
                  static_cast<int>(key.prefix.size()));
    }
}
