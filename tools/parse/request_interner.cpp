#include "tools/parse/request_interner.h"

#include "base/text_hash.h"
#include "tools/config/replay_settings.h"
#include "tools/parse/url_key.h"

#include <endian.h>

namespace {

void write_session(const alInfo& request, std::string& text) {
    if (session_mode == SESSION_MODE_COOKIE) {
        text = request.jsession_id;
        return;
    }
    const uint32_t address = htobe32(request.client_ip);
    text.assign(reinterpret_cast<const char*>(&address), sizeof address);
}

} // namespace

void RequestInterner::add(const alInfo& request, RequestRows& rows) {
    if (added_ - interned_ == max_pending) {
        intern_oldest(rows);
    }
    Pending& newest = pending(added_);
    write_session(request, newest.session);
    write_url_key(request, newest.url);
    newest.session_hash = hash_text(newest.session);
    newest.url_hash = hash_text(newest.url);
    newest.row = rows.size() - 1;
    texts_.sessions.prefetch_slot(newest.session_hash);
    texts_.urls.prefetch_slot(newest.url_hash);
    if (added_ - interned_ >= steps_to_text) {
        const Pending& before = pending(added_ - steps_to_text);
        texts_.sessions.prefetch_text(before.session_hash);
        texts_.urls.prefetch_text(before.url_hash);
    }
    ++added_;
}

void RequestInterner::finish(RequestRows& rows) {
    while (interned_ != added_) {
        intern_oldest(rows);
    }
}

void RequestInterner::intern_oldest(RequestRows& rows) {
    const Pending& oldest = pending(interned_++);
    RequestRow& row = rows[oldest.row];
    row.session = texts_.sessions.intern(oldest.session, oldest.session_hash);
    row.url = texts_.urls.intern(oldest.url, oldest.url_hash) & max_requests;
}
