#pragma once

#include <array>
#include <optional>
#include <string>
#include <strings.h>

// The remembered redirect locations, compared with full URLs composed as text.
class PlainRedirects {
  public:
    void clear() { *this = {}; }

    bool take(const std::string& host, const std::string& url) {
        for (size_t i = 0; i < used_; ++i) {
            if (!slots_[i] || strcasecmp(slots_[i]->c_str(), full_url(i, host, url).c_str()) != 0) {
                continue;
            }
            slots_[i].reset();
            used_ -= i == used_ - 1 ? 1 : 0;
            return true;
        }
        return false;
    }

    void remember(const std::string& location) {
        size_t slot = 0;
        while (slot < used_ && slots_[slot]) {
            ++slot;
        }
        if (slot == used_ && used_ < slots_.size()) {
            ++used_;
        } else if (slot == used_) {
            slot = 0;
        }
        slots_[slot] = location;
    }

  private:
    std::string full_url(size_t slot, const std::string& host, const std::string& url) const {
        for (const std::string scheme : {"http://", "https://"}) {
            if (strncasecmp(slots_[slot]->c_str(), scheme.c_str(), scheme.size()) == 0) {
                return scheme + host + url;
            }
        }
        return url;
    }

    std::array<std::optional<std::string>, 16> slots_;
    size_t used_ = 0;
};
