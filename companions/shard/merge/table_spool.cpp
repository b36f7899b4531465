#include "companions/shard/merge/table_spool.h"

#include "base/failure.h"

#include <cerrno>
#include <string>
#include <system_error>
#include <unistd.h>

namespace {

std::string error_text() {
    return std::generic_category().message(errno);
}

} // namespace

void TableSpool::add(const Frame& frame) {
    const std::string label = frame.label.dump();
    if (!write_whole(file_.get(), label) || !write_whole(file_.get(), frame.payload)) {
        fail("Failed to keep the tables of the job in %s. Error = '%s'", spill_directory().c_str(),
             error_text().c_str());
    }
    if (tables_.empty() || number_in(frame.label, "part") == 0) {
        tables_.emplace_back();
    }
    tables_.back().push_back(
        {end_, static_cast<uint32_t>(label.size()), static_cast<uint32_t>(frame.payload.size())});
    end_ += label.size() + frame.payload.size();
}

std::optional<Frame> TableSpool::part(size_t table, size_t number) const {
    if (number == tables_[table].size()) {
        return std::nullopt;
    }
    const Place& place = tables_[table][number];
    std::string bytes(place.label_size + place.payload_size, '\0');
    for (size_t done = 0; done != bytes.size();) {
        const ssize_t count = pread(file_.get(), bytes.data() + done, bytes.size() - done,
                                    static_cast<off_t>(place.offset + done));
        if (count == 0 || (count == -1 && errno != EINTR)) {
            fail("Failed to read the tables of the job. Error = '%s'", error_text().c_str());
        }
        done += count > 0 ? static_cast<size_t>(count) : 0;
    }
    Frame frame = {FrameKind::urls, nlohmann::json::parse(bytes.substr(0, place.label_size)), {}};
    frame.payload = bytes.substr(place.label_size);
    return frame;
}
