#pragma once

#include <cstdio>
#include <string>

// What these programs check by, as they link nothing that they do not test. Says what differs.
inline bool gives(const std::string& given, const std::string& expected) {
    if (given != expected) {
        std::printf("'%s' instead of '%s'\n", given.c_str(), expected.c_str());
    }
    return given == expected;
}
