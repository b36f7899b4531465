#include "tools/parse/request_interner.h"

#include "base/text_hash.h"

#include <cstring>
#include <endian.h>

AddressText address_text(uint32_t client_ip) {
    const uint32_t first_number_first = htobe32(client_ip);
    AddressText text;
    std::memcpy(text.data(), &first_number_first, sizeof text);
    return text;
}

// Room for so many characters, which the caller writes.
inline char* RequestInterner::PendingText::resize(size_t new_size) {
    size = new_size;
    if (room.size() < size) {
        room.resize(2 * size);
    }
    return room.data();
}

void RequestInterner::add(std::string_view session, const UrlParts& url, RequestRows& rows) {
    if (added_ - interned_ == max_pending) {
        intern_oldest(rows);
    }
    Pending& newest = pending(added_);
    newest.session.hash = hash_text(session);
    session.copy(newest.session.resize(session.size()), session.size());
    newest.url.hash = write_url_key(url, newest.url.resize(url_key_size(url)));
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
