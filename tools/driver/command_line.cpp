#include "tools/driver/command_line.h"

#include "base/failure.h"
#include "base/logs.h"
#include "base/progress.h"
#include "tools/config/replay_settings.h"
#include "tools/driver/paths.h"
#include "tools/parse/secondary_cookie_trace.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

char zvr_mode = 0;

const option long_options[] = {
    {"scenario", required_argument, nullptr, 's'},
    {"debug", required_argument, nullptr, 'd'},
    {"mode", required_argument, nullptr, 'm'},
    {"replay_profile", required_argument, nullptr, 'r'},
    {"num_thread", required_argument, nullptr, 't'},
    {"commentry", no_argument, nullptr, 'c'},
    {"dump_query_url", required_argument, nullptr, 'q'},
    {"akaau_trace", no_argument, nullptr, 'a'},
    {nullptr, 0, nullptr, 0},
};
const char* const short_options = "-s:d:m:r:t:cq:a";

namespace {

constexpr const char* fname = "main";

void set_thread_count(const char* argument) {
    g_num_thread = std::atoi(argument);
    if (g_num_thread < 0) {
        fail("Number of thread can not be negative");
    }
}

void apply_option(int letter, const char* argument) {
    switch (letter) {
    case 's':
        set_scenario(argument);
        break;
    case 'd':
        open_debug_log(g_wdir, std::atoi(argument));
        break;
    case 'm':
        zvr_mode = std::strncmp(argument, "gui", 3) == 0;
        break;
    case 'r':
        set_replay_profile(argument);
        break;
    case 't':
        set_thread_count(argument);
        break;
    case 'c':
        commentry_flag = 1;
        break;
    case 'q':
        dump_query_flag = std::atoi(argument) != 0;
        break;
    case 'a':
        akaau_trace = 1;
        break;
    case not_an_option:
        break;
    default:
        error_log(fname, "Invalid argument %c", letter);
    }
}

} // namespace

bool read_command_line(int argc, char* argv[]) {
    bool scenario_named = false;
    int letter;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no thread has been started
    while ((letter = getopt_long(argc, argv, short_options, long_options, nullptr)) != -1) {
        apply_option(letter, optarg);
        scenario_named = scenario_named || letter == 's';
    }
    return scenario_named;
}

void print_usage(const char* program_name) {
    std::fprintf(stderr,
                 "Usage: %s --scenario <scenarioName> [--mode <gui/cli>] [--debug <1-4>]"
                 "Where:\n"
                 "\t--scenario is used to specify scenario name with workspace, profile, project, "
                 "subproject(p,s are optional).\n"
                 "\t--mode can be either gui or cli \n"
                 "\t--debug is to specify debug level from 1-4.\n",
                 program_name);
    end_process(-1);
}
