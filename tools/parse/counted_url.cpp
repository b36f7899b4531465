#include "tools/parse/counted_url.h"

#include <cstring>

namespace {

constexpr const char* query_separators = "?#;";

} // namespace

bool is_query_separator(char c) {
    return std::strchr(query_separators, c) != nullptr; // no URL holds a NUL
}

void find_query(alInfo& request) {
    const int separator = static_cast<int>(std::strcspn(request.url, query_separators));
    if (separator != request.url_len) {
        request.ignore_query_flag = 1;
        request.url_len = separator + 1;
    }
}
