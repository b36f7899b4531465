#pragma once

#include <optional>
#include <string>
#include <string_view>

// URLs of logs as a client can request them. A log may hold anything that somebody has sent.

// The path with its query that a logged URL asks for: without scheme and host, where it has these,
// and with each character percent-encoded that a URL must not hold ("%" included, where it does not
// encode anything; a fragment, which clients would keep for themselves). Nothing when it is no
// path.
struct RequestPath {
    std::string text;
    bool is_encoded; // other than logged
};
std::optional<RequestPath> request_path(std::string_view logged_url);

// Whether a logged host can stand in a URL and a header: a name or address, and perhaps a port.
bool is_host(std::string_view host);

// Whether a logged method is one: a word without separators.
bool is_method(std::string_view method);

// Host, and perhaps port, of an absolute URL.
std::string_view authority_of(std::string_view absolute_url);

// A base URL without "/" at its end. Fails when it is not http:// or https://, a host and perhaps a
// path, without query, user or characters that a URL must not hold.
std::string checked_base_url(const std::string& base_url);
