#pragma once

#include <string_view>
#include <vector>

struct Cookie {
    std::string_view name;
    std::string_view value;
};

// Whether a text can be the name of a cookie: one that the settings of the tool can hold, too.
bool is_cookie_name(std::string_view name);

// The cookies of a Cookie header, in their order, no more than 200, as browsers send no more; a
// part without name and equals sign is none. IIS writes
// "+" for the blanks between them. The views are of the header.
std::vector<Cookie> cookies_of(std::string_view header);

// The cookies that a Set-Cookie header sets, without their attributes; of several headers that a
// server has joined by commas, all.
std::vector<Cookie> set_cookies_of(std::string_view header);

bool names_cookie(const std::vector<Cookie>& cookies, std::string_view name);
