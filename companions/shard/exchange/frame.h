#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

// What the stages of a job hand to each other: a stream of frames. A frame is
//
//     4 bytes   "ZVRF"
//     4 bytes   format version, exchange_format
//     4 bytes   size of the label
//     8 bytes   size of the payload as it is packed
//     8 bytes   XXH3 of label and packed payload, 64 bits
//     label     a JSON object in one line, with at least "kind" and "plan", the plan's id
//     payload, packed by Zstandard, whose own head tells its size
//
// Numbers have their lowest byte first. Whoever moves frames need not look into payloads: labels
// tell what they have to know. A stage ends what it writes with a frame of kind "end" that holds
// the number of frames before it, so that a stream that was cut off is found out.

constexpr uint32_t exchange_format = 2;

enum class FrameKind { rows, events, settled, urls, collapsed, end };

const char* name_of(FrameKind kind);

struct Frame {
    FrameKind kind;
    nlohmann::json label;
    std::string payload; // as the reader of its kind wants it, not packed
};

// Writes frames of one plan to a descriptor, which stays the caller's.
class FrameWriter {
  public:
    // `place`: what an error line calls that to which the descriptor leads.
    FrameWriter(int descriptor, std::string plan_id, std::string place = "standard output")
        : descriptor_(descriptor), plan_id_(std::move(plan_id)), place_(std::move(place)) {}

    // `label`: what there is to tell besides kind and plan. Fails when it cannot be written.
    void write(FrameKind kind, nlohmann::json label, std::string_view payload);

    // The last frame.
    void end();

  private:
    int descriptor_;
    std::string plan_id_;
    std::string place_;
    uint64_t count_ = 0;
};

// What a stream ends with. The streams of several stages may follow each other, each with its end
// frame. Who regroups frames may leave these out; counts then prove that no frame is missing.
enum class StreamEnd { marked, bare };

// Reads frames of one plan from a descriptor, which stays the caller's.
class FrameReader {
  public:
    FrameReader(int descriptor, std::string plan_id, StreamEnd end)
        : descriptor_(descriptor), plan_id_(std::move(plan_id)), end_(end),
          may_end_(end == StreamEnd::bare) {}

    // The next frame but end frames; nothing once all have been read. Fails when the stream was cut
    // off or damaged, has another format, or is of another plan.
    std::optional<Frame> next();

  private:
    bool read_exactly(char* to, size_t size, bool may_end) const;
    std::optional<Frame> read_frame();
    Frame check(const std::string& bytes, size_t label_size, uint64_t hash) const;

    int descriptor_;
    std::string plan_id_;
    StreamEnd end_;
    uint64_t count_ = 0; // of frames since the last end frame
    bool may_end_;       // before the next frame
};

// Fails as a reader does that finds what nobody has written.
[[noreturn]] void fail_as_damaged();

// What a label tells. Fails (fail_as_damaged) where there is no such number, up to `greatest`, no
// yes or no, or no text.
uint64_t number_in(const nlohmann::json& label, const char* name, uint64_t greatest = UINT64_MAX);
bool flag_in(const nlohmann::json& label, const char* name);
std::string text_in(const nlohmann::json& label, const char* name);
