#include "companions/shard/collapse/row_merge.h"

#include "base/failure.h"
#include "tools/urls/text_sort.h"

#include <tuple>
#include <utility>
#include <vector>

namespace {

// A stream that has a row.
struct Head {
    uint64_t prefix; // of the session; decides most comparisons
    RowStream* stream;
};

Head head_of(RowStream& stream) {
    return {order_prefix(stream.row().session), &stream};
}

bool stands_before(const Head& a, const Head& b) {
    if (a.prefix != b.prefix) {
        return a.prefix < b.prefix;
    }
    const ExchangedRow& row = a.stream->row();
    const ExchangedRow& other = b.stream->row();
    const int sessions = row.session.compare(other.session);
    return sessions != 0 ? sessions < 0
                         : std::tie(row.time, row.place) < std::tie(other.time, other.place);
}

// Streams as a binary heap, the one with the next row first.
class Heads {
  public:
    explicit Heads(std::deque<RowStream>& streams) {
        for (RowStream& stream : streams) {
            if (stream.next()) {
                heads_.push_back(head_of(stream));
            }
        }
        for (size_t place = heads_.size() / 2; place != 0; --place) {
            move_down(place - 1);
        }
    }

    bool is_empty() const { return heads_.empty(); }
    const ExchangedRow& row() const { return heads_.front().stream->row(); }

    void next() {
        if (RowStream& stream = *heads_.front().stream; stream.next()) {
            heads_.front() = head_of(stream);
        } else {
            heads_.front() = heads_.back();
            heads_.pop_back();
        }
        move_down(0);
    }

  private:
    void move_down(size_t place) {
        for (size_t child; (child = 2 * place + 1) < heads_.size(); place = child) {
            if (child + 1 < heads_.size() && stands_before(heads_[child + 1], heads_[child])) {
                ++child;
            }
            if (!stands_before(heads_[child], heads_[place])) {
                return;
            }
            std::swap(heads_[child], heads_[place]);
        }
    }

    std::vector<Head> heads_;
};

} // namespace

bool RowStream::next() {
    while (!block_ || !block_->next()) {
        std::optional<Frame> frame = next_block_();
        if (!frame) {
            return false;
        }
        block_.emplace(std::move(*frame));
    }
    return true;
}

void merge_rows(std::deque<RowStream>& streams,
                const std::function<void(const ExchangedRow&)>& take) {
    std::optional<RequestPlace> last;
    for (Heads heads(streams); !heads.is_empty(); heads.next()) {
        const ExchangedRow& row = heads.row();
        if (last == row.place) {
            fail("A request of the job came twice");
        }
        last = row.place;
        take(row);
    }
}
