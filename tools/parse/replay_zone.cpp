#include "tools/parse/replay_zone.h"

#include "base/file_descriptor.h"
#include "base/file_exists.h"
#include "base/input_file.h"
#include "base/line_observer.h"
#include "base/line_reader.h"
#include "base/logs.h"
#include "tools/parse/zone_text.h"

#include <cstdio>
#include <string_view>
#include <strings.h>

int64_t replay_timezone = -1;
int64_t default_timezone = -1;

int64_t get_timezone_from_default_setting(const std::string& work_dir) {
    constexpr const char* fname = "get_timezone_from_default_setting";
    constexpr std::string_view keyword = "GMT_OFFSET";
    constexpr size_t line_size = 4096;
    DEBUG_LOG(4, fname, "Method called");
    const std::string path = work_dir + "/sys/replay_settings.default";
    if (!file_exists(path.c_str())) {
        DEBUG_LOG(3, fname, "replay_setting.default file not found, setting local timeoffset");
        std::fprintf(stderr, "%s file not found, setting local timeoffset\n", path.c_str());
        return -1;
    }
    const FileDescriptor file = open_input_file(path.c_str());
    if (!file.is_open()) {
        DEBUG_LOG(3, fname, "Failed to open replay_setting.default, setting local timeoffset");
        std::fprintf(stderr, "Failed to open %s file, setting local timeoffset\n", path.c_str());
        return -1;
    }
    LineReader lines(file.get(), line_size);
    LineText line;
    LinePlace place = {path.c_str(), 0, keyword};
    int64_t offset = -1;
    while (lines.next(line)) {
        ++place.line_num;
        if (strncasecmp(line.text, keyword.data(), keyword.size()) == 0) {
            offset = -zone_offset(read_zone(line.text + keyword.size()));
            DEBUG_LOG(4, fname, "GMT_OFFSET value : %ld", offset);
            observe_line(place, ObservedKind::taken, line.text + keyword.size());
            break;
        }
    }
    return offset;
}
