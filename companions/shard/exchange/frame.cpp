#include "companions/shard/exchange/frame.h"

#include "base/failure.h"
#include "base/file_descriptor.h"
#include "companions/shard/exchange/packed_payload.h"

#include <cerrno>
#include <cstring>
#include <endian.h>
#include <iterator>
#include <system_error>
#include <unistd.h>
#include <xxhash.h>

namespace {

constexpr const char* kind_names[] = {"rows", "events", "settled", "urls", "collapsed", "end"};
constexpr std::string_view magic = "ZVRF";
constexpr size_t head_size = 28;

// More than any stage writes: a damaged size must not take all memory.
constexpr uint32_t max_label_size = uint32_t{1} << 20;
constexpr uint64_t max_packed_size = uint64_t{1} << 26;

void append_number(std::string& to, uint64_t number, size_t size) {
    const uint64_t lowest_first = htole64(number);
    to.append(reinterpret_cast<const char*>(&lowest_first), size);
}

uint64_t read_number(const char* from, size_t size) {
    uint64_t number = 0;
    std::memcpy(&number, from, size);
    return le64toh(number);
}

FrameKind kind_of(const nlohmann::json& name) {
    for (size_t i = 0; i < std::size(kind_names); ++i) {
        if (name == kind_names[i]) {
            return static_cast<FrameKind>(i);
        }
    }
    fail_as_damaged();
}

} // namespace

void fail_as_damaged() {
    fail("The frames of the job are damaged");
}

uint64_t number_in(const nlohmann::json& label, const char* name, uint64_t greatest) {
    const auto entry = label.find(name);
    if (entry == label.end() || !entry->is_number_unsigned() || entry->get<uint64_t>() > greatest) {
        fail_as_damaged();
    }
    return entry->get<uint64_t>();
}

bool flag_in(const nlohmann::json& label, const char* name) {
    const auto entry = label.find(name);
    if (entry == label.end() || !entry->is_boolean()) {
        fail_as_damaged();
    }
    return entry->get<bool>();
}

std::string text_in(const nlohmann::json& label, const char* name) {
    const auto entry = label.find(name);
    if (entry == label.end() || !entry->is_string()) {
        fail_as_damaged();
    }
    return entry->get<std::string>();
}

const char* name_of(FrameKind kind) {
    return kind_names[static_cast<size_t>(kind)];
}

void FrameWriter::write(FrameKind kind, nlohmann::json label, std::string_view payload) {
    label["kind"] = name_of(kind);
    label["plan"] = plan_id_;
    std::string bytes = label.dump();
    const size_t label_size = bytes.size();
    const size_t packed_size = append_packed_payload(bytes, payload);
    std::string head(magic);
    append_number(head, exchange_format, sizeof(uint32_t));
    append_number(head, label_size, sizeof(uint32_t));
    append_number(head, packed_size, sizeof(uint64_t));
    append_number(head, XXH3_64bits(bytes.data(), bytes.size()), sizeof(uint64_t));
    if (!write_whole(descriptor_, head) || !write_whole(descriptor_, bytes)) {
        fail("Failed to write frames to %s. Error = '%s'", place_.c_str(),
             std::generic_category().message(errno).c_str());
    }
    ++count_;
}

void FrameWriter::end() {
    write(FrameKind::end, {{"frames", count_}}, {});
}

std::optional<Frame> FrameReader::next() {
    std::optional<Frame> frame;
    while ((frame = read_frame()) && frame->kind == FrameKind::end) {
        if (number_in(frame->label, "frames") != std::exchange(count_, 0)) {
            fail("Frames of the job are missing");
        }
        may_end_ = true;
    }
    if (frame) {
        ++count_;
        may_end_ = end_ == StreamEnd::bare;
    }
    return frame;
}

std::optional<Frame> FrameReader::read_frame() {
    char head[head_size];
    if (!read_exactly(head, head_size, may_end_)) {
        return std::nullopt;
    }
    const char* place = head;
    const auto take = [&](size_t size) {
        return read_number(std::exchange(place, place + size), size);
    };
    if (std::memcmp(std::exchange(place, place + magic.size()), magic.data(), magic.size()) != 0) {
        fail_as_damaged();
    }
    if (const uint64_t format = take(sizeof(uint32_t)); format != exchange_format) {
        fail("The frames of the job are of format %lu, this program reads format %u", format,
             exchange_format);
    }
    const uint64_t label_size = take(sizeof(uint32_t));
    const uint64_t payload_size = take(sizeof(uint64_t));
    const uint64_t hash = take(sizeof(uint64_t));
    if (label_size > max_label_size || payload_size > max_packed_size) {
        fail_as_damaged();
    }
    std::string bytes(label_size + payload_size, '\0');
    read_exactly(bytes.data(), bytes.size(), false);
    return check(bytes, label_size, hash);
}

// Returns false when the stream ends before the first byte, if it may.
bool FrameReader::read_exactly(char* to, size_t size, bool may_end) const {
    size_t done = 0;
    while (done != size) {
        const ssize_t count = read(descriptor_, to + done, size - done);
        if (count > 0) {
            done += static_cast<size_t>(count);
        } else if (count == 0 && done == 0 && may_end) {
            return false;
        } else if (count == 0) {
            fail("The frames of the job end too early");
        } else if (errno != EINTR) {
            fail("Failed to read frames. Error = '%s'",
                 std::generic_category().message(errno).c_str());
        }
    }
    return true;
}

Frame FrameReader::check(const std::string& bytes, size_t label_size, uint64_t hash) const {
    if (XXH3_64bits(bytes.data(), bytes.size()) != hash) {
        fail_as_damaged();
    }
    nlohmann::json label = nlohmann::json::parse(bytes.substr(0, label_size), nullptr, false);
    if (!label.is_object()) {
        fail_as_damaged();
    }
    if (label["plan"] != plan_id_) {
        fail("The frames are those of another plan");
    }
    const FrameKind kind = kind_of(label["kind"]);
    std::optional<std::string> payload =
        unpacked_payload(std::string_view(bytes).substr(label_size));
    if (!payload) {
        fail_as_damaged();
    }
    return {kind, std::move(label), std::move(*payload)};
}
