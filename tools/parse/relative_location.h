#pragma once

#include <string>
#include <string_view>

// Whether a Location must be resolved against the request's URL: it begins neither with "http" (any
// case) nor with '/'.
bool is_relative_location(const char* location);

// Resolves the relative location `in_url` against the directory of `parent_url_line`, the URL of
// the redirected request, into `out_url`. The result is empty when the parent does not begin with
// '/' or when the location leads above the root.
void make_absolute_from_relative_url(const char* in_url, std::string_view parent_url_line,
                                     std::string& out_url);
