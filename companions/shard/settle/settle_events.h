#pragma once

#include "companions/shard/exchange/frame.h"
#include "companions/shard/plan/plan.h"

#include <cstdint>
#include <vector>

// Goes through the events frames of these instances of the plan, or of all if none is named, as the
// loading thread of each would: writes the requests that have waited and count as sorted runs of
// rows frames, with the sessions that they got, and a frame of kind "settled" for each instance
// (exchange/settled_instance.h). The frames have to come in the order of log pieces; those of other
// instances and kinds are passed over. Needs the plan applied. Fails when a log piece is missing,
// or has to be read again and its log is not the plan's, or a frame is damaged.
void settle_events(const Plan& plan, const std::vector<int32_t>& instances, FrameReader& from,
                   FrameWriter& to);
