#include "tools/urls/redirect_followups.h"

#include <algorithm>
#include <string_view>
#include <strings.h>

namespace {

constexpr std::string_view schemes[] = {"http://", "https://"};

// Lengths first: they tell most texts apart.
bool are_same(std::string_view a, std::string_view b) {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

bool names_url(std::string_view location, std::string_view host, std::string_view url) {
    for (const std::string_view scheme : schemes) {
        if (are_same(location.substr(0, scheme.size()), scheme)) {
            const std::string_view rest = location.substr(scheme.size());
            return rest.size() == host.size() + url.size() &&
                   are_same(rest.substr(host.size()), url) &&
                   are_same(rest.substr(0, host.size()), host);
        }
    }
    return are_same(location, url);
}

} // namespace

bool RedirectLocations::take_follow_up(std::string_view host, std::string_view url) {
    for (int number = 0; number < total_redirectUrl_; ++number) {
        Slot& slot = slot_at(number);
        if (!slot.is_used || !names_url(slot.location, host, url)) {
            continue;
        }
        slot.is_used = false;
        if (number == total_redirectUrl_ - 1) {
            --total_redirectUrl_;
        }
        return true;
    }
    return false;
}

void RedirectLocations::remember(std::string_view location) {
    const int number = free_slot();
    Slot& slot = slot_at(number);
    slot.is_used = true;
    slot.location = location;
    total_redirectUrl_ = std::max(total_redirectUrl_, number + 1);
}

int RedirectLocations::free_slot() {
    for (int number = 0; number < total_redirectUrl_; ++number) {
        if (!slot_at(number).is_used) {
            return number;
        }
    }
    return total_redirectUrl_ < slot_count ? total_redirectUrl_ : 0;
}
