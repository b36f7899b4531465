#pragma once

#include "base/text_arena.h"
#include "tools/parse/request_record.h"

// What of a request's texts its session and URL key do not tell: few requests have any.
struct OwnTexts {
    const char* location = nullptr;    // that its response sends the browser to; null: none
    const char* full_url = nullptr;    // null: all of the URL counts
    const char* method = nullptr;      // null: spelt as standard_method spells it
    bool has_secondary_cookie = false; // told only when it had no session when it was read
};

// Stores the own texts of a request whose counted part of the URL is known, as one piece of
// `arena`. Null when it has none.
const char* store_own_texts(TextArena& arena, const alInfo& request);

// Reads what store_own_texts gave; the texts are part of that piece.
OwnTexts read_own_texts(const char* stored);

// Whether the response redirects the browser to a location that is worth remembering.
bool is_redirect(const alInfo& request);
