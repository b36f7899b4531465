#pragma once

#include "tests/unit_helpers.h"
#include "tools/config/replay_settings.h"
#include "tools/load/request_table.h"
#include "tools/parse/counted_url.h"
#include "tools/parse/own_texts.h"

#include <cstring>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

inline void add_texts(RequestInterner& interner, const alInfo& request, RequestRows& rows) {
    const AddressText address = address_text(request.client_ip);
    interner.add(session_mode == SESSION_MODE_COOKIE
                     ? std::string_view(request.jsession_id)
                     : std::string_view(address.data(), address.size()),
                 {request.method, request.host_ip, counted_url(request)}, rows);
}

// Makes the request table as loading does: in batches of several workers, some requests getting
// their session cookie only from later ones.
inline RequestTable table_of_requests(std::vector<alInfo>& records, Choices& choices) {
    constexpr size_t worker_count = 3;
    std::deque<RequestInterner> interners(worker_count);
    std::deque<RequestBatch> batches;
    std::vector<WorkerBatch> joined;
    std::vector<SessionGrant> grants;
    TextArena arena;
    std::map<std::string, RowPlace> places; // of a request, by cookie
    for (size_t start = 0; start < records.size();) {
        const auto worker = static_cast<uint32_t>(choices.below(worker_count));
        const auto number = static_cast<uint32_t>(batches.size());
        RequestBatch& batch = batches.emplace_back();
        for (const size_t end = start + 1 + choices.below(records.size() - start); start < end;) {
            alInfo request = records[start++];
            const RowPlace place = {number, static_cast<uint32_t>(batch.rows.size())};
            const auto [same, is_new] = places.try_emplace(request.jsession_id, place);
            if (!is_new && request.jsession_id[0] != '\0' && choices.one_in(5)) {
                request.jsession_id[0] = '\0';
                grants.push_back({place, same->second});
            }
            RequestRow row = {};
            row.time_stamp = request.time_stamp;
            row.is_redirect = is_redirect(request);
            row.own_texts = store_own_texts(arena, request);
            batch.rows.push_back(row);
            add_texts(interners[worker], request, batch.rows);
        }
        interners[worker].finish(batch.rows);
        joined.push_back({&batch, worker});
    }
    std::vector<RequestTexts> texts;
    for (RequestInterner& interner : interners) {
        texts.push_back(interner.take_texts());
    }
    return join_batches(joined, std::move(texts), grants, 2);
}
