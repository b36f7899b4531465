#include "tools/load/load_phase.h"

#include "base/allocation.h"
#include "base/failure.h"
#include "base/logs.h"
#include "tools/load/input_files.h"
#include "tools/load/instance_allotment.h"
#include "tools/load/line_budgets.h"
#include "tools/load/log_pieces.h"
#include "tools/load/noted_pieces.h"
#include "tools/load/request_table.h"
#include "tools/load/tallied_lines.h"
#include "tools/load/thread_count.h"
#include "tools/load/worker.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <utility>
#include <vector>

threadCounter* tc = nullptr;
std::vector<NotedPiece>* noted_pieces = nullptr;
LineTally* line_tally = nullptr;
int run_thread_count = 1;

namespace {

constexpr const char* fname = "process_url_files";
constexpr size_t announced_request_size = 256; // of a line's room, as the debug log tells it

// Room is only taken for requests that there are.
void announce_tables(const parsingThreadArgs* threads, int thread_count) {
    for (int i = 0; i < thread_count; ++i) {
        log_allocation(fname, "al_info_array", threads[i].num_req * announced_request_size);
    }
}

// Pieces go to any worker, unless somebody is told of single lines.
void prepare(Loading& loading, const std::vector<LogExtent>& extents, parsingThreadArgs* threads,
             int thread_count) {
    loading.pieces = cut_logs(extents, threads, thread_count);
    loading.loaded = std::vector<LoadedPiece>(loading.pieces.size());
    loading.is_told_in_order = lines_are_told();
    size_t next = 0;
    for (int i = 0; i < thread_count; ++i) {
        const size_t first = next;
        while (next < loading.pieces.size() && loading.pieces[next].thread == i) {
            ++next;
        }
        loading.queues.emplace_back(threads[i], first, next);
    }
}

// At least as many as there are loading threads.
size_t choose_worker_count(const Loading& loading) {
    const size_t wanted = loading.is_told_in_order ? 0 : static_cast<size_t>(run_thread_count);
    return std::max(loading.queues.size(), std::min(wanted, loading.pieces.size()));
}

// Returns how many threads could be started. Those beyond the loading threads can be done without.
size_t start_threads(std::deque<Worker>& workers, Loading& loading,
                     const parsingThreadArgs* threads) {
    for (size_t i = 0; i < workers.size(); ++i) {
        const bool is_needed = i < loading.queues.size();
        if (pthread_create(&workers[i].handle, nullptr, process_url_files_t, &workers[i]) != 0) {
            if (is_needed) {
                loading.failure.report(make_failure("Failed to create Processing thread[%zu]", i));
            }
            return i;
        }
        if (is_needed) {
            DEBUG_LOG(3, fname,
                      "Thread[%d] created, seq_file_start_idx = %d, num seq file = %d, num_req = "
                      "%lu ",
                      threads[i].thread_idx, threads[i].seq_file_start_idx, threads[i].num_seq_file,
                      threads[i].num_req);
        }
    }
    return workers.size();
}

void join_threads(const std::deque<Worker>& workers, size_t started_count, Loading& loading) {
    for (size_t i = 0; i < started_count; ++i) {
        if (pthread_join(workers[i].handle, nullptr) != 0) {
            loading.failure.report(make_failure("Thread[%zu] failed to complete", i));
        }
    }
}

void sum_up(const Loading& loading, const parsingThreadArgs* threads) {
    for (size_t i = 0; i < loading.queues.size(); ++i) {
        tc[i] = loading.queues[i].thread.counters();
        g_valid_request += threads[i].total_valid_req_t;
        g_total_req += tc[i].total_req;
        g_total_bad_req += tc[i].bad_req;
        g_time_filtered_req += tc[i].time_filtered_req;
        DEBUG_LOG(2, fname, "Thread[%d] competed successfully, Total files parsed = %d",
                  threads[i].thread_idx, threads[i].num_seq_file);
    }
}

void refuse_too_many_requests() {
    if (g_valid_request > max_requests) {
        fail("More than %u requests can not be processed", max_requests);
    }
}

void hand_notes_over(Loading& loading) {
    for (size_t i = 0; noted_pieces != nullptr && i < loading.pieces.size(); ++i) {
        RequestBatch& batch = loading.loaded[i].batch;
        noted_pieces->push_back({loading.pieces[i], std::move(batch.notes), batch.has_line_pieces});
    }
}

void hand_tallies_over(const Loading& loading) {
    for (const PieceQueue& queue : loading.queues) {
        if (line_tally != nullptr) {
            line_tally->merge(queue.thread.tally());
        }
    }
}

void make_request_table(Loading& loading, std::deque<Worker>& workers) {
    log_allocation(fname, "al_info_array", g_valid_request * announced_request_size);
    std::vector<WorkerBatch> batches;
    batches.reserve(loading.loaded.size());
    for (LoadedPiece& loaded : loading.loaded) {
        batches.push_back({&loaded.batch, loaded.worker});
    }
    std::vector<SessionGrant> grants;
    for (PieceQueue& queue : loading.queues) {
        const std::vector<SessionGrant> more = queue.thread.take_grants();
        grants.insert(grants.end(), more.begin(), more.end());
    }
    std::vector<RequestTexts> texts;
    texts.reserve(workers.size());
    for (Worker& worker : workers) {
        texts.push_back(worker.parsing.interner.take_texts());
    }
    request_table = join_batches(batches, std::move(texts), grants, run_thread_count);
}

} // namespace

void process_url_files() {
    DEBUG_LOG(4, fname, "Method called");
    const std::vector<LogExtent> extents = fix_line_budgets();
    run_thread_count = choose_thread_count();
    auto* threads = static_cast<parsingThreadArgs*>(
        allocate_zeroed(fname, "Thread Arguments", static_cast<size_t>(run_thread_count),
                        sizeof(parsingThreadArgs)));
    const int thread_count = allot_instances(threads, run_thread_count);
    announce_tables(threads, thread_count);
    tc = static_cast<threadCounter*>(allocate_zeroed(
        fname, "thread counter", static_cast<size_t>(thread_count), sizeof(threadCounter)));
    Loading loading;
    prepare(loading, extents, threads, thread_count);
    std::deque<Worker> workers;
    for (uint32_t i = 0; i < choose_worker_count(loading); ++i) {
        workers.emplace_back(loading, i);
    }
    join_threads(workers, start_threads(workers, loading, threads), loading);
    loading.failure.throw_if_any();
    sum_up(loading, threads);
    DEBUG_LOG(3, fname, "Processing of URL files completed, total valid requests are = %lu",
              g_valid_request);
    refuse_too_many_requests();
    hand_notes_over(loading);
    hand_tallies_over(loading);
    make_request_table(loading, workers);
    std::free(threads);
    DEBUG_LOG(3, fname, "Url table copied to new table, total valid urls count = %lu",
              g_valid_request);
}
