#include "tools/parse/url_key.h"

#include "tools/config/replay_settings.h"
#include "tools/parse/counted_url.h"

#include <algorithm>
#include <cstring>

namespace {

char upper_case(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}

char lower_case(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

} // namespace

// The host ends with a terminator.
void write_url_key(const alInfo& request, std::string& key) {
    char method[max_method_length];
    std::transform(request.method, request.method + max_method_length, method, lower_case);
    key.assign(method, sizeof method);
    key.append(request.host_ip, std::strlen(request.host_ip) + 1);
    key.append(counted_url(request));
}

UrlKey::UrlKey(std::string_view key)
    : method(key.substr(0, max_method_length)), host(key.data() + max_method_length),
      url(key.substr(max_method_length + std::strlen(host) + 1)) {}

bool UrlKey::has_ignored_query() const {
    return ignore_query_flag != 0 && !url.empty() && is_query_separator(url.back());
}

bool has_standard_spelling(const alInfo& request) {
    bool has_small_letter = false;
    for (int i = 0; i < max_method_length; ++i) { // all of them, which is quicker than to stop
        has_small_letter |= upper_case(request.method[i]) != request.method[i];
    }
    return !has_small_letter;
}

void standard_method(std::string_view key, char (&method)[max_method_length + 1]) {
    std::transform(key.begin(), key.begin() + max_method_length, method, upper_case);
    method[max_method_length] = '\0';
}
