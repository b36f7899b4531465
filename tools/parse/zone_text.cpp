#include "tools/parse/zone_text.h"

#include <cstdio>
#include <cstdlib>

ZoneText read_zone(const char* text) {
    ZoneText zone;
    std::sscanf(text, "%1s%2s%2s", zone.sign, zone.hours, zone.minutes);
    return zone;
}

int64_t zone_offset(const ZoneText& zone) {
    const int64_t offset =
        int64_t{3600} * std::atoi(zone.hours) + int64_t{60} * std::atoi(zone.minutes);
    return zone.sign[0] == '-' ? -offset : offset;
}
