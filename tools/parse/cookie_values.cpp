#include "tools/parse/cookie_values.h"

#include "base/logs.h"

#include <cstring>

namespace {

// Most headers are a "-": nothing to search in.
bool is_one_character(const char* header) {
    return header[0] != '\0' && header[1] == '\0';
}

} // namespace

bool get_cookie_value(const char* header, std::string_view name, size_t skip,
                      char (&value)[max_cookie_length]) {
    if (is_one_character(header) && name.size() > 1) {
        return false;
    }
    const char* found = std::strstr(header, name.data());
    if (found == nullptr) {
        return false;
    }
    const char* start = found + strnlen(found, skip);
    size_t length = static_cast<size_t>(strchrnul(start, ';') - start);
    if (length >= sizeof value) {
        DEBUG_LOG(2, "load_url_info",
                  "Cookie length is more than max_cookie_length(64), truncating cookie value.");
        length = sizeof value - 1;
    }
    std::memcpy(value, start, length);
    value[length] = '\0';
    return true;
}
