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

void RedirectLocations::clear() {
    std::fill_n(redirectUrl_.begin(), total_redirectUrl_, std::string_view());
    total_redirectUrl_ = 0;
}

bool RedirectLocations::take_follow_up(std::string_view host, std::string_view url) {
    for (int slot = 0; slot < total_redirectUrl_; ++slot) {
        std::string_view& location = redirectUrl_[static_cast<size_t>(slot)];
        if (location.data() == nullptr || !names_url(location, host, url)) {
            continue;
        }
        location = {};
        if (slot == total_redirectUrl_ - 1) {
            --total_redirectUrl_;
        }
        return true;
    }
    return false;
}

void RedirectLocations::remember(std::string_view location) {
    const int slot = free_slot();
    redirectUrl_[static_cast<size_t>(slot)] = location;
    total_redirectUrl_ = std::max(total_redirectUrl_, slot + 1);
}

int RedirectLocations::free_slot() const {
    for (int slot = 0; slot < total_redirectUrl_; ++slot) {
        if (redirectUrl_[static_cast<size_t>(slot)].data() == nullptr) {
            return slot;
        }
    }
    return total_redirectUrl_ < slot_count ? total_redirectUrl_ : 0;
}
