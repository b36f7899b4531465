#pragma once

#include "companions/shard/exchange/exchanged_row.h"
#include "tools/parse/request_interner.h"
#include "tools/parse/request_row.h"

#include <cstdint>
#include <functional>
#include <vector>

// A row in memory, whose ids stand for texts of a RequestTexts.
struct PlacedRow {
    RequestRow row;
    RequestPlace place;
};
static_assert(sizeof(PlacedRow) == 32);

// Puts rows into the order of session, time and place.
void sort_rows(const RequestTexts& texts, std::vector<PlacedRow>& rows);

// The row with its texts, which live as long as `texts` and the row's own texts do.
ExchangedRow exchanged_row(const RequestTexts& texts, const PlacedRow& row);
