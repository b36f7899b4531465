#include "companions/doctor/init/layout_score.h"

#include "companions/doctor/init/line_trial.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double good_share = 0.6;

void count_line(LineTrial& trial, const std::string& line, LayoutScore& score) {
    ++score.line_count;
    const LineKind kind = trial.parse(line);
    if (kind == LineKind::accepted && trial.is_plausible()) {
        ++score.fitting_count;
        return;
    }
    if (kind == LineKind::accepted) {
        ++score.implausible_count;
    } else {
        ++score.rejected[kind];
    }
    if (score.refused_line.empty()) {
        score.refused_line = line;
    }
}

// The number of fields that most lines have at least.
int usual_field_count(const std::vector<LogSample>& samples) {
    constexpr size_t enough = 1000;
    std::vector<size_t> counts;
    for (const LogSample& sample : samples) {
        for (size_t i = 0; i < sample.lines.size() && i < enough; ++i) {
            counts.push_back(split_into_fields(sample.lines[i]).size());
        }
    }
    if (counts.empty()) {
        return 0;
    }
    const auto middle = counts.begin() + static_cast<std::ptrdiff_t>(counts.size() / 2);
    std::ranges::nth_element(counts, middle);
    return static_cast<int>(*middle);
}

size_t told_fields(const LogLayout& layout) {
    return layout.positions.size() -
           static_cast<size_t>(std::ranges::count(layout.positions, short{0}));
}

size_t cut_lines(const LayoutScore& score) {
    const auto found = score.rejected.find(LineKind::too_few_fields);
    return found == score.rejected.end() ? 0 : found->second;
}

// Shares that differ by less count as equal.
long rank_of(const LayoutScore& score) {
    return std::lround(score.share() * 100);
}

bool is_better(const LayoutScore& a, const LayoutScore& b, int usual_fields) {
    if (rank_of(a) != rank_of(b)) {
        return rank_of(a) > rank_of(b);
    }
    if (rank_of(a) == 0) { // the layout whose fields are there at least says more of what is wrong
        return cut_lines(a) < cut_lines(b);
    }
    if (!a.layout.reads_like(b.layout)) {
        return told_fields(a.layout) > told_fields(b.layout);
    }
    return std::abs(a.line_fields - usual_fields) < std::abs(b.line_fields - usual_fields);
}

const char* reason_of(LineKind kind) {
    switch (kind) {
    case LineKind::unclosed_field:
        return "a quote or bracket is not closed";
    case LineKind::too_few_fields:
        return "too few fields";
    case LineKind::invalid_client_address:
        return "no IPv4 address where the client address should be";
    case LineKind::invalid_request_line:
        return "no request line where it should be";
    case LineKind::invalid_time:
        return "no time that can be read where it should be";
    default:
        return "fields are missing";
    }
}

} // namespace

LayoutScore score_layout(const KnownLayout& known, const std::vector<LogSample>& samples) {
    LayoutScore score = {known.layout, known.line_fields};
    LineTrial trial(known.layout);
    for (const LogSample& sample : samples) {
        for (const std::string& line : sample.lines) {
            count_line(trial, line, score);
        }
    }
    return score;
}

std::vector<LayoutScore> score_known_layouts(const std::vector<LogSample>& samples) {
    const int usual_fields = usual_field_count(samples);
    std::vector<LayoutScore> scores;
    for (const KnownLayout& known : known_layouts()) {
        scores.push_back(score_layout(known, samples));
    }
    std::ranges::stable_sort(scores, [&](const LayoutScore& a, const LayoutScore& b) {
        return is_better(a, b, usual_fields);
    });
    std::vector<LayoutScore> distinct;
    for (const LayoutScore& score : scores) {
        const auto reads_same = [&](const LayoutScore& other) {
            return other.layout.reads_like(score.layout);
        };
        if (std::ranges::none_of(distinct, reads_same)) {
            distinct.push_back(score);
        }
    }
    return distinct;
}

bool is_clear(const std::vector<LayoutScore>& scores) {
    return !scores.empty() && scores.front().share() >= good_share;
}

std::string main_reason(const LayoutScore& score) {
    const char* reason = "holds no request where it should";
    size_t most = score.implausible_count;
    for (const auto& [kind, count] : score.rejected) {
        if (count > most) {
            most = count;
            reason = reason_of(kind);
        }
    }
    return most == 0 ? "" : reason;
}
