#pragma once

#include "base/text_arena.h"
#include "tools/parse/counted_url.h"
#include "tools/parse/request_record.h"
#include "tools/parse/url_key.h"

// What of a request's texts its session and URL key do not tell: few requests have any.
struct OwnTexts {
    const char* location = nullptr;    // that its response sends the browser to; null: none
    const char* full_url = nullptr;    // null: all of the URL counts
    const char* method = nullptr;      // null: spelt as standard_method spells it
    bool has_secondary_cookie = false; // told only when it had no session when it was read
};

// Whether the response redirects the browser to a location that is worth remembering.
inline bool is_redirect(const alInfo& request) {
    const int code = request.response_code;
    return (code == 301 || code == 302 || code == 307) && request.redirect_url != nullptr;
}

inline bool has_only_secondary_cookie(const alInfo& request) {
    return request.akaau_id[0] != '\0' && request.jsession_id[0] == '\0';
}

// Whether a request has own texts, when the counted part of its URL is known.
inline bool has_own_texts(const alInfo& request) {
    return is_redirect(request) || has_ignored_query(request) || !has_standard_spelling(request) ||
           has_only_secondary_cookie(request);
}

// Stores the own texts of such a request as one piece of `arena`. Null when it has none.
const char* store_own_texts(TextArena& arena, const alInfo& request);

// Reads what store_own_texts gave; the texts are part of that piece.
OwnTexts read_own_texts(const char* stored);
