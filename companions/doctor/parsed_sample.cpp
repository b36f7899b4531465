#include "companions/doctor/parsed_sample.h"

#include "base/failure.h"
#include "base/file_descriptor.h"
#include "companions/doctor/content_form.h"
#include "companions/doctor/init/cookie_header.h"
#include "companions/doctor/rejected/log_texts.h"
#include "tools/config/log_files.h"
#include "tools/parse/field_splitter.h"
#include "tools/parse/log_loader.h"

#include <algorithm>
#include <cstdint>
#include <fcntl.h>
#include <set>
#include <sys/stat.h>
#include <utility>

namespace {

constexpr uint64_t most_bytes = uint64_t{48} << 20; // of all logs together
constexpr uint64_t most_bytes_a_part = uint64_t{1} << 20;
constexpr uint64_t least_bytes_a_part = uint64_t{16} << 10;
constexpr uint64_t parts_a_log = 3;
constexpr size_t most_examples = 2;
constexpr size_t most_cookie_names = 10000; // in a log, which may make up any number

ParsedSample* sample_at_work; // of the observer, which is told on this thread

void note_cookies(const char* header, std::vector<Cookie> (*cookies_in)(std::string_view),
                  std::set<std::string_view>& names) {
    if (header != nullptr) {
        for (const Cookie& cookie : cookies_in(header)) {
            names.insert(cookie.name);
        }
    }
}

void count_cookies(const alInfo& request, std::map<std::string, uint64_t>& counts) {
    std::set<std::string_view> names;
    note_cookies(request.cookies, cookies_of, names);
    note_cookies(request.set_cookies, set_cookies_of, names);
    for (const std::string_view name : names) {
        if (counts.size() < most_cookie_names) {
            ++counts[std::string(name)];
        }
    }
}

void note_time(uint64_t time, ParsedSample& sample) {
    const bool is_first = sample.first_time == 0;
    sample.first_time = is_first ? time : std::min(sample.first_time, time);
    sample.last_time = std::max(sample.last_time, time);
}

void note_host(const char* host, ParsedSample& sample) {
    constexpr size_t most_hosts = 1000;
    if (sample.hosts.size() < most_hosts) {
        sample.hosts.insert(host);
    } else {
        sample.has_further_hosts = sample.has_further_hosts || !sample.hosts.contains(host);
    }
}

void note_accepted(const ObservedLogLine& line, ParsedSample& sample) {
    ++sample.accepted;
    note_host(line.request->host_ip, sample);
    if (line.session != SessionNote::known) {
        ++sample.without_session;
        count_cookies(*line.request, sample.other_cookies);
    }
}

void observe(const ObservedLogLine& line) {
    ParsedSample& sample = *sample_at_work;
    ++sample.lines;
    const LineKind kind = line.outcome.kind;
    if (kind == LineKind::empty || kind == LineKind::comment) {
        return;
    }
    ++sample.requests;
    if (kind == LineKind::accepted) {
        note_accepted(line, sample);
    } else if (kind == LineKind::before_period) {
        ++sample.before;
    } else if (kind == LineKind::after_period) {
        ++sample.after;
    } else {
        ++sample.rejected[kind].count;
        return;
    }
    note_time(line.outcome.time_stamp, sample);
}

// Keeps the texts of the first lines of each reason.
void keep_examples(const LogPiece& piece, const std::vector<LineNote>& notes,
                   ParsedSample& sample) {
    LogTexts texts(piece, log_line_size);
    int64_t line_num = 0;
    for (const LineNote& note : notes) {
        ++line_num;
        const auto found = sample.rejected.find(note.kind);
        if (found != sample.rejected.end() && found->second.examples.size() < most_examples) {
            const int64_t known_num = piece.begins_file ? line_num : 0;
            found->second.examples.push_back({known_num, std::string(texts.at(note.offset).text)});
        }
    }
}

void parse_part(ParsingThread& thread, const LogPiece& piece, ParsedSample& sample) {
    const InputFileInfo& log = seq_file_path[piece.file];
    const FileDescriptor file = open_log_again(piece);
    LineReader lines(file.get(), log_line_size, piece.range, field_quote);
    RequestBatch batch;
    const LogPart part = {.file_name = log.input_file,
                          .lines_before = 0,
                          .max_lines = INT64_MAX,
                          .ends_with_rest = log.num_req != 0 && piece.ends_file,
                          .takes_notes = true,
                          .begin = piece.range.begin};
    load_url_info(thread, lines, part, batch, {});
    keep_examples(piece, batch.notes, sample);
}

// A log may hold no line feed for gigabytes: not much is read behind the part.
LogPiece piece_of(int file, uint64_t begin, uint64_t end, uint64_t size) {
    return {.thread = 0,
            .file = file,
            .range = {begin, end, std::min(size, end + log_line_size)},
            .is_stream = false,
            .begins_file = begin == 0,
            .ends_file = end == size,
            .ends_thread = false};
}

std::vector<LogPiece> sampled_parts(int file, uint64_t size, uint64_t part_size) {
    if (size <= parts_a_log * part_size) {
        return {piece_of(file, 0, size, size)};
    }
    const uint64_t middle = (size - part_size) / 2;
    return {piece_of(file, 0, part_size, size), piece_of(file, middle, middle + part_size, size),
            piece_of(file, size - part_size, size, size)};
}

void add_sample(ParsingThread& thread, int file, uint64_t size, uint64_t part_size,
                std::vector<ParsedSample>& samples) {
    const std::vector<LogPiece> parts = sampled_parts(file, size, part_size);
    ParsedSample sample = {.file = file, .is_whole = parts.size() == 1};
    sample_at_work = &sample;
    try {
        for (const LogPiece& part : parts) {
            parse_part(thread, part, sample);
        }
        samples.push_back(std::move(sample));
    } catch (const Failure&) {
        // The log cannot be read, which check_log_files says.
    }
    sample_at_work = nullptr;
}

// Bytes of a log that can be sampled; 0 when there are none.
uint64_t size_of_text(int file) {
    const LogPiece whole = piece_of(file, 0, 0, 0);
    const FileDescriptor log = open_log_again(whole);
    struct stat status;
    if (seq_file_path[file].body_flag != 0 || fstat(log.get(), &status) != 0 ||
        !S_ISREG(status.st_mode)) {
        return 0;
    }
    std::string bytes(content_sample_size, '\0');
    const ssize_t count = pread(log.get(), bytes.data(), bytes.size(), 0);
    bytes.resize(static_cast<size_t>(std::max(count, ssize_t{0})));
    const ContentForm form = form_of_content(bytes);
    return form.packed_as.empty() && !form.is_utf16 ? static_cast<uint64_t>(status.st_size) : 0;
}

} // namespace

std::vector<ParsedSample> sample_logs() {
    std::vector<ParsedSample> samples;
    const uint64_t parts = parts_a_log * static_cast<uint64_t>(std::max(num_al_files, 1));
    const uint64_t part_size =
        std::clamp(most_bytes / parts, least_bytes_a_part, most_bytes_a_part);
    ParsingThread thread;
    log_line_observer = observe;
    for (int file = 0; file < num_al_files; ++file) {
        const uint64_t size = size_of_text(file);
        if (size != 0) {
            add_sample(thread, file, size, part_size, samples);
        }
    }
    log_line_observer = nullptr;
    return samples;
}
