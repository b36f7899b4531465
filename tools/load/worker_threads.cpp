#include "tools/load/worker_threads.h"

#include "base/allocation.h"
#include "base/failure.h"
#include "base/logs.h"
#include "tools/config/replay_settings.h"
#include "tools/load/input_files.h"
#include "tools/load/instance_allotment.h"
#include "tools/load/line_budgets.h"
#include "tools/load/request_table.h"
#include "tools/load/thread_count.h"
#include "tools/load/worker.h"

#include <cstdint>
#include <cstdlib>
#include <deque>
#include <utility>
#include <vector>

threadCounter* tc = nullptr;

namespace {

constexpr const char* fname = "process_url_files";

// They do not move, since each thread writes into its own.
using Workers = std::deque<Worker>;

int choose_thread_count() {
    if (g_num_thread < 0) {
        fail("Number of thread can not be negative");
    }
    return g_num_thread != 0 ? g_num_thread : zvr_get_num_threads(zvr_get_num_cpu());
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

Workers make_workers(parsingThreadArgs* threads, int thread_count, RequestTables& tables,
                     WorkerFailure& failure) {
    Workers workers;
    for (int i = 0; i < thread_count; ++i) {
        threads[i].al_info_array_t = &tables.of_thread(static_cast<size_t>(i));
        workers.push_back({.arguments = threads[i], .failure = failure});
    }
    return workers;
}

// Returns how many threads could be started.
size_t start_threads(Workers& workers, WorkerFailure& failure) {
    for (size_t i = 0; i < workers.size(); ++i) {
        const parsingThreadArgs& thread = workers[i].arguments;
        if (pthread_create(&workers[i].handle, nullptr, process_url_files_t, &workers[i]) != 0) {
            failure.report(make_failure("Failed to create Processing thread[%zu]", i));
            return i;
        }
        DEBUG_LOG(3, fname,
                  "Thread[%d] created, seq_file_start_idx = %d, num seq file = %d, num_req = %lu ",
                  thread.thread_idx, thread.seq_file_start_idx, thread.num_seq_file,
                  thread.num_req);
    }
    return workers.size();
}

void join_threads(const Workers& workers, size_t started_count, WorkerFailure& failure) {
    for (size_t i = 0; i < started_count; ++i) {
        const Worker& worker = workers[i];
        if (pthread_join(worker.handle, nullptr) != 0) {
            failure.report(make_failure("Thread[%zu] failed to complete", i));
        }
        tc[i] = worker.counters;
        g_valid_request += worker.arguments.total_valid_req_t;
        g_total_req += tc[i].total_req;
        g_total_bad_req += tc[i].bad_req;
        g_time_filtered_req += tc[i].time_filtered_req;
        if (!failure.has_failed()) {
            DEBUG_LOG(2, fname, "Thread[%d] competed successfully, Total files parsed = %d",
                      worker.arguments.thread_idx, worker.arguments.num_seq_file);
        }
    }
    failure.throw_if_any();
}

void merge_tables(RequestTables& tables, Workers& workers) {
    log_allocation(fname, "al_info_array", g_valid_request * sizeof(alInfo));
    std::vector<uint64_t> counts;
    for (const Worker& worker : workers) {
        counts.push_back(worker.arguments.total_valid_req_t);
    }
    al_info_array = tables.join(counts);
    for (Worker& worker : workers) {
        request_numbers.append(std::move(worker.numbers));
    }
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
    WorkerFailure failure;
    Workers workers = make_workers(threads, thread_count, tables, failure);
    join_threads(workers, start_threads(workers, failure), failure);
    DEBUG_LOG(3, fname, "Processing of URL files completed, total valid requests are = %lu",
              g_valid_request);
    merge_tables(tables, workers);
    std::free(threads);
    DEBUG_LOG(3, fname, "Url table copied to new table, total valid urls count = %lu",
              g_valid_request);
}
