#include "companions/doctor/observed_file.h"

#include "base/failure.h"

#include <algorithm>

namespace {

// Gathers what is told of a line until its outcome is there. The observers are plain functions, so
// the one at work is a global.
struct Gathering {
    const std::function<void(const ReadLine&)>& use;
    ReadLine line = {};

    void hand_over() {
        use(line);
        line = {};
    }
};
Gathering* gathering = nullptr;

bool is_outcome(ObservedKind kind) {
    return kind <= ObservedKind::post_data_missing;
}

bool is_failure(ObservedKind kind) {
    return is_outcome(kind) && kind > ObservedKind::taken;
}

void gather(const ObservedLine& observed) {
    ReadLine& line = gathering->line;
    line.number = observed.place.line_num;
    LineRemark remark = {observed.kind, std::string(observed.place.name),
                         std::string(observed.text)};
    if (!is_outcome(observed.kind)) {
        line.remarks.push_back(std::move(remark));
        return;
    }
    line.outcome = std::move(remark);
    if (!is_failure(observed.kind)) {
        gathering->hand_over();
    }
}

bool pass_over(const LinePlace&, const Failure& failure) {
    gathering->line.failure = failure.message;
    gathering->hand_over();
    return true;
}

struct Observing {
    explicit Observing(Gathering& all) {
        gathering = &all;
        line_observer = gather;
        line_failure_observer = pass_over;
    }
    ~Observing() {
        line_observer = nullptr;
        line_failure_observer = nullptr;
        gathering = nullptr;
    }
    Observing(const Observing&) = delete;
    Observing& operator=(const Observing&) = delete;
};

} // namespace

bool ReadLine::has(ObservedKind kind) const {
    return std::any_of(remarks.begin(), remarks.end(),
                       [kind](const LineRemark& remark) { return remark.kind == kind; });
}

std::string read_observed(const std::function<void()>& read,
                          const std::function<void(const ReadLine&)>& use) {
    Gathering all = {use};
    const Observing observing(all);
    try {
        read();
    } catch (const Failure& failure) {
        return failure.message;
    }
    return "";
}
