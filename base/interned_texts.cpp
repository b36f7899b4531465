#include "base/interned_texts.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

uint32_t InternedTexts::intern(std::string_view text, uint64_t hash) {
    if (2 * (texts_.size() + 1) > slots_.size()) {
        grow();
    }
    Slot& slot = find_slot(hash, text);
    if (slot.text != nullptr) {
        return slot.text->id;
    }
    Text* const added = add(text);
    slot = {hash, added};
    return added->id;
}

uint32_t InternedTexts::find(std::string_view text, uint64_t hash) {
    if (slots_.empty()) {
        return unknown;
    }
    const Text* known = find_slot(hash, text).text;
    return known == nullptr ? unknown : known->id;
}

// The slot that holds the text, or the free one that it belongs into.
InternedTexts::Slot& InternedTexts::find_slot(uint64_t hash, std::string_view text) {
    const size_t mask = slots_.size() - 1;
    size_t at = hash & mask;
    while (slots_[at].text != nullptr &&
           (slots_[at].hash != hash || slots_[at].text->view() != text)) {
        at = (at + 1) & mask;
    }
    return slots_[at];
}

void InternedTexts::grow() {
    constexpr size_t first_size = 1024;
    const Slots old = std::exchange(slots_, Slots(std::max(first_size, slots_.size() * 2)));
    for (const Slot& slot : old) {
        if (slot.text != nullptr) {
            find_slot(slot.hash, slot.text->view()) = slot;
        }
    }
}

InternedTexts::Text* InternedTexts::add(std::string_view text) {
    const size_t size = sizeof(Text) + text.size();
    const size_t padded_size = (size + alignof(Text) - 1) / alignof(Text) * alignof(Text);
    void* place = arena_.allocate("interned texts", padded_size);
    Text* added = new (place) Text{count(), static_cast<uint32_t>(text.size())};
    std::memcpy(added->characters(), text.data(), text.size());
    texts_.push_back(added);
    return added;
}
