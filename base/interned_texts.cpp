#include "base/interned_texts.h"

#include <algorithm>
#include <new>
#include <utility>

InternedTexts::Slot InternedTexts::free_slot = {0, nullptr};

// The slot that holds the text, or the free one that it belongs into.
inline InternedTexts::Slot& InternedTexts::find_slot(uint64_t hash, std::string_view text) {
    for (size_t at = hash & mask_;; at = (at + 1) & mask_) {
        Slot& slot = first_slot_[at];
        if (slot.text == nullptr || (slot.hash == hash && slot.text->view() == text)) {
            return slot;
        }
    }
}

uint32_t InternedTexts::intern(std::string_view text, uint64_t hash) {
    const uint32_t known = find(text, hash);
    return known != unknown ? known : add(text, hash);
}

uint32_t InternedTexts::find(std::string_view text, uint64_t hash) {
    const Text* known = find_slot(hash, text).text;
    return known == nullptr ? unknown : known->id;
}

void InternedTexts::release() {
    slots_ = Slots();
    first_slot_ = &free_slot;
    mask_ = 0;
    texts_ = std::vector<Text*>();
    arena_.release();
}

void InternedTexts::grow() {
    constexpr size_t first_size = 1024;
    const Slots old = std::exchange(slots_, Slots(std::max(first_size, slots_.size() * 2)));
    first_slot_ = slots_.data();
    mask_ = slots_.size() - 1;
    for (const Slot& slot : old) {
        if (slot.text != nullptr) {
            find_slot(slot.hash, slot.text->view()) = slot;
        }
    }
}

// Not inlined: what it needs would be saved and restored for every known text.
[[gnu::noinline]] uint32_t InternedTexts::add(std::string_view text, uint64_t hash) {
    if (2 * (texts_.size() + 1) > slots_.size()) {
        grow();
    }
    const size_t size = sizeof(Text) + text.size();
    const size_t padded_size = (size + alignof(Text) - 1) / alignof(Text) * alignof(Text);
    void* place = arena_.allocate("interned texts", padded_size);
    Text* added = new (place) Text{count(), static_cast<uint32_t>(text.size())};
    text.copy(added->characters(), text.size());
    texts_.push_back(added);
    find_slot(hash, text) = {hash, added};
    return added->id;
}
