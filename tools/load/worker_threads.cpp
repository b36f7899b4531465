#include "tools/load/worker_threads.h"

#include "tools/config/replay_settings.h"
#include "base/allocation.h"
#include "base/logs.h"
#include "base/progress.h"
#include "tools/load/input_files.h"
#include "tools/load/line_budgets.h"
#include "tools/load/request_table.h"
#include "tools/load/thread_count.h"
#include "tools/parse/log_loader.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <pthread.h>
#include <utility>
#include <vector>

threadCounter* tc = nullptr;

namespace {

// The numbers of each worker thread's records: one row for each, as in tc.
std::vector<RequestNumbers> numbers_of_thread;

constexpr const char* fname = "process_url_files";
constexpr const char* thread_fname = "process_url_files_t";

int choose_thread_count() {
    if (g_num_thread < 0) {
        fatal_error(fname, "Number of thread can not be negative");
    }
    return g_num_thread != 0 ? g_num_thread : zvr_get_num_threads(zvr_get_num_cpu());
}

// A sum that stays at its highest value instead of wrapping: no such number of records can be had.
uint64_t saturating_sum(uint64_t a, uint64_t b) {
    return b > UINT64_MAX - a ? UINT64_MAX : a + b;
}

// Gives a thread its files: those of the instances from `first_instance` on.
void allot_files(parsingThreadArgs& thread, int first_instance) {
    const int end_instance = first_instance + thread.num_instance;
    for (int i = thread.seq_file_start_idx; i < num_al_files; ++i) {
        if (seq_file_path[i].instance_idx >= end_instance) {
            break;
        }
        ++thread.num_seq_file;
        thread.num_req = saturating_sum(thread.num_req, seq_file_path[i].num_req);
    }
}

// Gives each thread a contiguous run of instances of equal number, the last one what is left.
// Returns how many threads there is work for.
int allot_instances(parsingThreadArgs* threads, int thread_count) {
    const int instance_per_thread =
        static_cast<int>(std::ceil(static_cast<double>(g_num_instance) / thread_count));
    int alloted_instance = 0;
    int alloted_file_idx = 0;
    for (int i = 0; i < thread_count; ++i) {
        parsingThreadArgs& thread = threads[i];
        thread.num_instance = std::min(instance_per_thread, g_num_instance - alloted_instance);
        if (thread.num_instance == 0) {
            return i;
        }
        thread.thread_idx = i;
        thread.seq_file_start_idx = alloted_file_idx;
        allot_files(thread, alloted_instance);
        alloted_file_idx += thread.num_seq_file;
        alloted_instance += thread.num_instance;
    }
    return thread_count;
}

// Requests that the thread's files can hold, as far as can be known before they are read.
uint64_t room_for_files(const parsingThreadArgs& thread) {
    uint64_t room = 0;
    for (int i = 0; i < thread.num_seq_file; ++i) {
        room += max_requests_of(seq_file_path[thread.seq_file_start_idx + i]);
    }
    return room;
}

// The lines that are to be read are announced; room is only taken for what the files can hold.
RequestTables allocate_tables(const parsingThreadArgs* threads, int thread_count) {
    std::vector<uint64_t> rooms;
    for (int i = 0; i < thread_count; ++i) {
        log_allocation(fname, "al_info_array", threads[i].num_req * sizeof(alInfo));
        rooms.push_back(room_for_files(threads[i]));
    }
    return RequestTables(rooms);
}

// Returns false when the thread must load nothing more.
bool load_file(ParsingThread& thread, const parsingThreadArgs& arguments, int seq_file_idx,
               uint64_t* seq_no, UnaccountedRequests& unaccounted) {
    const char* file_name = seq_file_path[seq_file_idx].input_file;
    DEBUG_LOG(2, thread_fname, "url_file_path = %s", file_name);
    FILE* al_file_fp = std::fopen(file_name, "r");
    if (al_file_fp == nullptr) {
        fatal_error(thread_fname, "Unable to open url file %s", file_name);
    }
    char date_time[date_time_size];
    if (commentry_flag != 0) {
        std::fprintf(stderr, "\t\tThread[%d] start processing file '%s' at %s\n", thread.thread_idx,
                     file_name, get_cur_date_time(date_time));
    }
    const bool is_full = load_url_info(thread, *arguments.al_info_array_t, seq_file_idx, al_file_fp,
                                       seq_no, unaccounted) != 0;
    if (is_full) {
        DEBUG_LOG(1, thread_fname,
                  "Max unaccounted urls reached, No more new files will be processed");
    } else {
        DEBUG_LOG(3, thread_fname,
                  "Thread[%d] Processing of Url file - '%s' completed, %lu request processed",
                  thread.thread_idx, file_name, *seq_no);
        if (commentry_flag != 0) {
            std::fprintf(stderr, "\t\tThread[%d] end processeding file '%s' at %s\n",
                         thread.thread_idx, file_name, get_cur_date_time(date_time));
        }
    }
    std::fclose(al_file_fp);
    return !is_full;
}

// Body of one worker thread; `argv` is its parsingThreadArgs.
void* process_url_files_t(void* argv) {
    parsingThreadArgs& arguments = *static_cast<parsingThreadArgs*>(argv);
    ParsingThread thread = {.thread_idx = arguments.thread_idx};
    UnaccountedRequests unaccounted;
    uint64_t seq_no = 0;
    const time_t start = std::time(nullptr);
    char date_time[date_time_size];
    if (commentry_flag != 0) {
        std::fprintf(stderr, "\tThread[%d] started at %s\n", thread.thread_idx,
                     get_cur_date_time(date_time));
    }
    for (int i = 0; i < arguments.num_seq_file; ++i) {
        const int seq_file_idx = arguments.seq_file_start_idx + i;
        if (seq_file_path[seq_file_idx].body_flag != 0) {
            continue;
        }
        if (!load_file(thread, arguments, seq_file_idx, &seq_no, unaccounted)) {
            break;
        }
    }
    thread.numbers.finish();
    tc[thread.thread_idx] = thread.counters;
    numbers_of_thread[static_cast<size_t>(thread.thread_idx)] = std::move(thread.numbers);
    arguments.total_valid_req_t = seq_no;
    if (commentry_flag != 0) {
        std::fprintf(stderr, "\tThread[%d] ended at %s , total time taken = %ld(sec)\n",
                     thread.thread_idx, get_cur_date_time(date_time),
                     static_cast<long>(std::time(nullptr) - start));
    }
    return nullptr;
}

void start_threads(std::vector<pthread_t>& handles, parsingThreadArgs* threads,
                   RequestTables& tables) {
    for (size_t i = 0; i < handles.size(); ++i) {
        parsingThreadArgs& thread = threads[i];
        thread.al_info_array_t = &tables.of_thread(i);
        if (pthread_create(&handles[i], nullptr, process_url_files_t, &thread) != 0) {
            fatal_error(fname, "Failed to create Processing thread[%d]", thread.thread_idx);
        }
        DEBUG_LOG(3, fname,
                  "Thread[%d] created, seq_file_start_idx = %d, num seq file = %d, num_req = %lu ",
                  thread.thread_idx, thread.seq_file_start_idx, thread.num_seq_file,
                  thread.num_req);
    }
}

void join_threads(const std::vector<pthread_t>& handles, const parsingThreadArgs* threads) {
    for (size_t i = 0; i < handles.size(); ++i) {
        if (pthread_join(handles[i], nullptr) != 0) {
            fatal_error(fname, "Thread[%d] failed to complete", threads[i].thread_idx);
        }
        g_valid_request += threads[i].total_valid_req_t;
        g_total_req += tc[i].total_req;
        g_total_bad_req += tc[i].bad_req;
        g_time_filtered_req += tc[i].time_filtered_req;
        DEBUG_LOG(2, fname, "Thread[%d] competed successfully, Total files parsed = %d",
                  threads[i].thread_idx, threads[i].num_seq_file);
    }
}

void merge_tables(RequestTables& tables, const parsingThreadArgs* threads, int thread_count) {
    log_allocation(fname, "al_info_array", g_valid_request * sizeof(alInfo));
    std::vector<uint64_t> counts(static_cast<size_t>(thread_count));
    std::transform(threads, threads + thread_count, counts.begin(),
                   [](const parsingThreadArgs& thread) { return thread.total_valid_req_t; });
    al_info_array = tables.join(counts);
    for (RequestNumbers& numbers : numbers_of_thread) {
        request_numbers.append(std::move(numbers));
    }
    numbers_of_thread.clear();
}

} // namespace

void process_url_files() {
    DEBUG_LOG(4, fname, "Method called");
    fix_line_budgets();
    int thread_count = choose_thread_count();
    auto* threads = static_cast<parsingThreadArgs*>(allocate_zeroed(
        fname, "Thread Arguments", static_cast<size_t>(thread_count), sizeof(parsingThreadArgs)));
    thread_count = allot_instances(threads, thread_count);
    RequestTables tables = allocate_tables(threads, thread_count);
    tc = static_cast<threadCounter*>(allocate_zeroed(
        fname, "thread counter", static_cast<size_t>(thread_count), sizeof(threadCounter)));
    numbers_of_thread.resize(static_cast<size_t>(thread_count));
    std::vector<pthread_t> handles(static_cast<size_t>(thread_count));
    start_threads(handles, threads, tables);
    join_threads(handles, threads);
    DEBUG_LOG(3, fname, "Processing of URL files completed, total valid requests are = %lu",
              g_valid_request);
    merge_tables(tables, threads, thread_count);
    std::free(threads);
    DEBUG_LOG(3, fname, "Url table copied to new table, total valid urls count = %lu",
              g_valid_request);
}
