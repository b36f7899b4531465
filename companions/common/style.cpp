#include "companions/common/style.h"

#include <cstdlib>
#include <fmt/core.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

std::string_view environment(const char* name) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no thread changes the environment
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

} // namespace

Style::Style(FILE* stream)
    : is_coloured_(isatty(fileno(stream)) == 1 && environment("NO_COLOR").empty() &&
                   environment("TERM") != "dumb") {}

std::string Style::coloured(std::string_view code, std::string_view text) const {
    return is_coloured_ ? fmt::format("\x1b[{}m{}\x1b[0m", code, text) : std::string(text);
}

size_t terminal_width(FILE* stream, size_t otherwise) {
    winsize size = {};
    const bool is_known = ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return is_known ? size.ws_col : otherwise;
}
