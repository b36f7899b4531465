#pragma once

#include "tools/config/log_files.h"
#include "tools/load/instance_allotment.h"
#include "tools/load/log_pieces.h"
#include "tools/load/session_settlement.h"

#include <cstdint>
#include <ctime>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

// Lines that a file may give; INT64_MAX: all that it has.
int64_t line_budget(const InputFileInfo& file);

// One of the threads that a run loads with: the instances that are allotted to it, file by file and
// line by line in their order. What depends on that order (line budgets, waiting for sessions,
// progress) is decided here; the lines of its pieces may have been read before by any worker.
class LoadingThread {
  public:
    explicit LoadingThread(parsingThreadArgs& arguments) : arguments_(arguments) {}

    // Writes the line that tells of the thread, once. Any worker may call.
    void start();

    // Begins with a piece, the next one in their order; starts if that has not been done.
    void begin(const LogPiece& piece);

    // Writes the lines that tell of the file, which is open.
    void begin_file(const LogPiece& piece) const;

    // Whether the thread has not ended, nor the file's line budget.
    bool wants_more() const { return !is_full_ && !is_file_done_; }

    int64_t lines_before() const { return lines_before_; } // in the file
    int64_t lines_left() const { return max_lines_ - lines_before_; }

    // Settles a batch that holds all of a piece, and keeps of it what the thread wants. `reload`
    // reads so many lines of the piece once more, into the batch (reload_piece).
    void settle_batch(RequestBatch& batch, uint32_t number, const LogPiece& piece,
                      const std::function<void(int64_t max_lines)>& reload);

    // Settles the events of a batch that are new since the last call. Returns false when no more
    // requests can wait: the line of that event is the last one that counts.
    bool settle_events(const RequestBatch& batch, uint32_t number, const LogPiece& piece);

    // Counts the batch, which has to hold no more than the thread wants, takes the request that was
    // refused and the events away from it, and writes the lines that tell of thread and file.
    void end(const LogPiece& piece, RequestBatch& batch);

    const threadCounter& counters() const { return counters_; }
    const LineTally& tally() const { return tally_; } // empty where none is asked for

    // What was given since the last call, in the order in which sessions were given.
    std::vector<SessionGrant> take_grants() { return std::exchange(grants_, {}); }

    // The requests that no session was given to so far, once the thread has started.
    std::vector<WaitingRequest> waiting() const { return settlement_->waiting(); }

  private:
    void count_lines(const LogPiece& piece);
    void end_file(const InputFileInfo& file) const;

    parsingThreadArgs& arguments_;
    std::once_flag is_started_;
    std::optional<SessionSettlement> settlement_; // from the start on
    std::vector<SessionGrant> grants_;
    threadCounter counters_ = {};
    LineTally tally_;
    time_t start_ = 0;
    size_t settled_events_ = 0; // of the batch at work
    int64_t lines_before_ = 0;
    int64_t max_lines_ = 0;
    bool is_file_done_ = false;
    bool is_full_ = false;
};
