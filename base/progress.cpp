#include "base/progress.h"

#include "base/logs.h"

int commentry_flag = 0;

PhaseProgress::PhaseProgress(const char* start_format, const char* end_format)
    : end_format_(end_format), start_(std::time(nullptr)) {
    if (commentry_flag != 0) {
        char date_time[date_time_size];
        std::fprintf(stderr, start_format, get_cur_date_time(date_time));
    }
}

void PhaseProgress::finish() const {
    const time_t elapsed = std::time(nullptr) - start_;
    if (commentry_flag != 0) {
        char date_time[date_time_size];
        std::fprintf(stderr, end_format_, get_cur_date_time(date_time), static_cast<long>(elapsed));
    }
}
