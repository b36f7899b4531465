#pragma once

#include "companions/shard/exchange/frame.h"
#include "companions/shard/exchange/settled_instance.h"

#include <cstddef>
#include <string>

// Takes the rows frames of one range of sessions, in any order, selects the requests that count as
// a run does, and writes their unique URLs as tables (exchange/url_table.h), whose order is that of
// sessions, and then a frame of kind "collapsed". Its label tells "rows", how many rows there were
// but for those that `cuts` exclude, "first" and "last", the range keys of the first and the last
// of these, "tables", their number, and the totals "redirected", "non_session" and
// "non_session_with_secondary" (tools/urls/request_selection.h). Frames of other kinds are passed
// over. Needs the plan applied. Fails when a frame is damaged.
void collapse_rows(FrameReader& from, const LoadingCuts& cuts, const std::string& plan_id,
                   FrameWriter& to);

// Bytes that a table takes in memory at most, about; then it is written and the next one begun.
// Tests set it.
extern size_t kept_table_size;
