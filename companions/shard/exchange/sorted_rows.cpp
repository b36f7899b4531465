#include "companions/shard/exchange/sorted_rows.h"

#include "tools/urls/text_sort.h"

#include <algorithm>
#include <numeric>
#include <tuple>

namespace {

// Of each session id: how many sessions come before it.
std::vector<uint32_t> rank_sessions(const InternedTexts& sessions) {
    std::vector<uint32_t> ids(sessions.count());
    std::iota(ids.begin(), ids.end(), 0);
    std::vector<uint64_t> prefixes;
    prefixes.reserve(ids.size());
    for (const uint32_t id : ids) {
        prefixes.push_back(order_prefix(sessions.text(id)));
    }
    std::sort(ids.begin(), ids.end(), [&](uint32_t a, uint32_t b) {
        return prefixes[a] != prefixes[b] ? prefixes[a] < prefixes[b]
                                          : sessions.text(a) < sessions.text(b);
    });
    std::vector<uint32_t> ranks(ids.size());
    for (uint32_t rank = 0; rank < ids.size(); ++rank) {
        ranks[ids[rank]] = rank;
    }
    return ranks;
}

} // namespace

void sort_rows(const RequestTexts& texts, std::vector<PlacedRow>& rows) {
    const std::vector<uint32_t> ranks = rank_sessions(texts.sessions);
    std::sort(rows.begin(), rows.end(), [&](const PlacedRow& a, const PlacedRow& b) {
        return std::tuple(ranks[a.row.session], a.row.time_stamp, a.place) <
               std::tuple(ranks[b.row.session], b.row.time_stamp, b.place);
    });
}

ExchangedRow exchanged_row(const RequestTexts& texts, const PlacedRow& placed) {
    const RequestRow& row = placed.row;
    return {.session = texts.sessions.text(row.session),
            .url_key = texts.urls.text(row.url),
            .time = row.time_stamp,
            .place = placed.place,
            .is_redirect = row.is_redirect != 0,
            .own_texts = read_own_texts(row.own_texts)};
}
