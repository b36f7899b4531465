#pragma once

#include <cstdint>

// A zone as logs and settings write it: a sign, hours and minutes, each text empty when it is
// missing.
struct ZoneText {
    char sign[2] = "";
    char hours[3] = "";
    char minutes[3] = "";
};

// Reads a zone such as " -0700"; its pieces may be parted by blanks.
ZoneText read_zone(const char* text);

// Seconds east of UTC; any sign but "-" counts as "+".
int64_t zone_offset(const ZoneText& zone);
