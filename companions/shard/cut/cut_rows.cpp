#include "companions/shard/cut/cut_rows.h"

#include "base/failure.h"
#include "companions/shard/exchange/range_key.h"
#include "companions/shard/exchange/row_block.h"

#include <algorithm>
#include <functional>
#include <optional>

namespace {

size_t range_of(const ExchangedRow& row, const std::vector<std::string>& keys) {
    const auto above = std::upper_bound(keys.begin(), keys.end(), range_key(row.session, row.time));
    return static_cast<size_t>(above - keys.begin());
}

void cut_block(Frame block, const std::vector<std::string>& keys, FrameWriter& to) {
    std::optional<RowBlockWriter> writer;
    std::string_view session;
    size_t range = 0;
    RowBlockReader reader(std::move(block));
    while (reader.next()) {
        const ExchangedRow& row = reader.row();
        const bool is_in_range = writer && row.session == session && tells_session(session);
        if (const size_t own = is_in_range ? range : range_of(row, keys); !writer || own != range) {
            if (writer) {
                writer->finish();
            }
            range = own;
            writer.emplace(to, nlohmann::json{{"range", range}});
        }
        session = row.session;
        writer->add(row);
    }
    if (writer) {
        writer->finish();
    }
}

} // namespace

void cut_rows(FrameReader& from, const std::vector<std::string>& keys, FrameWriter& to) {
    if (std::adjacent_find(keys.begin(), keys.end(), std::greater_equal()) != keys.end()) {
        fail("The keys of ranges are not in ascending order");
    }
    while (std::optional<Frame> frame = from.next()) {
        if (frame->kind == FrameKind::rows) {
            cut_block(std::move(*frame), keys, to);
        }
    }
}
