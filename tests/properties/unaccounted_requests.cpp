#include "tools/load/unaccounted_requests.h"

#include "tests/properties/properties.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace {

// The same slots as an array that is searched from its start.
class PlainArray {
  public:
    explicit PlainArray(const std::vector<std::string>& values) : values_(values) {}

    int end_index() const { return static_cast<int>(entries_.size()); }

    void add(int64_t record) {
        const auto free = std::find(entries_.begin(), entries_.end(), -1);
        *(free == entries_.end() ? entries_.insert(free, -1) : free) = record;
    }

    std::vector<int64_t> take(const std::string& value) {
        std::vector<int64_t> taken;
        for (size_t i = 0; i < entries_.size(); ++i) {
            if (entries_[i] == -1 || values_[static_cast<size_t>(entries_[i])] != value) {
                continue;
            }
            taken.push_back(entries_[i]);
            entries_[i] = -1;
            if (i == entries_.size() - 1) {
                entries_.pop_back();
            }
        }
        return taken;
    }

  private:
    const std::vector<std::string>& values_;
    std::vector<int64_t> entries_;
};

} // namespace

void check_unaccounted_requests(Choices& choices) {
    const size_t value_count = choices.of(std::array{2U, 10U, 200U});
    std::vector<std::string> values(4000);
    UnaccountedRequests waiting;
    PlainArray expected(values);
    for (int64_t next = 0; next < 4000 && choices.any_left();) {
        const std::string value = "=k" + std::to_string(choices.below(value_count));
        if (choices.one_in(2 + value_count / 10)) {
            ASSERT_EQ(waiting.take(value), expected.take(value)) << value << " at " << next;
        } else {
            values[static_cast<size_t>(next)] = value;
            waiting.add(next, value);
            expected.add(next++);
        }
        ASSERT_EQ(waiting.end_index(), expected.end_index()) << value << " at " << next;
    }
}
