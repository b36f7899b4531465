#pragma once

#include "tools/parse/request_record.h"

#include <array>

// The redirect locations that the responses of one session have named and that no request has
// followed yet.
class RedirectLocations {
  public:
    static constexpr int slot_count = 16;

    void clear();
    bool is_empty() const { return total_redirectUrl_ == 0; }

    // Whether `request` is what a browser sends by itself for one of the locations: its full URL in
    // the form of the location (with scheme and host, or the path alone) equals the location
    // ignoring case. The first such location, by slot, is forgotten.
    bool take_follow_up(const alInfo& request);

    // Remembers a location, which must outlive this object, in the first free slot; when none is
    // free, in place of the one in slot 0.
    void remember(const char* location);

  private:
    int free_slot() const;

    std::array<const char*, slot_count> redirectUrl_ = {}; // null: free
    int total_redirectUrl_ = 0; // slots in use, free ones between them included
};
