#pragma once

#include "base/line_text.h"
#include "base/request_values.h"

#include <cstdint>
#include <string_view>

// A request while its line is read; texts point into the line. Null texts: not in the layout.
struct RequestFields {
    uint64_t time_stamp = 0; // seconds
    int response_time = 0;   // seconds
    int response_code = 0;
    uint32_t client_ip = 0;
    uint32_t response_usec : 31 = 0;    // beyond the whole seconds, microseconds
    uint32_t has_response_time : 1 = 0; // it was read, and is no dash
    LineText method = {};
    LineText url = {};
    LineText cookies = {};
    LineText set_cookies = {};
    LineText host = {};
    LineText location = {};

    // Forgets the line before. Each text by itself: together they would be cleared by an
    // instruction that is slow to start.
    void clear() {
        time_stamp = 0;
        response_time = response_code = 0;
        client_ip = 0;
        response_usec = has_response_time = 0;
        method = url = cookies = set_cookies = host = location = {};
    }

    // The host, terminated, also when there is none.
    std::string_view host_or_none() const {
        return host.text == nullptr ? std::string_view(na_string)
                                    : std::string_view(host.text, host.size);
    }
};
