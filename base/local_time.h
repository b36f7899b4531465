#pragma once

#include <ctime>
#include <optional>

// Calendar times of the process's time zone as seconds since the epoch. Any thread may convert;
// what comes out depends on the zone and the time alone. The zone is the one that TZ names at the
// process's first conversion or at its last call of tzset.

struct CalendarTime {
    int year;  // in full
    int month; // from 1
    int day;   // from 1
    int hours;
    int minutes;
    int seconds;
};

// What mktime gives, daylight saving left to it, in a process that has converted nothing before:
// fields out of range are normalised, and of a time that the clock shows twice or never one answer
// is fixed. -1 when the year is beyond what the C library can hold.
time_t local_time_to_epoch(const CalendarTime& time);

// When second 0 of this minute is, its seconds left aside, if the others follow it one by one.
// Nothing when the clock is changed inside the minute, or when a field is out of range. Each thread
// remembers the minutes it met last.
std::optional<time_t> local_minute_to_epoch(const CalendarTime& time);
