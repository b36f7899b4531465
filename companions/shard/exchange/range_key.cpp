#include "companions/shard/exchange/range_key.h"

#include "base/failure.h"
#include "tools/config/replay_settings.h"
#include "tools/urls/text_sort.h"

#include <charconv>
#include <endian.h>

namespace {

constexpr size_t digits_a_byte = 2;

} // namespace

bool tells_session(std::string_view session) {
    return order_prefix(session) != 0;
}

std::string range_key(std::string_view session, uint64_t time) {
    std::string key(session);
    if (session_mode == SESSION_MODE_COOKIE) {
        key.push_back('\0'); // behind all that a longer value goes on with; addresses are as long
    }
    if (!tells_session(session)) {
        const uint64_t highest_byte_first = htobe64(time);
        key.append(reinterpret_cast<const char*>(&highest_byte_first), sizeof highest_byte_first);
    }
    return key;
}

std::string hex_text(std::string_view key) {
    constexpr const char* digits = "0123456789abcdef";
    std::string text;
    for (const char c : key) {
        const auto byte = static_cast<unsigned char>(c);
        text.push_back(digits[byte >> 4]);
        text.push_back(digits[byte & 0xf]);
    }
    return text;
}

std::string key_of_hex(std::string_view digits) {
    std::string key;
    for (size_t i = 0; i < digits.size(); i += digits_a_byte) {
        const char* const first = digits.data() + i;
        const char* const end = first + digits_a_byte;
        unsigned char byte = 0;
        if (i + digits_a_byte > digits.size() || std::from_chars(first, end, byte, 16).ptr != end) {
            fail("'%s' is no key of a range", std::string(digits).c_str());
        }
        key.push_back(static_cast<char>(byte));
    }
    return key;
}
