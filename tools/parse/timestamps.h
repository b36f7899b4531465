#pragma once

#include "tools/parse/field_splitter.h"

#include <ctime>

// Log times on the scale of the replay period. The period's bounds are wall-clock times of the
// replay zone converted by the C library as local times of this process; a log time is brought to
// the same scale: its wall-clock fields converted as local time, less the replay zone's offset,
// less the log zone's own.

// 1 to 12 for "Jan" to "Dec"; 1 for anything else.
int get_month(const char* month_name);

// Converts the text of a log's bracketed time such as 10/Oct/2000:13:55:36 -0700. Returns -1 when
// it is malformed. May split the text in place.
time_t convert_into_second(LineText timestring);

// Converts a date yyyy-mm-dd and a time hh:mm:ss, both in UTC. Returns -1 when either is malformed.
// May split both in place.
time_t convert_into_second_iis(LineText date, LineText time);
