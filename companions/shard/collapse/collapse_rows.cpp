#include "companions/shard/collapse/collapse_rows.h"

#include "companions/shard/collapse/block_sorter.h"
#include "companions/shard/collapse/url_counts.h"
#include "companions/shard/exchange/range_key.h"
#include "tools/urls/query_list.h"
#include "tools/urls/request_selection.h"

#include <optional>

size_t kept_table_size = size_t{128} << 20;

namespace {

// Rows, in the order of sessions, into tables.
class Collapse {
  public:
    Collapse(const LoadingCuts& cuts, FrameWriter& to) : cuts_(cuts), to_(to) {}

    void take(const ExchangedRow& row);

    // Writes what is left and the last frame.
    void finish();

  private:
    bool counts(const ExchangedRow& row);
    void write_table() { urls_.write(to_, table_count_++); }

    const LoadingCuts& cuts_;
    FrameWriter& to_;
    std::optional<std::string> session_; // that is at work
    uint64_t last_time_ = 0;
    std::string first_key_;
    RequestSelection selection_;
    UrlCounts urls_ = UrlCounts(is_query_list_wanted());
    uint64_t row_count_ = 0;
    uint64_t table_count_ = 0;
};

// Full URLs are told of requests with an ignored query alone.
void require_fitting_texts(const ExchangedRow& row) {
    if (UrlKey(row.url_key).has_ignored_query() != (row.own_texts.full_url != nullptr)) {
        fail_as_damaged();
    }
}

void Collapse::take(const ExchangedRow& row) {
    if (cuts_.exclude(row.place)) {
        return;
    }
    if (row_count_++ == 0) {
        first_key_ = range_key(row.session, row.time);
    }
    last_time_ = row.time;
    require_fitting_texts(row);
    if (!counts(row)) {
        return;
    }
    urls_.add(row);
    if (urls_.held_size() >= kept_table_size) {
        write_table();
    }
}

bool Collapse::counts(const ExchangedRow& row) {
    if (session_ != row.session) {
        session_ = row.session;
        selection_.begin_session(tells_session(row.session));
    }
    return selection_.counts_in_any_case(row.is_redirect) ||
           selection_.take(row.own_texts, row.is_redirect, [&] { return row.url_key; });
}

void Collapse::finish() {
    if (!urls_.is_empty()) {
        write_table();
    }
    const std::string last_key = session_ ? range_key(*session_, last_time_) : "";
    to_.write(FrameKind::collapsed,
              {{"rows", row_count_},
               {"first", hex_text(first_key_)},
               {"last", hex_text(last_key)},
               {"tables", table_count_},
               {"redirected", g_redirected_req},
               {"non_session", g_total_non_session_req},
               {"non_session_with_secondary", g_total_non_session_with_secondary_cookie}},
              {});
}

} // namespace

void collapse_rows(FrameReader& from, const LoadingCuts& cuts, const std::string& plan_id,
                   FrameWriter& to) {
    BlockSorter sorter(plan_id);
    while (std::optional<Frame> frame = from.next()) {
        if (frame->kind == FrameKind::rows) {
            sorter.add(std::move(*frame));
        }
    }
    Collapse collapse(cuts, to);
    sorter.take_all([&](const ExchangedRow& row) { collapse.take(row); });
    collapse.finish();
}
