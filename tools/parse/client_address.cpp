#include "tools/parse/client_address.h"

#include <cstdio>

namespace {

// The form that nearly every address has: four groups of one to three digits, with nothing before
// them.
bool read_plain_address(const char* addr, uint32_t* out) {
    constexpr int group_count = 4;
    constexpr int max_digits = 3;
    uint32_t address = 0;
    for (int group = 0; group < group_count; ++group) {
        uint32_t number = 0;
        int digits = 0;
        while (digits < max_digits && *addr >= '0' && *addr <= '9') {
            number = number * 10 + static_cast<uint32_t>(*addr++ - '0');
            ++digits;
        }
        if (digits == 0 || number > 255 || (group < group_count - 1 && *addr++ != '.')) {
            return false;
        }
        address = address << 8 | number;
    }
    if (*addr >= '0' && *addr <= '9') {
        return false; // a longer number: its value decides
    }
    *out = address;
    return true;
}

} // namespace

int zv_ip_addr(const char* addr, uint32_t* out) {
    if (read_plain_address(addr, out)) {
        return 0;
    }
    int numbers[4] = {-1, -1, -1, -1};
    std::sscanf(addr, "%d.%d.%d.%d", &numbers[0], &numbers[1], &numbers[2], &numbers[3]);
    uint32_t address = 0;
    for (const int number : numbers) {
        if (number < 0 || number > 255) {
            return -1;
        }
        address = address << 8 | static_cast<uint32_t>(number);
    }
    *out = address;
    return 0;
}
