#include "tools/urls/redirect_followups.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <strings.h>

namespace {

constexpr std::string_view schemes[] = {"http://", "https://"};

bool names_url(const char* location, const alInfo& request) {
    for (const std::string_view scheme : schemes) {
        if (strncasecmp(location, scheme.data(), scheme.size()) == 0) {
            const char* host = location + scheme.size();
            const size_t host_length = std::strlen(request.host_ip);
            return strncasecmp(host, request.host_ip, host_length) == 0 &&
                   strcasecmp(host + host_length, request.url) == 0;
        }
    }
    return strcasecmp(location, request.url) == 0;
}

} // namespace

void RedirectLocations::clear() {
    std::fill_n(redirectUrl_.begin(), total_redirectUrl_, nullptr);
    total_redirectUrl_ = 0;
}

bool RedirectLocations::take_follow_up(const alInfo& request) {
    for (int slot = 0; slot < total_redirectUrl_; ++slot) {
        const char*& location = redirectUrl_[static_cast<size_t>(slot)];
        if (location == nullptr || !names_url(location, request)) {
            continue;
        }
        location = nullptr;
        if (slot == total_redirectUrl_ - 1) {
            --total_redirectUrl_;
        }
        return true;
    }
    return false;
}

void RedirectLocations::remember(const char* location) {
    const int slot = free_slot();
    redirectUrl_[static_cast<size_t>(slot)] = location;
    total_redirectUrl_ = std::max(total_redirectUrl_, slot + 1);
}

int RedirectLocations::free_slot() const {
    for (int slot = 0; slot < total_redirectUrl_; ++slot) {
        if (redirectUrl_[static_cast<size_t>(slot)] == nullptr) {
            return slot;
        }
    }
    return total_redirectUrl_ < slot_count ? total_redirectUrl_ : 0;
}
