#pragma once

#include "companions/report/scenario_figures.h"

#include <cstdint>
#include <string>

// Times of requests as the clock of the replay zone shows them.

// Of a time on the scale of tools/parse/timestamps.h.
WallSeconds wall_seconds(uint64_t time_stamp);

// As "2026-03-10 09:00:00".
std::string wall_text(WallSeconds time);
