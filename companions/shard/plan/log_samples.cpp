#include "companions/shard/plan/log_samples.h"

#include "base/failure.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <system_error>
#include <unistd.h>
#include <vector>
#include <xxhash.h>

namespace {

constexpr uint64_t sample_size = uint64_t{64} << 10;
constexpr uint64_t sample_count = 16;

void read_sample(int descriptor, uint64_t offset, std::vector<char>& sample, const char* path) {
    size_t done = 0;
    while (done != sample.size()) {
        const ssize_t count = pread(descriptor, sample.data() + done, sample.size() - done,
                                    static_cast<off_t>(offset + done));
        if (count == 0) {
            fail("%s is shorter than in the plan", path);
        }
        if (count == -1 && errno != EINTR) {
            fail("Failed to read file %s. Error = '%s'", path,
                 std::generic_category().message(errno).c_str());
        }
        done += count > 0 ? static_cast<size_t>(count) : 0;
    }
}

} // namespace

uint64_t hash_log_samples(int descriptor, uint64_t size, const char* path) {
    const uint64_t length = std::min(size, sample_size);
    const bool has_gaps = size > sample_count * sample_size;
    const uint64_t count = has_gaps ? sample_count : (size + sample_size - 1) / sample_size;
    uint64_t hash = size;
    for (uint64_t i = 0; i < count; ++i) {
        const uint64_t last = size - length;
        const uint64_t offset =
            count == 1 ? 0 : last / (count - 1) * i + (i + 1 == count ? last % (count - 1) : 0);
        std::vector<char> sample(length);
        read_sample(descriptor, offset, sample, path);
        hash = XXH3_64bits_withSeed(sample.data(), sample.size(), hash);
    }
    return hash;
}

uint64_t hash_zone_rules() {
    constexpr time_t day = time_t{24} * 60 * 60;
    constexpr time_t last_day = 24'837; // of 2037
    std::vector<long> offsets;
    tzset();
    for (time_t i = 0; i <= last_day; ++i) {
        const time_t time = i * day;
        tm local;
        localtime_r(&time, &local);
        offsets.push_back(local.tm_gmtoff);
    }
    return XXH3_64bits(offsets.data(), offsets.size() * sizeof(long));
}
