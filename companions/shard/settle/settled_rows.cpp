#include "companions/shard/settle/settled_rows.h"

#include <algorithm>
#include <tuple>

size_t settled_run_size = size_t{96} << 20;

void SettledRows::add(RequestPlace place, std::string_view session, std::string_view request) {
    const uint64_t time = PackedReader(request).number();
    rows_.push_back({keep(session), keep(request), time, place});
    if (texts_.held_size() + rows_.size() * sizeof(Row) >= settled_run_size) {
        finish();
    }
}

std::string_view SettledRows::keep(std::string_view text) {
    return {texts_.copy("settled request", text), text.size()};
}

void SettledRows::finish() {
    std::sort(rows_.begin(), rows_.end(), [](const Row& a, const Row& b) {
        return std::tie(a.session, a.time, a.place) < std::tie(b.session, b.time, b.place);
    });
    RowBlockWriter writer(frames_, nlohmann::json::object());
    OwnTextsReader own_texts;
    for (const Row& row : rows_) {
        ExchangedRow whole = {};
        whole.session = row.session;
        whole.place = row.place;
        PackedReader from(row.request);
        read_request(from, own_texts, whole);
        writer.add(whole);
    }
    writer.finish();
    rows_.clear();
    texts_.release();
}
