#pragma once

#include <string>

// Why the work at hand cannot go on. Readers and loaders throw it instead of ending the process, so
// that a program decides what becomes of it: the tool writes the message as an error line and ends.
struct Failure {
    std::string message; // without a line feed
};

// A Failure with the formatted message.
[[gnu::format(printf, 1, 2)]] Failure make_failure(const char* format, ...);

// Throws make_failure of the same.
[[noreturn, gnu::format(printf, 1, 2)]] void fail(const char* format, ...);
