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
    void take_collapsed(const nlohmann::json& label);

    std::vector<bool> is_settled_; // by instance
    uint64_t collapsed_rows_ = 0;
    uint64_t announced_tables_ = 0;
};

void JobInput::take(const Frame& frame) {
    if (frame.kind == FrameKind::settled) {
        take_settled(read_settled(frame));
    } else if (frame.kind == FrameKind::urls) {
        spool.add(frame);
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

void JobInput::take_collapsed(const nlohmann::json& label) {
    collapsed_rows_ += label.at("rows").get<uint64_t>();
    announced_tables_ += label.at("tables").get<uint64_t>();
    g_redirected_req += label.at("redirected").get<uint64_t>();
    g_total_non_session_req += label.at("non_session").get<uint64_t>();
    g_total_non_session_with_secondary_cookie +=
        label.at("non_session_with_secondary").get<uint64_t>();
}

void JobInput::require_all() const {
    const auto settled = std::count(is_settled_.begin(), is_settled_.end(), true);
    if (static_cast<size_t>(settled) != is_settled_.size()) {
        fail("The job has ended early: %ld of %zu instances are settled", settled,
             is_settled_.size());
    }
    if (collapsed_rows_ != g_valid_request || announced_tables_ != spool.table_count()) {
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
