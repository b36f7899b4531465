#pragma once

#include "companions/shard/exchange/frame.h"
#include "companions/shard/exchange/sorted_rows.h"
#include "tests/unit_helpers.h"
#include "tools/load/request_table.h"

#include <cstddef>
#include <vector>

// Requests by chance, as they are after loading: few sessions, URLs and times, so that many are
// alike; redirects and requests that follow them; queries, as the settings have them. With
// `max_url`, URLs and queries are of any length up to that.
RequestTable random_requests(Choices& choices, size_t count, size_t max_url);

// The rows of a table with places that are in their order, some of them in other log pieces.
std::vector<PlacedRow> placed_rows(Choices& choices, const RequestTable& table);

// Writes rows as blocks of any sizes and in any order, each block in itself in order.
void write_blocks(Choices& choices, const RequestTexts& texts, std::vector<PlacedRow> rows,
                  FrameWriter& frames);
