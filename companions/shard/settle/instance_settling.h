#pragma once

#include "companions/shard/exchange/event_records.h"
#include "companions/shard/exchange/settled_instance.h"
#include "companions/shard/plan/plan.h"
#include "companions/shard/settle/settled_rows.h"
#include "companions/shard/settle/waiting_texts.h"
#include "tools/load/loading_thread.h"

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

// What happened in one log piece.
struct PieceEvents {
    PieceRecord piece;
    std::deque<SessionEvent> events;
    std::map<uint32_t, std::string> sessions; // that responses set, by row
    std::map<uint32_t, std::string> waiting;  // requests that wait (append_request), by row
};

// Settles one instance, log piece by log piece.
class InstanceSettling {
  public:
    // `rows` gets the requests that have waited, once it is known with which session.
    InstanceSettling(const Plan& plan, int32_t instance, SettledRows& rows);

    void settle(const LogPiece& log_piece, PieceEvents& happened);

    // To be called after the last log piece: what still waits has no session.
    SettledInstance finish();

  private:
    void reload(const LogPiece& log_piece, int64_t max_lines, RequestBatch& batch) const;
    void keep_waiting(PieceEvents& happened, uint32_t row_count);
    void give_sessions(const PieceEvents& happened);
    void note_cut(uint32_t log_piece, uint32_t row_count);

    const Plan& plan_;
    SettledRows& rows_;
    parsingThreadArgs arguments_ = {};
    LoadingThread thread_{arguments_};
    WaitingTexts waiting_;
    SettledInstance settled_;
};
