#include "companions/common/utf8.h"

namespace {

// Bytes of a character by its first byte; 0 for a byte that begins none.
size_t size_by_first_byte(uint8_t byte) {
    if (byte < 0x80) {
        return 1;
    }
    if (byte < 0xc2 || byte > 0xf4) {
        return 0;
    }
    return byte < 0xe0 ? 2 : byte < 0xf0 ? 3 : 4;
}

bool is_valid(uint32_t code, size_t size) {
    constexpr uint32_t lowest_of_size[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool is_surrogate = code >= 0xd800 && code <= 0xdfff;
    return code >= lowest_of_size[size] && code <= 0x10ffff && !is_surrogate;
}

} // namespace

Utf8Character first_character(std::string_view text) {
    const auto first = static_cast<uint8_t>(text[0]);
    const size_t size = size_by_first_byte(first);
    if (size <= 1) {
        return {first, size};
    }
    if (size > text.size()) {
        return {0, 0};
    }
    uint32_t code = first & (0x7fU >> size);
    for (size_t i = 1; i < size; ++i) {
        const auto byte = static_cast<uint8_t>(text[i]);
        if ((byte & 0xc0) != 0x80) {
            return {0, 0};
        }
        code = code << 6 | (byte & 0x3fU);
    }
    return is_valid(code, size) ? Utf8Character{code, size} : Utf8Character{0, 0};
}
