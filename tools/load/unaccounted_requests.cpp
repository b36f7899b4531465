#include "tools/load/unaccounted_requests.h"

#include "base/allocation.h"
#include "base/text_hash.h"

#include <algorithm>
#include <utility>

namespace {

constexpr size_t announced_slot_size = sizeof(int64_t); // as the debug log tells it

uint32_t hash_value(std::string_view akaau_id) {
    return static_cast<uint32_t>(hash_text(akaau_id));
}

} // namespace

UnaccountedRequests::UnaccountedRequests() {
    log_allocation("process_url_files_t", "unaccounted array",
                   max_unaccounted_requests * announced_slot_size);
}

void UnaccountedRequests::add(const WaitingRequest& request, std::string_view akaau_id) {
    if (2 * (value_count_ + 1) > values_.size()) {
        grow();
    }
    const uint32_t hash = hash_value(akaau_id);
    Value& value = values_[find(akaau_id, hash)];
    if (value.last_slot == no_slot) {
        value.hash = hash;
        ++value_count_;
    }
    const int number = take_slot();
    Slot& slot = slot_at(number);
    slot.request = request;
    slot.before = std::exchange(value.last_slot, number);
    slot.id_size = static_cast<uint32_t>(akaau_id.copy(slot.akaau_id, sizeof slot.akaau_id));
}

const std::vector<WaitingRequest>& UnaccountedRequests::take(std::string_view akaau_id) {
    taken_.clear();
    if (value_count_ == 0) {
        return taken_;
    }
    const size_t place = find(akaau_id, hash_value(akaau_id));
    if (values_[place].last_slot == no_slot) {
        return taken_;
    }
    slots_of_taken_.clear();
    for (int slot = values_[place].last_slot; slot != no_slot; slot = slot_at(slot).before) {
        slots_of_taken_.push_back(slot);
    }
    forget(place);
    std::sort(slots_of_taken_.begin(), slots_of_taken_.end());
    for (const int slot : slots_of_taken_) {
        taken_.push_back(slot_at(slot).request);
        free_slot(slot);
    }
    return taken_;
}

std::vector<WaitingRequest> UnaccountedRequests::all() const {
    std::vector<WaitingRequest> requests;
    for (size_t slot = 0; slot < static_cast<size_t>(ua_end_index_t_); ++slot) {
        if (unaccounted_url_t_[slot].id_size != 0) {
            requests.push_back(unaccounted_url_t_[slot].request);
        }
    }
    return requests;
}

int UnaccountedRequests::take_slot() {
    if (free_slots_.empty()) {
        if (unaccounted_url_t_.size() == static_cast<size_t>(ua_end_index_t_)) {
            unaccounted_url_t_.emplace_back();
        }
        return ua_end_index_t_++;
    }
    const int slot = free_slots_.top();
    free_slots_.pop();
    return slot;
}

void UnaccountedRequests::free_slot(int slot) {
    slot_at(slot).id_size = 0;
    if (slot == ua_end_index_t_ - 1) {
        --ua_end_index_t_;
    } else {
        free_slots_.push(slot);
    }
}

// The place of the value, or the free one that it belongs into.
size_t UnaccountedRequests::find(std::string_view akaau_id, uint32_t hash) {
    const size_t mask = values_.size() - 1;
    for (size_t place = hash & mask;; place = (place + 1) & mask) {
        const Value& value = values_[place];
        if (value.last_slot == no_slot ||
            (value.hash == hash && slot_at(value.last_slot).id() == akaau_id)) {
            return place;
        }
    }
}

void UnaccountedRequests::grow() {
    constexpr size_t first_size = 1024;
    const std::vector<Value> old =
        std::exchange(values_, std::vector<Value>(std::max(first_size, 2 * values_.size())));
    const size_t mask = values_.size() - 1;
    for (const Value& value : old) {
        if (value.last_slot != no_slot) {
            size_t place = value.hash & mask;
            while (values_[place].last_slot != no_slot) {
                place = (place + 1) & mask;
            }
            values_[place] = value;
        }
    }
}

// Values that could not get the place move up to it, so that find meets no gap before them.
void UnaccountedRequests::forget(size_t place) {
    const size_t mask = values_.size() - 1;
    for (size_t next = (place + 1) & mask; values_[next].last_slot != no_slot;
         next = (next + 1) & mask) {
        const size_t distance_from_home = (next - values_[next].hash) & mask;
        if (distance_from_home >= ((next - place) & mask)) {
            values_[place] = values_[next];
            place = next;
        }
    }
    values_[place].last_slot = no_slot;
    --value_count_;
}
