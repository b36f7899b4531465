#include "tools/parse/request_interner.h"

#include "base/text_hash.h"
#include "tools/config/replay_settings.h"
#include "tools/parse/counted_url.h"

#include <cstring>
#include <endian.h>

namespace {

// The part of the record that is the text of its session, or `address`, which gets it.
std::string_view session_text(const alInfo& request, char (&address)[sizeof request.client_ip]) {
    if (session_mode == SESSION_MODE_COOKIE) {
        return request.jsession_id;
    }
    const uint32_t first_number_first = htobe32(request.client_ip);
    std::memcpy(address, &first_number_first, sizeof address);
    return {address, sizeof address};
}

} // namespace

// Room for so many characters, which the caller writes.
inline char* RequestInterner::PendingText::resize(size_t new_size) {
    size = new_size;
    if (room.size() < size) {
        room.resize(2 * size);
    }
    return room.data();
}

inline void RequestInterner::PendingText::copy(std::string_view text) {
    std::memcpy(resize(text.size()), text.data(), text.size());
    hash = hash_text(view());
}

inline void RequestInterner::PendingText::copy_key(const UrlParts& parts) {
    write_url_key(parts, resize(url_key_size(parts)));
    hash = hash_text(view());
}

void RequestInterner::add(const alInfo& request, RequestRows& rows) {
    if (added_ - interned_ == max_pending) {
        intern_oldest(rows);
    }
    Pending& newest = pending(added_);
    char address[sizeof request.client_ip];
    newest.session.copy(session_text(request, address));
    newest.url.copy_key({request.method, request.host_ip, counted_url(request)});
    newest.row = rows.size() - 1;
    texts_.sessions.prefetch_slot(newest.session.hash);
    texts_.urls.prefetch_slot(newest.url.hash);
    if (added_ - interned_ >= steps_to_text) {
        const Pending& before = pending(added_ - steps_to_text);
        texts_.sessions.prefetch_text(before.session.hash);
        texts_.urls.prefetch_text(before.url.hash);
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
    row.session = texts_.sessions.intern(oldest.session.view(), oldest.session.hash);
    row.url = texts_.urls.intern(oldest.url.view(), oldest.url.hash) & max_requests;
}
