#pragma once

#include <getopt.h>

// The command line. Its options are applied in the order given; of two of a kind the later one
// counts.

extern char
    zvr_mode; // 1 after option `mode` with a value that begins with "gui"; nothing depends on it

// The options as getopt_long takes them. The checker command reads a run's command line with them,
// too. The leading "-" gives words that are not options a letter, so that POSIXLY_CORRECT in the
// environment does not let them end the options.
constexpr int not_an_option = 1; // the letter of such a word
extern const option long_options[];
extern const char* const short_options;

// Applies the options to the settings that they name (each in the header of its module). An unknown
// option or one without its value gives an error line and is passed over. Returns whether a
// scenario was named. Fails when a name is malformed or the thread count negative.
bool read_command_line(int argc, char* argv[]);

// Writes the usage text to standard error and ends the process with status -1.
[[noreturn]] void print_usage(const char* program_name);
