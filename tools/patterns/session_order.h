#pragma once

#include "tools/parse/request_numbers.h"
#include "tools/parse/request_record.h"

#include <cstdint>
#include <vector>

// The order in which requests are tested for redirects: session by session, each in time.

// Order of two requests by session cookie and time, and by client address and time. Less than,
// equal to or greater than 0.
int sort_al_info_using_jid_time(const alInfo& a, const alInfo& b);
int sort_al_info_using_cip_time(const alInfo& a, const alInfo& b);

// The order of a table of records by the comparator that fits session_mode; requests of one session
// and one second keep the order of the table. The records stay where they are: moving their 256
// bytes about would cost more than all else.
struct SessionOrder {
    std::vector<uint32_t> requests;     // indices of the records
    std::vector<uint32_t> session_ends; // for each session, one past its last place in `requests`
};

// Orders the records that have the given numbers.
SessionOrder order_by_session(const alInfo* records, const RequestNumbers& numbers);
