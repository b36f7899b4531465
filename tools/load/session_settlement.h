#pragma once

#include "tools/load/unaccounted_requests.h"
#include "tools/parse/request_batch.h"

#include <cstdint>
#include <vector>

// A request by the place of its row.
struct RowPlace {
    uint32_t batch; // number of the batch
    uint32_t row;   // in that batch
};

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
// the order of the lines, and tells of it in the trace and the debug log.
class SessionSettlement {
  public:
    // Ends the run when memory is out. `thread_idx`: number of the loading thread.
    explicit SessionSettlement(int thread_idx) : thread_idx_(thread_idx) {}

    // Takes the next event, which must live as long as this object. Returns false when its request
    // should wait and no more can: the thread must load nothing more, and the request does not
    // count.
    bool settle(const SessionEvent& event, const BatchPlace& place);

    // In the order in which sessions were given.
    const std::vector<SessionGrant>& grants() const { return grants_; }

  private:
    struct WaitingRequest {
        const SessionEvent* event;
        BatchPlace place;
    };

    void give_session(const SessionEvent& donor, const BatchPlace& place);

    int thread_idx_;
    UnaccountedRequests unaccounted_;
    std::vector<WaitingRequest> waiting_; // by number in unaccounted_; never taken out
    std::vector<SessionGrant> grants_;
};
