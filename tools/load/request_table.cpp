#include "tools/load/request_table.h"

#include "base/parallel_tasks.h"
#include "base/text_hash.h"
#include "tools/parse/url_key.h"

#include <string_view>
#include <utility>

RequestTable request_table;
uint64_t g_valid_request = 0;
uint64_t g_total_req = 0;
uint64_t g_time_filtered_req = 0;
uint64_t g_total_bad_req = 0;

namespace {

using Ids = std::vector<uint32_t>; // in the joined texts, by id of one worker

uint64_t hash_session(std::string_view session) {
    return hash_text(session);
}

// Interns what only `other` has; returns its ids here. `hash` is what texts of this kind have.
Ids add_texts(InternedTexts& texts, const InternedTexts& other,
              uint64_t (*hash)(std::string_view)) {
    Ids ids;
    ids.reserve(other.count());
    for (uint32_t id = 0; id < other.count(); ++id) {
        const std::string_view text = other.text(id);
        ids.push_back(texts.intern(text, hash(text)));
    }
    return ids;
}

// The first worker's texts keep their ids, and so have none here.
struct WorkerIds {
    Ids sessions;
    Ids urls;
};

// Interns the texts of all workers into those of the first.
std::vector<WorkerIds> join_texts(std::vector<RequestTexts>& texts, int thread_count) {
    std::vector<WorkerIds> ids(texts.size());
    run_tasks(thread_count, 2, [&](size_t task) {
        for (size_t worker = 1; worker < texts.size(); ++worker) {
            if (task == 0) {
                ids[worker].sessions =
                    add_texts(texts[0].sessions, texts[worker].sessions, hash_session);
            } else {
                ids[worker].urls = add_texts(texts[0].urls, texts[worker].urls, hash_url_key);
            }
        }
    });
    return ids;
}

void replace_ids(RequestRows& rows, const WorkerIds& ids) {
    for (RequestRow& row : rows) {
        row.session = ids.sessions[row.session];
        row.url = ids.urls[row.url] & max_requests;
    }
}

} // namespace

RequestTable join_batches(const std::vector<WorkerBatch>& batches, std::vector<RequestTexts> texts,
                          const std::vector<SessionGrant>& grants, int thread_count) {
    RequestTable table;
    if (texts.empty()) {
        return table;
    }
    const std::vector<WorkerIds> ids = join_texts(texts, thread_count);
    run_tasks(thread_count, batches.size(), [&](size_t i) {
        if (batches[i].worker != 0) {
            replace_ids(batches[i].batch->rows, ids[batches[i].worker]);
        }
    });
    std::vector<uint32_t> starts;
    starts.reserve(batches.size());
    for (const WorkerBatch& batch : batches) {
        starts.push_back(table.rows.size());
        table.rows.add(std::move(batch.batch->rows));
    }
    for (const auto& [receiver, donor] : grants) {
        table.rows[starts[receiver.batch] + receiver.row].session =
            table.rows[starts[donor.batch] + donor.row].session;
    }
    table.texts = std::move(texts[0]);
    return table;
}
