#pragma once

// The replay period of the scenario. Set by read_scenario_file before the worker threads start,
// only read afterwards.

extern unsigned long start_time_stamp; // first second of the period, since the epoch; 0: no bound
extern unsigned long end_time_stamp;   // last second of the period, likewise
extern char time_filter_flag;          // 1 once either end was set
