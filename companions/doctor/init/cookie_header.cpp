#include "companions/doctor/init/cookie_header.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <strings.h>

namespace {

constexpr size_t max_cookies = 200;

constexpr std::array<std::string_view, 7> attributes = {"path",     "expires", "max-age", "domain",
                                                        "samesite", "version", "comment"};

bool is_name_character(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
           std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
}

std::optional<Cookie> cookie_in(std::string_view part) {
    part.remove_prefix(std::min(part.find_first_not_of(" +"), part.size()));
    const size_t equals = part.find('=');
    if (equals == std::string_view::npos || !is_cookie_name(part.substr(0, equals))) {
        return std::nullopt;
    }
    return Cookie{part.substr(0, equals), part.substr(equals + 1)};
}

bool is_attribute(std::string_view name) {
    return std::ranges::any_of(attributes, [&](std::string_view attribute) {
        return attribute.size() == name.size() &&
               strncasecmp(attribute.data(), name.data(), name.size()) == 0;
    });
}

// A cookie behind a comma, by which a server has joined two headers. The date of "expires" holds a
// comma, too, but no equals sign before the next semicolon.
std::string_view behind_comma(std::string_view part) {
    const size_t comma = part.rfind(", ");
    return comma != std::string_view::npos && part.find('=', comma) != std::string_view::npos
               ? part.substr(comma + 2)
               : std::string_view();
}

void add_set_cookies(std::string_view part, std::vector<Cookie>& cookies) {
    const std::string_view next = behind_comma(part);
    const std::string_view own =
        next.empty() ? part : part.substr(0, part.size() - next.size() - 2);
    for (const std::string_view text : {own, next}) {
        const std::optional<Cookie> cookie = cookie_in(text);
        if (cookie && !is_attribute(cookie->name) && cookies.size() < max_cookies) {
            cookies.push_back(*cookie);
        }
    }
}

template <typename AddPart> void for_each_part(std::string_view header, const AddPart& add) {
    while (!header.empty()) {
        const std::string_view part = header.substr(0, header.find(';'));
        header.remove_prefix(std::min(part.size() + 1, header.size()));
        add(part);
    }
}

} // namespace

bool is_cookie_name(std::string_view name) {
    constexpr size_t max_length = 255; // of a secondary cookie
    return !name.empty() && name.size() <= max_length &&
           std::ranges::all_of(name, is_name_character);
}

std::vector<Cookie> cookies_of(std::string_view header) {
    std::vector<Cookie> cookies;
    for_each_part(header, [&](std::string_view part) {
        const std::optional<Cookie> cookie = cookie_in(part);
        if (cookie && cookies.size() < max_cookies) {
            cookies.push_back(*cookie);
        }
    });
    return cookies;
}

std::vector<Cookie> set_cookies_of(std::string_view header) {
    std::vector<Cookie> cookies;
    for_each_part(header, [&](std::string_view part) { add_set_cookies(part, cookies); });
    return cookies;
}

bool names_cookie(const std::vector<Cookie>& cookies, std::string_view name) {
    return std::ranges::any_of(cookies, [&](const Cookie& cookie) { return cookie.name == name; });
}
