#include "companions/report/session_walk.h"

#include "companions/report/minute_counts.h"

#include <algorithm>

namespace {

// One request that counts.
struct Visit {
    uint64_t time;
    uint32_t session; // id
    UrlVerdict verdict;
    uint32_t transaction;
};

// What requests add up to, whatever their sessions.
class RequestSums {
  public:
    RequestSums(const TimeSteps& steps, LoadOverTime& load, size_t transaction_count)
        : steps_(steps), load_(load), transactions_(transaction_count + 1) {}

    void add(const Visit& visit) {
        first_ = std::min(first_, visit.time);
        last_ = std::max(last_, visit.time);
        ++count_;
        minutes_.add(visit.time);
        const std::optional<size_t> step = steps_.find(visit.time);
        if (step) {
            ++load_.requests[*step];
        }
        if (is_main(visit.verdict)) {
            add_main(visit, step);
        }
    }

    void finish(ScenarioFigures& figures) const;
    std::vector<PeakStep> transaction_peaks() const;

  private:
    void add_main(const Visit& visit, std::optional<size_t> step) {
        ++main_count_;
        main_minutes_.add(visit.time);
        transactions_[std::min<size_t>(visit.transaction, transactions_.size() - 1)].add(
            visit.time);
        if (step) {
            ++load_.main_requests[*step];
        }
    }

    const TimeSteps& steps_;
    LoadOverTime& load_;
    uint64_t first_ = UINT64_MAX;
    uint64_t last_ = 0;
    uint64_t count_ = 0;
    uint64_t main_count_ = 0;
    MinuteCounts minutes_;
    MinuteCounts main_minutes_;
    std::vector<MinuteCounts> transactions_; // and behind them main requests without one
};

void RequestSums::finish(ScenarioFigures& figures) const {
    if (count_ == 0) {
        return;
    }
    figures.first_request = wall_seconds(first_);
    figures.last_request = wall_seconds(last_);
    const double minutes = static_cast<double>(last_ - first_ + 1) / 60;
    LoadTestSettings& to_set = figures.to_set;
    to_set.requests_per_minute = static_cast<double>(count_) / minutes;
    to_set.main_requests_per_minute = static_cast<double>(main_count_) / minutes;
    to_set.sessions_per_minute = static_cast<double>(figures.sessions.count) / minutes;
    to_set.most_requests_a_minute = minutes_.peak();
    to_set.most_main_requests_a_minute = main_minutes_.peak();
    const auto most = std::max_element(load_.requests.begin(), load_.requests.end());
    if (most != load_.requests.end() && *most != 0) {
        load_.peak = static_cast<size_t>(most - load_.requests.begin());
    }
}

std::vector<PeakStep> RequestSums::transaction_peaks() const {
    std::vector<PeakStep> peaks;
    for (const MinuteCounts& minutes : transactions_) {
        peaks.push_back(minutes.peak());
    }
    return peaks;
}

// What sessions add up to. Visits come session by session, each in time.
class SessionSums {
  public:
    void add(const Visit& visit) {
        if (requests_ != 0 && visit.session == session_) {
            gaps_.add(visit.time - last_);
        } else {
            end_session();
            session_ = visit.session;
            first_ = visit.time;
        }
        last_ = visit.time;
        ++requests_;
        if (is_main(visit.verdict)) {
            add_main(visit);
        }
    }

    // Ends the last session, too.
    void finish(const TimeSteps& steps, ScenarioFigures& figures);

  private:
    void add_main(const Visit& visit) {
        if (has_main_) {
            page_gaps_.add(visit.time - last_main_);
        }
        has_main_ = true;
        last_main_ = visit.time;
    }

    void end_session();
    void count_at_work(const TimeSteps& steps, ScenarioFigures& figures);

    // Of the session at work.
    uint32_t session_ = 0;
    uint64_t requests_ = 0; // 0: there is none
    uint64_t first_ = 0;
    uint64_t last_ = 0;
    bool has_main_ = false;
    uint64_t last_main_ = 0;

