#include "companions/shard/merge/job_input.h"

#include "base/failure.h"
#include "companions/shard/exchange/settled_instance.h"
#include "tools/load/request_table.h"
#include "tools/urls/request_selection.h"

#include <algorithm>
#include <string>

namespace {

// What has come until now.
class JobInput {
  public:
    explicit JobInput(const Plan& plan) {
        is_settled_.resize(plan.logs.empty() ? 0
                                             : static_cast<size_t>(plan.logs.back().instance) + 1);
    }

    void take(const Frame& frame);

    // Fails unless all has come.
    void require_all() const;

    TableSpool spool;

  private:
    void take_settled(const SettledInstance& settled);
    void take_urls(const Frame& frame);
    void take_collapsed(const nlohmann::json& label);
    void take_range(const nlohmann::json& label);

    std::vector<bool> is_settled_; // by instance
    uint64_t collapsed_rows_ = 0;
    uint64_t range_tables_ = 0; // of the range at work
    uint64_t table_parts_ = 0;  // of the table at work; 0: it is whole
    std::string last_key_;      // of the ranges so far
};

void require_in_order(bool is_in_order) {
    if (!is_in_order) {
        fail("Frames of the job are missing, or not in their order");
    }
}

void JobInput::take(const Frame& frame) {
    if (frame.kind == FrameKind::settled) {
        take_settled(read_settled(frame));
    } else if (frame.kind == FrameKind::urls) {
        take_urls(frame);
    } else if (frame.kind == FrameKind::collapsed) {
        take_collapsed(frame.label);
    }
}

void JobInput::take_settled(const SettledInstance& settled) {
    const auto instance = static_cast<size_t>(settled.instance);
    if (instance >= is_settled_.size() || is_settled_[instance]) {
        fail("Instance %d is settled twice", settled.instance);
    }
    is_settled_[instance] = true;
    g_valid_request += settled.row_count;
    g_total_req += settled.counters.total_req;
    g_total_bad_req += settled.counters.bad_req;
    g_time_filtered_req += settled.counters.time_filtered_req;
}

// Part by part, table by table, as a range has written them.
void JobInput::take_urls(const Frame& frame) {
    range_tables_ += table_parts_ == 0 ? 1 : 0;
    require_in_order(number_in(frame.label, "table") == range_tables_ - 1 &&
                     number_in(frame.label, "part") == table_parts_);
    table_parts_ = flag_in(frame.label, "is_last") ? 0 : table_parts_ + 1;
    spool.add(frame);
}

void JobInput::take_collapsed(const nlohmann::json& label) {
    require_in_order(number_in(label, "tables") == range_tables_ && table_parts_ == 0);
    range_tables_ = 0;
    const uint64_t row_count = number_in(label, "rows");
    if (row_count != 0) {
        take_range(label);
    }
    collapsed_rows_ += row_count;
    g_redirected_req += number_in(label, "redirected");
    g_total_non_session_req += number_in(label, "non_session");
    g_total_non_session_with_secondary_cookie += number_in(label, "non_session_with_secondary");
}

// No session may be in two of them, nor come before one that stands behind it.
void JobInput::take_range(const nlohmann::json& label) {
    if (text_in(label, "first") <= last_key_) {
        fail("The ranges of sessions do not come in their order");
    }
    last_key_ = text_in(label, "last");
}

void JobInput::require_all() const {
    const auto settled = std::count(is_settled_.begin(), is_settled_.end(), true);
    if (static_cast<size_t>(settled) != is_settled_.size()) {
        fail("The job has ended early: %ld of %zu instances are settled", settled,
             is_settled_.size());
    }
    if (collapsed_rows_ != g_valid_request || range_tables_ != 0) {
        fail("The job has ended early: %lu of %lu requests are collapsed", collapsed_rows_,
             g_valid_request);
    }
}

} // namespace

TableSpool read_job(FrameReader& frames, const Plan& plan) {
    JobInput input(plan);
    while (const std::optional<Frame> frame = frames.next()) {
        input.take(*frame);
    }
    input.require_all();
    return std::move(input.spool);
}
