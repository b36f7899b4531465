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

    std::vector<int64_t> all() const {
        std::vector<int64_t> waiting = entries_;
        std::erase(waiting, -1);
        return waiting;
    }

  private:
    const std::vector<std::string>& values_;
    std::vector<int64_t> entries_;
};

// Their numbers, which the requests of this test have for rows.
std::vector<int64_t> numbers_of(const std::vector<WaitingRequest>& requests) {
    std::vector<int64_t> numbers;
    for (const WaitingRequest& request : requests) {
        EXPECT_EQ(request.line_num, request.place.row);
        numbers.push_back(request.place.row);
    }
    return numbers;
}

} // namespace

void check_unaccounted_requests(Choices& choices) {
    const size_t value_count = choices.of(std::array{2U, 10U, 200U, 4000U});
    std::vector<std::string> values(4000);
    UnaccountedRequests waiting;
    PlainArray expected(values);
    for (uint32_t next = 0; next < values.size() && choices.any_left();) {
        const std::string value = "=k" + std::to_string(choices.below(value_count));
        if (choices.one_in(2 + value_count / 10)) {
            ASSERT_EQ(numbers_of(waiting.take(value)), expected.take(value))
                << value << " at " << next;
        } else {
            values[next] = value;
            waiting.add({{0, next}, nullptr, next, nullptr}, value);
            expected.add(next++);
        }
        ASSERT_EQ(waiting.end_index(), expected.end_index()) << value << " at " << next;
    }
    ASSERT_EQ(numbers_of(waiting.all()), expected.all());
    for (size_t i = 0; i < value_count; ++i) { // values that have moved up are found, too
        const std::string value = "=k" + std::to_string(i);
        ASSERT_EQ(numbers_of(waiting.take(value)), expected.take(value)) << value;
    }
    EXPECT_EQ(waiting.end_index(), expected.end_index());
    EXPECT_TRUE(waiting.all().empty());
}
