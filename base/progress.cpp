#include "base/progress.h"

#include "base/logs.h"

#include <cstdarg>
#include <cstdio>

int commentry_flag = 0;

void write_progress(const char* format, ...) {
    if (commentry_flag != 0) {
        va_list arguments;
        va_start(arguments, format);
        std::vfprintf(stderr, format, arguments);
        va_end(arguments);
    }
}

PhaseProgress::PhaseProgress(const char* start_format, const char* end_format)
    : end_format_(end_format), start_(std::time(nullptr)) {
    write_progress(start_format, get_cur_date_time(nullptr));
}

void PhaseProgress::finish() const {
    const time_t elapsed = std::time(nullptr) - start_;
    write_progress(end_format_, get_cur_date_time(nullptr), static_cast<long>(elapsed));
}
