#include "tools/parse/relative_location.h"

#include "base/logs.h"

#include <strings.h>

namespace {

constexpr const char* fname = "make_absolute_from_relative_url";

} // namespace

bool is_relative_location(const char* location) {
    return location[0] != '/' && strncasecmp(location, "http", 4) != 0;
}

void make_absolute_from_relative_url(const char* in_url, std::string_view parent_url_line,
                                     std::string& out_url) {
    const int parent_length = static_cast<int>(parent_url_line.size());
    DEBUG_LOG(4, fname, "Method called, in_url = %s, parent url = %.*s", in_url, parent_length,
              parent_url_line.data());
    out_url.clear();
    if (!parent_url_line.starts_with('/')) {
        DEBUG_LOG(4, fname, "parent url '%.*s' does not start with '/'", parent_length,
                  parent_url_line.data());
        return;
    }
    const std::string_view path = parent_url_line.substr(0, parent_url_line.find_first_of("?#"));
    size_t directory_end = path.rfind('/');
    std::string_view location = in_url;
    if (location.starts_with("./")) {
        location.remove_prefix(2);
    }
    while (location.starts_with("../")) {
        location.remove_prefix(3);
        if (directory_end == 0) {
            DEBUG_LOG(4, fname, "Setting out_url to root url");
            return;
        }
        directory_end = path.rfind('/', directory_end - 1);
    }
    out_url.append(path.substr(0, directory_end + 1)).append(location);
    DEBUG_LOG(4, fname, "Returning out_url = '%s'", out_url.c_str());
}
