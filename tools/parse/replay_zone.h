#pragma once

#include <cstdint>
#include <string>

// Offset of the replay zone in seconds west of UTC. Set once by the driver before any log is read,
// from get_timezone_from_default_setting or, when that gives -1, from the process's local zone.
extern int64_t replay_timezone;

// What get_timezone_from_default_setting has given for it, maybe -1. Set with it.
extern int64_t default_timezone;

// Reads GMT_OFFSET from sys/replay_settings.default of the installation in `work_dir`. Returns
// the offset in seconds west of UTC (a line without a value means 0); -1 when the file or the line
// is missing (a missing file is reported on standard error). Tells the line observer of the line
// that it goes by, with the text after the keyword.
int64_t get_timezone_from_default_setting(const std::string& work_dir);