    // Of those that have ended.
    ValueCounts sizes_;
    ValueCounts lengths_;
    ValueCounts gaps_;
    ValueCounts page_gaps_;
    uint64_t with_one_request_ = 0;
    std::vector<uint64_t> starts_; // first seconds
    std::vector<uint64_t> ends_;   // seconds behind the last ones
};

void SessionSums::end_session() {
    if (requests_ == 0) {
        return;
    }
    sizes_.add(requests_);
    lengths_.add(last_ - first_);
    with_one_request_ += requests_ == 1;
    starts_.push_back(first_);
    ends_.push_back(last_ + 1);
    requests_ = 0;
    has_main_ = false;
}

// The most sessions at work in each step.
class WorkingSessions {
  public:
    WorkingSessions(const TimeSteps& steps, std::vector<uint64_t>& most)
        : steps_(steps), most_(most) {}

    // From `time` on, so many are at work. Times rise.
    void change(uint64_t time, uint64_t count) {
        fill_up_to(time);
        now_ = count;
        const std::optional<size_t> step = steps_.find(time);
        if (step) {
            most_[*step] = std::max(most_[*step], count);
            filled_ = *step + 1;
        }
    }

  private:
    // Steps that begin before `time`, without a change since the last one.
    void fill_up_to(uint64_t time) {
        while (filled_ < most_.size() && steps_.start() + filled_ * steps_.seconds() < time) {
            most_[filled_++] = now_;
        }
    }

    const TimeSteps& steps_;
    std::vector<uint64_t>& most_;
    size_t filled_ = 0; // so many steps have at least what was at work when they began
    uint64_t now_ = 0;
};

void SessionSums::count_at_work(const TimeSteps& steps, ScenarioFigures& figures) {
    std::sort(starts_.begin(), starts_.end());
    std::sort(ends_.begin(), ends_.end());
    WorkingSessions working(steps, figures.over_time.sessions_at_work);
    PeakStep& peak = figures.sessions.peak_at_work;
    uint64_t peak_time = 0;
    size_t begun = 0;
    for (size_t ended = 0; ended < ends_.size();) {
        const uint64_t time =
            begun < starts_.size() ? std::min(starts_[begun], ends_[ended]) : ends_[ended];
        while (ended < ends_.size() && ends_[ended] == time) {
            ++ended;
        }
        while (begun < starts_.size() && starts_[begun] == time) {
            ++begun;
        }
        working.change(time, begun - ended);
        if (begun - ended > peak.count) {
            peak.count = begun - ended;
            peak_time = time;
        }
    }
    peak.start = peak.count == 0 ? 0 : wall_seconds(peak_time);
}

void SessionSums::finish(const TimeSteps& steps, ScenarioFigures& figures) {
    end_session();
    SessionFigures& sessions = figures.sessions;
    sessions.count = starts_.size();
    sessions.with_one_request = with_one_request_;
    sessions.requests = sizes_.distribution();
    sessions.length = lengths_.distribution();
    sessions.gaps = gaps_.distribution();
    sessions.page_gaps = page_gaps_.distribution();
    MinuteCounts begun;
    for (const uint64_t start : starts_) {
        begun.add(start);
        if (const std::optional<size_t> step = steps.find(start); step) {
            ++figures.over_time.sessions_begun[*step];
        }
    }
    figures.to_set.most_sessions_a_minute = begun.peak();
    count_at_work(steps, figures);
}

Visit visit_of(const WalkedRequests& requests, const OrderedRequest& request) {
    const RequestRow& row = requests.table.rows[request.row];
    return {row.time_stamp, row.session, requests.urls.verdicts[request.url],
            requests.urls.transactions[request.url]};
}

} // namespace

std::vector<PeakStep> walk_sessions(const WalkedRequests& requests, const TimeSteps& steps,
                                    ScenarioFigures& figures) {
    RequestSums sums(steps, figures.over_time, requests.urls.transaction_names.size());
    SessionSums sessions;
    constexpr size_t ahead = 16; // the rows of a session lie apart
    for (size_t i = 0; i < requests.counted.size(); ++i) {
        if (i + ahead < requests.counted.size()) {
            __builtin_prefetch(&requests.table.rows[requests.counted[i + ahead].row]);
        }
        const Visit visit = visit_of(requests, requests.counted[i]);
        sums.add(visit);
        if (i >= requests.without_session) {
            sessions.add(visit);
        }
    }
    sessions.finish(steps, figures);
    sums.finish(figures);
    return sums.transaction_peaks();
}
