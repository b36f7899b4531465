#pragma once

#include "companions/shard/exchange/frame.h"

#include <string>
#include <vector>

// Cuts frames of rows so that none crosses one of these range keys (exchange/range_key.h), which
// are in ascending order. The labels of what is written tell "range": how many of the keys are not
// above those of the rows. Frames of other kinds are passed over.
void cut_rows(FrameReader& from, const std::vector<std::string>& keys, FrameWriter& to);
