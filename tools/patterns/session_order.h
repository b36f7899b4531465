#pragma once

#include "tools/parse/request_record.h"

#include <cstdint>
#include <vector>

// The order in which requests are tested for redirects: session by session, each in time.

// Order of two requests by session cookie and time, and by client address and time. Less than,
// equal to or greater than 0.
int sort_al_info_using_jid_time(const alInfo& a, const alInfo& b);
int sort_al_info_using_cip_time(const alInfo& a, const alInfo& b);

// Indices of `count` records in the order of the comparator that fits session_mode; requests of one
// session and one second keep the order in which they stand in the table. The records themselves
// stay where they are: moving their 256 bytes about would cost more than all else. Ends the run
// beyond 4,294,967,294 records.
std::vector<uint32_t> order_by_session(const alInfo* records, uint64_t count);
