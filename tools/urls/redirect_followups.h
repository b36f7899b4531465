#pragma once

#include <array>
#include <string>
#include <string_view>

// The redirect locations that the responses of one session have named and that no request has
// followed yet.
class RedirectLocations {
  public:
    static constexpr int slot_count = 16;

    void clear() { total_redirectUrl_ = 0; }
    bool is_empty() const { return total_redirectUrl_ == 0; }

    // Whether a request for the full URL `url` at `host` is what a browser sends by itself for one
    // of the locations: the URL in the form of the location (with scheme and host, or the path
    // alone) equals the location ignoring case. The first such location, by slot, is forgotten.
    bool take_follow_up(std::string_view host, std::string_view url);

    // Remembers a copy of a location in the first free slot; when none is free, in place of the one
    // in slot 0.
    void remember(std::string_view location);

  private:
    struct Slot {
        bool is_used = false;
        std::string location = {}; // its room is used again
    };

    Slot& slot_at(int slot) { return redirectUrl_[static_cast<size_t>(slot)]; }
    int free_slot();

    std::array<Slot, slot_count> redirectUrl_ = {};
    int total_redirectUrl_ = 0; // slots in use, free ones between them included
};
