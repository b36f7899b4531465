#pragma once

#include "base/failure.h"
#include "tools/load/loading_thread.h"
#include "tools/load/log_pieces.h"
#include "tools/parse/parsing_thread.h"
#include "tools/parse/request_batch.h"

#include <atomic>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

// Called by the worker thread that is the first to fail, at once: the others may wait for input
// that never comes. Null: nobody is told. Set by a program before process_url_files.
extern void (*tell_worker_failed)(const Failure& failure);

// Called by any worker thread once it has read a piece. Null, as in the tool: nobody is told. Set
// by a program before process_url_files.
extern void (*tell_piece_loaded)(const LogPiece& piece);

// The first failure among worker threads; the others then take no further piece.
class WorkerFailure {
  public:
    // May be called by any thread; only the first call counts.
    void report(const Failure& failure);

    bool has_failed() const { return has_failed_; }

    // Throws what was reported. To be called when all threads have ended.
    void throw_if_any() const;

  private:
    std::atomic<bool> has_failed_ = false;
    Failure first_;
};

// What a worker thread has made of a piece.
struct LoadedPiece {
    RequestBatch batch;
    uint32_t worker = 0;    // that has read it, and interned its texts
    bool is_loaded = false; // and waits to be settled
    bool is_begun = false;  // its loading thread has begun with it
    bool could_be_opened = false;
    std::optional<Failure> failure; // of opening or reading it
};

// The pieces of one loading thread, which any worker may read and one at a time settles in their
// order.
struct PieceQueue {
    PieceQueue(parsingThreadArgs& arguments, size_t first_piece, size_t end_piece)
        : thread(arguments), next(first_piece), end(end_piece) {}

    LoadingThread thread;
    size_t next;      // piece to be settled, of all pieces of the run
    size_t end;       // behind the last one
    std::mutex mutex; // of `next`, `is_settling` and the pieces' is_loaded
    bool is_settling = false;
};

// What all workers share.
struct Loading {
    std::vector<LogPiece> pieces;
    std::vector<LoadedPiece> loaded; // by piece
    std::deque<PieceQueue> queues;   // by loading thread
    bool is_told_in_order;           // what becomes of each line is told, in the order of the lines
    std::atomic<size_t> next = 0;    // piece, or queue when told in order, that no worker has taken
    WorkerFailure failure = {};
};

// One worker thread.
struct Worker {
    Worker(Loading& all, uint32_t own_number) : loading(all), number(own_number) {}

    Loading& loading;
    uint32_t number;
    pthread_t handle = {}; // once it is started
    ParsingThread parsing = {};
};

// Body of a worker thread: reads and settles pieces until there are none. `argv` is its Worker;
// returns null.
void* process_url_files_t(void* argv);
