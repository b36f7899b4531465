#include "tools/parse/cookie_values.h"

#include "tools/driver/logs.h"

#include <cstring>

bool get_cookie_value(const char* header, const char* name, size_t skip,
                      char (&value)[max_cookie_length]) {
    const char* found = std::strstr(header, name);
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
