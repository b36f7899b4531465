#include "tools/load/thread_count.h"

#include "base/failure.h"
#include "base/logs.h"
#include "base/text_file.h"
#include "tools/config/replay_settings.h"

#include <cstring>

int zvr_get_num_cpu() {
    // The command that gives the same count by hand.
    DEBUG_LOG(3, "zvr_run_cmd_and_get_last_line", "Method called. Command = %s",
              "cat /proc/cpuinfo | grep '^processor[\t]*' | wc -l");
    TextFile file("/proc/cpuinfo", LineReader::unlimited);
    if (!file.is_open()) {
        fail("Error in getting number of CPUs for the system");
    }
    constexpr const char* keyword = "processor";
    LineText line;
    int count = 0;
    while (file.next(line)) {
        count += std::strncmp(line.text, keyword, std::strlen(keyword)) == 0;
    }
    return count;
}

int choose_thread_count() {
    if (g_num_thread < 0) {
        fail("Number of thread can not be negative");
    }
    return g_num_thread != 0 ? g_num_thread : zvr_get_num_threads(zvr_get_num_cpu());
}

int zvr_get_num_threads(int num_cpu) {
    DEBUG_LOG(3, "zvr_get_num_threads", "Number of cpu = %d", num_cpu);
    if (num_cpu >= 8) {
        return num_cpu - 4;
    }
    return num_cpu >= 4 ? num_cpu - 2 : 1;
}
