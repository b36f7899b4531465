#include "base/failure.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace {

std::string formatted(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string message(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    std::vsnprintf(message.data(), message.size() + 1, format, again);
    va_end(again);
    return message;
}

} // namespace

Failure make_failure(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Failure failure = {formatted(format, arguments)};
    va_end(arguments);
    return failure;
}

void fail(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::string message = formatted(format, arguments);
    va_end(arguments);
    // NOLINTNEXTLINE(cert-err60-cpp): copying throws nothing, since a lack of memory ends the run
    throw Failure{std::move(message)};
}
