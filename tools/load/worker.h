#pragma once

#include "base/failure.h"
#include "tools/load/instance_allotment.h"
#include "tools/parse/parsing_thread.h"

#include <atomic>
#include <pthread.h>

// Called by the worker thread that is the first to fail, at once: the others may wait for input
// that never comes. Null: nobody is told. Set by a program before process_url_files.
extern void (*tell_worker_failed)(const Failure& failure);

// The first failure among worker threads; the others then take no further file.
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

// One worker thread: what it is given, and what it leaves.
struct Worker {
    parsingThreadArgs& arguments;
    WorkerFailure& failure;      // of all workers
    pthread_t handle = {};       // once it is started
    RequestNumbers numbers = {}; // of its records
    threadCounter counters = {}; // of its lines
};

// Body of a worker thread: loads its files. `argv` is its Worker; returns null.
void* process_url_files_t(void* argv);
