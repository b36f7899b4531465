#include "companions/shard/exchange/packed_payload.h"

#include "base/failure.h"

#include <zstd.h>

size_t append_packed_payload(std::string& to, std::string_view payload) {
    constexpr int fast_level = 1; // higher ones gain a few percent and take twice the time
    const size_t begin = to.size();
    to.resize(begin + ZSTD_compressBound(payload.size()));
    const size_t size = ZSTD_compress(to.data() + begin, to.size() - begin, payload.data(),
                                      payload.size(), fast_level);
    if (ZSTD_isError(size) != 0) {
        fail("Failed to pack frames. Error = '%s'", ZSTD_getErrorName(size));
    }
    to.resize(begin + size);
    return size;
}

std::optional<std::string> unpacked_payload(std::string_view packed) {
    // A damaged size must not take all memory. Above are also those that tell of an error.
    constexpr unsigned long long max_payload_size = 1 << 26;
    const unsigned long long size = ZSTD_getFrameContentSize(packed.data(), packed.size());
    if (size > max_payload_size) {
        return std::nullopt;
    }
    std::string payload(size, '\0');
    if (ZSTD_decompress(payload.data(), size, packed.data(), packed.size()) != size) {
        return std::nullopt;
    }
    return payload;
}
