#include "machine_report.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <string>
#include <sys/utsname.h>
#include <unistd.h>

namespace bench {

namespace {

std::string processor_name() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("model name"))
            return line.substr(line.find(':') + 2);
    }
    return "unknown processor";
}

std::string date() {
    const std::time_t now = std::time(nullptr);
    std::tm fields{};
    gmtime_r(&now, &fields);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M UTC", &fields);
    return text.data();
}

} // namespace

void print_machine_report() {
    utsname system{};
    uname(&system);
    const double memory = static_cast<double>(sysconf(_SC_PHYS_PAGES)) *
                          static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e9;
    const char* zone = std::getenv("TZ"); // NOLINT(concurrency-mt-unsafe): one thread
    std::printf("Date: %s\n", date().c_str());
    std::printf("Machine: %ld x %s, %.0f GB memory, %s %s\n", sysconf(_SC_NPROCESSORS_ONLN),
                processor_name().c_str(), memory, system.sysname, system.release);
    std::printf("TZ: %s\n", zone == nullptr ? "not set" : zone);
    std::fflush(stdout);
}

} // namespace bench
