#include "companions/shard/exchange/packed_text.h"

#include "companions/shard/exchange/frame.h"

uint64_t PackedReader::number() {
    constexpr unsigned bits = 64;
    uint64_t number = 0;
    for (unsigned shift = 0; shift < bits && !rest_.empty(); shift += 7) {
        const auto byte = static_cast<unsigned char>(rest_.front());
        rest_.remove_prefix(1);
        number |= static_cast<uint64_t>(byte & 0x7f) << shift;
        if ((byte & 0x80) == 0) {
            return number;
        }
    }
    fail_as_damaged();
}

uint32_t PackedReader::word() {
    const uint64_t word = number();
    if (word > UINT32_MAX) {
        fail_as_damaged();
    }
    return static_cast<uint32_t>(word);
}

std::string_view PackedReader::text() {
    const uint64_t size = number();
    if (size > rest_.size()) {
        fail_as_damaged();
    }
    const std::string_view text = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return text;
}
