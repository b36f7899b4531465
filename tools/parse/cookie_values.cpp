#include "tools/parse/cookie_values.h"

#include "base/byte_search.h"
#include "base/logs.h"

#include <algorithm>
#include <cstring>

bool get_cookie_value(LineText header, std::string_view name, size_t skip,
                      char (&value)[max_cookie_length]) {
    char* const end = header.text + header.size;
    char* const found = find_text(header.text, end, name);
    if (found == nullptr) {
        return false;
    }
    char* const start = found + std::min(skip, static_cast<size_t>(end - found));
    size_t length = static_cast<size_t>(find_either(start, end, ';', ';') - start);
    if (length >= sizeof value) {
        DEBUG_LOG(2, "load_url_info",
                  "Cookie length is more than max_cookie_length(64), truncating cookie value.");
        length = sizeof value - 1;
    }
    std::memcpy(value, start, length);
    value[length] = '\0';
    return true;
}
