#pragma once

#include <cstdio>

// Error lines for the user interface, levelled debug lines for the developer, and the clock text of
// both. error_log, debug_log and get_cur_date_time may be called by any thread at any time; each
// line reaches its stream in one piece.

// State of the debug log, set by open_debug_log and close_debug_log on the main thread before and
// after the worker threads.
extern int debug_on;             // 1 while the debug log is open
extern int debug_level;          // highest level written, 1 to 4; from option `debug`, 0 without it
extern FILE* debug_fp;           // the open debug log
extern const char tool_name[20]; // second field of every debug line

// Writes "ZVR_GUI_ERROR:<message>" and a line break to standard output. `fname` is the calling
// function; it is not part of the line. Messages are cut at 102,399 characters.
[[gnu::format(printf, 2, 3)]] void error_log(const char* fname, const char* format, ...);

// Writes the error line and ends the process with status -1, whichever thread calls. When several
// threads fail at once, one of them reports and the others wait for the end. For what no caller can
// answer, as memory that has run out; all else is a Failure (base/failure.h).
[[noreturn, gnu::format(printf, 1, 2)]] void fatal_error(const char* format, ...);

// Ends the process with the given status after all streams were written out, without running the
// destructors that threads still at work may depend on.
[[noreturn]] void end_process(int status);

// Writes "<date and time>|zvr_al_gen_url_list|<fname>|<message>" and a line break to the debug log
// when debugging is on and `level` (1 to 4) is at most debug_level. Use DEBUG_LOG, which asks
// before its arguments are computed.
[[gnu::format(printf, 3, 4)]] void debug_log(int level, const char* fname, const char* format, ...);

inline bool debug_wanted(int level) {
    return debug_level >= level && debug_on != 0;
}

#define DEBUG_LOG(level, fname, ...)                                                               \
    do {                                                                                           \
        if (debug_wanted(level)) {                                                                 \
            debug_log(level, fname, __VA_ARGS__);                                                  \
        }                                                                                          \
    } while (false)

constexpr size_t date_time_size = 100; // bytes that get_cur_date_time may write

// The local time now as "mm/dd/yy hh:mm:ss", or "Error|Error" when it cannot be had. Writes it to
// `time_string` (date_time_size bytes) and returns that; with null, to a buffer of the calling
// thread that the next such call overwrites.
const char* get_cur_date_time(char* time_string);

// Replaces the debug log of the installation `work_dir` by an empty one and writes lines up to
// `level` into it. When the file cannot be made, says so in an error line and leaves debugging off.
void open_debug_log(const char* work_dir, int level);

// Closes the debug log if it is open; later debug lines are dropped.
void close_debug_log();
