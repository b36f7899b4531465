#include "companions/doctor/init/log_sample.h"

#include "base/failure.h"
#include "base/file_descriptor.h"
#include "base/line_reader.h"
#include "companions/common/log_file.h"
#include "companions/doctor/init/w3c_fields.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

constexpr int part_count = 3;
constexpr uint64_t usual_line_length = 400;

uint64_t size_of(const FileDescriptor& file) {
    struct stat status;
    return fstat(file.get(), &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
}

// The parts of the file that are read. A small file is one part. A log may hold no line feed for
// gigabytes: not much is read behind a part.
std::vector<FileRange> sampled_ranges(uint64_t size, size_t max_lines) {
    const uint64_t length = std::max(uint64_t{1}, max_lines * usual_line_length / part_count);
    if (size <= length * part_count) {
        return {{0, size, size}};
    }
    const auto part = [size, length](uint64_t begin) {
        return FileRange{begin, begin + length, std::min(size, begin + length + log_line_size)};
    };
    return {part(0), part(size / 2 - length / 2), part(size - length)};
}

void read_range(const FileDescriptor& file, const FileRange& range, size_t max_lines,
                LogSample& sample) {
    LineReader reader(file.get(), log_line_size, range);
    LineText line;
    while (sample.lines.size() < max_lines && reader.next(line)) {
        std::string_view text(line.text, line.size);
        if (text.ends_with('\r')) {
            text.remove_suffix(1);
        }
        if (!text.empty() && text.front() != '#') {
            sample.lines.emplace_back(text);
        }
        sample.names_its_fields = sample.names_its_fields || !w3c_field_names(text).empty();
    }
    reader.require_whole(sample.path.c_str());
}

bool ends_with_line_feed(const FileDescriptor& file, uint64_t size) {
    char last = '\n';
    return size == 0 || pread(file.get(), &last, 1, static_cast<off_t>(size - 1)) != 1 ||
           last == '\n';
}

} // namespace

LogSample read_log_sample(const std::string& path, size_t max_lines) {
    const FileDescriptor file = open_log_at_once(path);
    if (!file.is_open()) {
        fail("Cannot read log '%s': %s", path.c_str(),
             std::generic_category().message(errno).c_str());
    }
    LogSample sample = {path, size_of(file)};
    sample.ends_with_line_feed = ends_with_line_feed(file, sample.size);
    const std::vector<FileRange> ranges = sampled_ranges(sample.size, max_lines);
    for (size_t i = 0; i < ranges.size(); ++i) {
        read_range(file, ranges[i], max_lines * (i + 1) / ranges.size(), sample);
    }
    return sample;
}
