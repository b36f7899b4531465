#pragma once

#include "tools/load/unaccounted_requests.h"
#include "tools/parse/request_batch.h"

#include <cstdint>
#include <vector>

// The session of `donor` is that of `receiver`, too.
struct SessionGrant {
    RowPlace receiver;
    RowPlace donor;
};

// The batch that is gone through, and where its lines stand.
struct BatchPlace {
    uint32_t batch; // number
    const char* file_name;
    int64_t lines_before; // in the file
};

// Finds the sessions of one loading thread's requests that had none when they were read: each waits
// until a response sets a session together with its secondary cookie. Goes through what happened in
// the order of the lines, and tells of it in the trace and the debug log. What it keeps is bounded
// by the requests that may wait.
class SessionSettlement {
  public:
    // `thread_idx`: number of the loading thread.
    explicit SessionSettlement(int thread_idx) : thread_idx_(thread_idx) {}

    // Takes the next event, of which only the URL, where it has one, and the file's name must live
    // as long as this object. Puts the sessions that it gives to others behind `grants`, in the
    // order in which they are given. Returns false when its request should wait and no more can:
    // the thread must load nothing more, and the request does not count.
    bool settle(const SessionEvent& event, const BatchPlace& place,
                std::vector<SessionGrant>& grants);

    // The requests that no session was given to so far; at the end of the thread, none will be.
    std::vector<WaitingRequest> waiting() const { return unaccounted_.all(); }

  private:
    void give_session(const SessionEvent& donor, const BatchPlace& place,
                      std::vector<SessionGrant>& grants);

    int thread_idx_;
    UnaccountedRequests unaccounted_;
};
