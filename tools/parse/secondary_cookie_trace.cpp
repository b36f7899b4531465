#include "tools/parse/secondary_cookie_trace.h"

#include "base/failure.h"
#include "base/left_results.h"
#include "base/result_names.h"

char akaau_trace = 0;
FILE* akaau_trace_fp = nullptr;

void open_akaau_trace(const OwnDirectory& config_dir) {
    bool succeeded;
    if (akaau_trace == 0) {
        succeeded = config_dir.clear(akaau_trace_name);
    } else {
        akaau_trace_fp = open_stream(config_dir.create(akaau_trace_name, 0666), "w");
        succeeded = akaau_trace_fp != nullptr;
    }
    if (!succeeded) {
        fail("Failed to open akaau.trace file");
    }
}

void close_akaau_trace() {
    if (akaau_trace_fp == nullptr) {
        return;
    }
    const bool failed = std::fflush(akaau_trace_fp) != 0 || std::ferror(akaau_trace_fp) != 0;
    note_left_result(akaau_trace_name, fileno(akaau_trace_fp));
    if (std::fclose(akaau_trace_fp) != 0 || failed) {
        fail("Failed to write to akaau.trace file");
    }
    akaau_trace_fp = nullptr;
}

void trace_matched(const char* akaau_id, const char* jsession_id, const TracePlace& place) {
    if (akaau_trace != 0) {
        std::fprintf(akaau_trace_fp,
                     "Akaau='%s' matched with JSESSIONID='%s' [thread[%d], file name-%s, "
                     "line_number-%ld]\n",
                     akaau_id, jsession_id, place.thread_idx, place.file_name, place.line_num);
    }
}

void trace_updated(const char* akaau_id, const TracePlace& place) {
    if (akaau_trace != 0) {
        std::fprintf(akaau_trace_fp,
                     "Akaau='%s' updated [thread[%d], file name-%s, line number-%ld]\n", akaau_id,
                     place.thread_idx, place.file_name, place.line_num);
    }
}

void trace_added(const char* akaau_id, const TracePlace& place) {
    if (akaau_trace != 0) {
        std::fprintf(akaau_trace_fp,
                     "Akaau='%s' added [thread[%d], file name-%s, line number-%ld]\n", akaau_id,
                     place.thread_idx, place.file_name, place.line_num);
    }
}

void trace_limit_reached(int limit) {
    if (akaau_trace != 0) {
        std::fprintf(akaau_trace_fp,
                     "Maximum unaccounted url limit(%d) reached, no new request will be "
                     "processed\n",
                     limit);
    }
}
