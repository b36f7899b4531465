#include "tools/load/worker.h"

#include "base/file_descriptor.h"
#include "base/logs.h"
#include "base/progress.h"
#include "tools/config/log_files.h"
#include "tools/parse/log_loader.h"

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <utility>

void (*tell_worker_failed)(const Failure& failure) = nullptr;

namespace {

constexpr const char* fname = "process_url_files_t";

// Returns false when the thread must load nothing more.
bool load_file(ParsingThread& thread, const parsingThreadArgs& arguments, int seq_file_idx,
               uint64_t* seq_no, UnaccountedRequests& unaccounted) {
    const char* file_name = seq_file_path[seq_file_idx].input_file;
    DEBUG_LOG(2, fname, "url_file_path = %s", file_name);
    FILE* al_file_fp = std::fopen(file_name, "r");
    if (al_file_fp == nullptr) {
        fail("Unable to open url file %s", file_name);
    }
    write_progress("\t\tThread[%d] start processing file '%s' at %s\n", thread.thread_idx,
                   file_name, get_cur_date_time(nullptr));
    const bool is_full = load_url_info(thread, *arguments.al_info_array_t, seq_file_idx, al_file_fp,
                                       seq_no, unaccounted) != 0;
    if (is_full) {
        DEBUG_LOG(1, fname, "Max unaccounted urls reached, No more new files will be processed");
    } else {
        DEBUG_LOG(3, fname,
                  "Thread[%d] Processing of Url file - '%s' completed, %lu request processed",
                  thread.thread_idx, file_name, *seq_no);
        write_progress("\t\tThread[%d] end processeding file '%s' at %s\n", thread.thread_idx,
                       file_name, get_cur_date_time(nullptr));
    }
    std::fclose(al_file_fp);
    return !is_full;
}

void load_files(Worker& worker) {
    parsingThreadArgs& arguments = worker.arguments;
    ParsingThread thread = {.thread_idx = arguments.thread_idx};
    UnaccountedRequests unaccounted;
    uint64_t seq_no = 0;
    for (int i = 0; i < arguments.num_seq_file && !worker.failure.has_failed(); ++i) {
        const int seq_file_idx = arguments.seq_file_start_idx + i;
        const bool is_log = seq_file_path[seq_file_idx].body_flag == 0;
        if (is_log && !load_file(thread, arguments, seq_file_idx, &seq_no, unaccounted)) {
            break;
        }
    }
    thread.numbers.finish();
    worker.numbers = std::move(thread.numbers);
    worker.counters = thread.counters;
    arguments.total_valid_req_t = seq_no;
}

} // namespace

void WorkerFailure::report(const Failure& failure) {
    if (has_failed_.exchange(true)) {
        return;
    }
    first_ = failure;
    if (tell_worker_failed != nullptr) {
        tell_worker_failed(failure);
    }
}

void WorkerFailure::throw_if_any() const {
    if (has_failed_) {
        fail("%s", first_.message.c_str());
    }
}

void* process_url_files_t(void* argv) {
    Worker& worker = *static_cast<Worker*>(argv);
    const int number = worker.arguments.thread_idx;
    const time_t start = std::time(nullptr);
    write_progress("\tThread[%d] started at %s\n", number, get_cur_date_time(nullptr));
    try {
        load_files(worker);
    } catch (const Failure& failure) {
        worker.failure.report(failure);
    }
    if (!worker.failure.has_failed()) { // whichever worker's
        write_progress("\tThread[%d] ended at %s , total time taken = %ld(sec)\n", number,
                       get_cur_date_time(nullptr), static_cast<long>(std::time(nullptr) - start));
    }
    return nullptr;
}
