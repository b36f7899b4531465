#include "tools/parse/own_texts.h"

#include "tools/parse/counted_url.h"
#include "tools/parse/url_key.h"

#include <cstring>

namespace {

// The first character of a piece tells what else it holds, in this order.
enum Holds : char { LOCATION = 1, FULL_URL = 2, METHOD = 4, SECONDARY_COOKIE = 8 };

char held_by(const alInfo& request) {
    return static_cast<char>((is_redirect(request) ? LOCATION : 0) |
                             (has_ignored_query(request) ? FULL_URL : 0) |
                             (has_standard_spelling(request) ? 0 : METHOD) |
                             (has_only_secondary_cookie(request) ? SECONDARY_COOKIE : 0));
}

// Takes the text at `position`, which then stands behind it.
const char* take_text(const char*& position) {
    const char* text = position;
    position += std::strlen(text) + 1;
    return text;
}

} // namespace

const char* store_own_texts(TextArena& arena, const alInfo& request) {
    const char held = held_by(request);
    if (held == 0) {
        return nullptr;
    }
    const char* const texts[] = {(held & LOCATION) != 0 ? request.redirect_url : nullptr,
                                 (held & FULL_URL) != 0 ? request.url : nullptr,
                                 (held & METHOD) != 0 ? request.method : nullptr};
    size_t size = 1;
    for (const char* text : texts) {
        size += text == nullptr ? 0 : std::strlen(text) + 1;
    }
    char* const stored = arena.allocate("own texts", size);
    char* end = stored;
    *end++ = held;
    for (const char* text : texts) {
        if (text != nullptr) {
            end = stpcpy(end, text) + 1;
        }
    }
    return stored;
}

OwnTexts read_own_texts(const char* stored) {
    OwnTexts texts;
    if (stored == nullptr) {
        return texts;
    }
    const char held = *stored;
    const char* position = stored + 1;
    texts.location = (held & LOCATION) != 0 ? take_text(position) : nullptr;
    texts.full_url = (held & FULL_URL) != 0 ? take_text(position) : nullptr;
    texts.method = (held & METHOD) != 0 ? take_text(position) : nullptr;
    texts.has_secondary_cookie = (held & SECONDARY_COOKIE) != 0;
    return texts;
}
