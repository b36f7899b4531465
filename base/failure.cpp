#include "base/failure.h"

#include <cstdarg>
#include <cstdio>

namespace {

Failure failure_of(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    Failure failure;
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    failure.message.resize(length > 0 ? static_cast<size_t>(length) : 0);
    std::vsnprintf(failure.message.data(), failure.message.size() + 1, format, again);
    va_end(again);
    return failure;
}

} // namespace

Failure make_failure(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Failure failure = failure_of(format, arguments);
    va_end(arguments);
    return failure;
}

void fail(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const Failure failure = failure_of(format, arguments);
    va_end(arguments);
    throw failure;
}
