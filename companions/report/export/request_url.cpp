#include "companions/report/export/request_url.h"

#include "base/failure.h"

#include <algorithm>
#include <fmt/core.h>

namespace {

bool is_letter_or_digit(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool is_hex_digit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool is_of(std::string_view set, char c) {
    return set.find(c) != std::string_view::npos;
}

bool consists_of(std::string_view text, std::string_view marks) {
    return std::all_of(text.begin(), text.end(),
                       [marks](char c) { return is_letter_or_digit(c) || is_of(marks, c); });
}

constexpr std::string_view path_marks = "-._~!$&'()*+,;=:@/";
constexpr std::string_view query_marks = "-._~!$&'()*+,;=:@/?[]";

bool is_encoding(std::string_view url, size_t i) {
    return url[i] == '%' && i + 2 < url.size() && is_hex_digit(url[i + 1]) &&
           is_hex_digit(url[i + 2]);
}

std::string encoded(std::string_view path) {
    std::string url;
    std::string_view marks = path_marks;
    for (size_t i = 0; i < path.size(); ++i) {
        const char c = path[i];
        if (c == '?') {
            marks = query_marks;
        }
        if (c == '?' || is_letter_or_digit(c) || is_of(marks, c) || is_encoding(path, i)) {
            url += c;
        } else {
            url += fmt::format("%{:02X}", static_cast<unsigned char>(c));
        }
    }
    return url;
}

// Characters of scheme and host that a URL begins with, however the scheme is written.
size_t authority_end(std::string_view url) {
    const size_t scheme_end = url.find("://");
    if (scheme_end == std::string_view::npos || scheme_end == 0 ||
        !consists_of(url.substr(0, scheme_end), "+-.")) {
        return 0;
    }
    return std::min(url.find_first_of("/?#", scheme_end + 3), url.size());
}

} // namespace

std::optional<RequestPath> request_path(std::string_view logged_url) {
    const size_t path_begin = authority_end(logged_url);
    const std::string_view path = logged_url.substr(path_begin);
    if (path_begin == 0 && !path.starts_with('/')) {
        return std::nullopt;
    }
    std::string text = encoded(path);
    const bool is_encoded = text != path;
    return RequestPath{(path.starts_with('/') ? "" : "/") + text, is_encoded};
}

bool is_host(std::string_view host) {
    return !host.empty() && consists_of(host, "-._:[]");
}

bool is_method(std::string_view method) {
    return !method.empty() && consists_of(method, "!#$%&'*+-.^_`|~");
}

std::string_view authority_of(std::string_view absolute_url) {
    const std::string_view rest = absolute_url.substr(absolute_url.find("://") + 3);
    return rest.substr(0, rest.find('/'));
}

std::string checked_base_url(const std::string& base_url) {
    std::string url = base_url;
    while (url.ends_with('/')) {
        url.pop_back();
    }
    const bool has_scheme = url.starts_with("http://") || url.starts_with("https://");
    if (!has_scheme || !is_host(authority_of(url)) || encoded(url) != url ||
        url.find('?') != std::string::npos) {
        fail("--base-url '%s' is not like http://host:8080 or https://host/path", base_url.c_str());
    }
    return url;
}
