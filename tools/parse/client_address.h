#pragma once

#include <cstdint>

// Reads a dotted IPv4 address at the start of `addr` into `*out`, the first number in the most
// significant byte; text after the fourth number is ignored. Returns 0, or -1 when `addr` is no
// such address (`*out` is then unchanged).
int zv_ip_addr(const char* addr, uint32_t* out);
