#include "companions/shard/exchange/settled_instance.h"

#include "base/failure.h"
#include "base/regular_file.h"
#include "companions/shard/exchange/packed_text.h"

#include <algorithm>

namespace {

int32_t instance_count(const Plan& plan) {
    return plan.logs.empty() ? 0 : plan.logs.back().instance + 1;
}

std::vector<LoadingCut> read_cuts(const std::string& payload) {
    PackedReader from(payload);
    std::vector<LoadingCut> cuts;
    for (uint64_t left = from.number(); left != 0; --left) {
        const uint32_t first = from.word();
        const uint32_t end = from.word();
        if (first >= end || (!cuts.empty() && first < cuts.back().end)) {
            fail_as_damaged();
        }
        cuts.push_back({first, end, from.word()});
    }
    if (!from.at_end()) {
        fail_as_damaged();
    }
    return cuts;
}

void read_settled_file(const Plan& plan, const std::string& path,
                       std::vector<SettledInstance>& instances) {
    const FileDescriptor file = open_regular_file(path.c_str());
    if (!file.is_open()) {
        fail("There is no file %s", path.c_str());
    }
    FrameReader frames(file.get(), plan.id, StreamEnd::bare);
    while (const std::optional<Frame> frame = frames.next()) {
        if (frame->kind == FrameKind::settled) {
            instances.push_back(read_settled(*frame));
        }
    }
}

} // namespace

void write_settled(const SettledInstance& settled, FrameWriter& frames) {
    std::string payload;
    append_packed(payload, uint64_t{settled.cuts.size()});
    for (const LoadingCut& cut : settled.cuts) {
        append_packed(payload, uint64_t{cut.first});
        append_packed(payload, uint64_t{cut.end});
        append_packed(payload, uint64_t{cut.rows});
    }
    frames.write(FrameKind::settled,
                 {{"instance", settled.instance},
                  {"total_req", settled.counters.total_req},
                  {"bad_req", settled.counters.bad_req},
                  {"time_filtered_req", settled.counters.time_filtered_req},
                  {"rows", settled.row_count}},
                 payload);
}

SettledInstance read_settled(const Frame& frame) {
    if (frame.kind != FrameKind::settled) {
        fail_as_damaged();
    }
    SettledInstance settled = {
        .instance = static_cast<int32_t>(number_in(frame.label, "instance", INT32_MAX)),
        .counters = {},
        .row_count = number_in(frame.label, "rows"),
        .cuts = read_cuts(frame.payload)};
    settled.counters.total_req = number_in(frame.label, "total_req");
    settled.counters.bad_req = number_in(frame.label, "bad_req");
    settled.counters.time_filtered_req = number_in(frame.label, "time_filtered_req");
    return settled;
}

std::vector<SettledInstance> read_settled_files(const Plan& plan,
                                                const std::vector<std::string>& paths) {
    std::vector<SettledInstance> instances;
    for (const std::string& path : paths) {
        read_settled_file(plan, path, instances);
    }
    std::sort(instances.begin(), instances.end(),
              [](const auto& a, const auto& b) { return a.instance < b.instance; });
    int32_t expected = 0;
    for (const SettledInstance& settled : instances) {
        if (settled.instance != expected++) {
            fail("The settled instances are not each there once");
        }
    }
    if (expected != instance_count(plan)) {
        fail("The settled instances are not each there once");
    }
    return instances;
}

LoadingCuts::LoadingCuts(const std::vector<SettledInstance>& instances) {
    for (const SettledInstance& settled : instances) {
        cuts_.insert(cuts_.end(), settled.cuts.begin(), settled.cuts.end());
    }
    const auto overlap = [](const LoadingCut& a, const LoadingCut& b) { return a.end > b.first; };
    if (std::adjacent_find(cuts_.begin(), cuts_.end(), overlap) != cuts_.end()) {
        fail_as_damaged();
    }
}

bool LoadingCuts::exclude(RequestPlace place) const {
    const auto cut =
        std::upper_bound(cuts_.begin(), cuts_.end(), place.log_piece,
                         [](uint32_t log_piece, const LoadingCut& c) { return log_piece < c.end; });
    return cut != cuts_.end() && cut->first <= place.log_piece && place.row >= cut->rows;
}
