#include "tools/load/thread_count.h"

#include "base/logs.h"
#include "base/line_reader.h"

#include <cstdio>
#include <cstring>

int zvr_get_num_cpu() {
    // The command that gives the same count by hand.
    DEBUG_LOG(3, "zvr_run_cmd_and_get_last_line", "Method called. Command = %s",
              "cat /proc/cpuinfo | grep '^processor[\t]*' | wc -l");
    FILE* file = std::fopen("/proc/cpuinfo", "r");
    if (file == nullptr) {
        fatal_error("zvr_get_num_cpu", "Error in getting number of CPUs for the system");
    }
    constexpr const char* keyword = "processor";
    LineReader lines(fileno(file), LineReader::unlimited);
    LineText line;
    int count = 0;
    while (lines.next(line)) {
        count += std::strncmp(line.text, keyword, std::strlen(keyword)) == 0;
    }
    lines.require_whole("zvr_get_num_cpu", "/proc/cpuinfo");
    std::fclose(file);
    return count;
}

int zvr_get_num_threads(int num_cpu) {
    DEBUG_LOG(3, "zvr_get_num_threads", "Number of cpu = %d", num_cpu);
    if (num_cpu >= 8) {
        return num_cpu - 4;
    }
    return num_cpu >= 4 ? num_cpu - 2 : 1;
}
