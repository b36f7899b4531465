#include "tools/load/loading_thread.h"

#include "base/logs.h"
#include "base/progress.h"
#include "tools/config/log_files.h"
#include "tools/load/line_count.h"
#include "tools/load/log_piece_reader.h"

#include <cstdint>
#include <vector>

namespace {

constexpr const char* fname = "process_url_files_t";

void refuse_last_line(std::vector<LineNote>& notes) {
    if (!notes.empty()) {
        notes.back().kind = LineKind::beyond_waiting_limit;
        notes.back().session = SessionNote::known;
    }
}

void refuse_last_line(LineTally* tally) {
    if (tally != nullptr) {
        --tally->lines_of(LineKind::accepted);
        ++tally->lines_of(LineKind::beyond_waiting_limit);
    }
}

} // namespace

// A budget beyond what can be counted is none.
int64_t line_budget(const InputFileInfo& file) {
    const bool is_limited = file.num_req != 0 && file.num_req <= INT64_MAX;
    return is_limited ? static_cast<int64_t>(file.num_req) : INT64_MAX;
}

void LoadingThread::start() {
    std::call_once(is_started_, [this] {
        start_ = std::time(nullptr);
        write_progress("\tThread[%d] started at %s\n", arguments_.thread_idx,
                       get_cur_date_time(nullptr));
        settlement_.emplace(arguments_.thread_idx);
    });
}

void LoadingThread::begin(const LogPiece& piece) {
    start();
    settled_events_ = 0;
    const InputFileInfo& file = seq_file_path[piece.file];
    if (piece.begins_file) {
        lines_before_ = 0;
        max_lines_ = line_budget(file);
        is_file_done_ = file.body_flag != 0;
    }
    if (piece.begins_file && wants_more()) {
        DEBUG_LOG(2, fname, "url_file_path = %s", file.input_file);
    }
}

void LoadingThread::begin_file(const LogPiece& piece) const {
    if (piece.begins_file) {
        write_progress("\t\tThread[%d] start processing file '%s' at %s\n", arguments_.thread_idx,
                       seq_file_path[piece.file].input_file, get_cur_date_time(nullptr));
        DEBUG_LOG(2, "load_url_info", "Method called, access log file = %s",
                  seq_file_path[piece.file].input_file);
    }
}

void LoadingThread::settle_batch(RequestBatch& batch, uint32_t number, const LogPiece& piece,
                                 const std::function<void(int64_t max_lines)>& reload) {
    if (batch.has_line_pieces) {
        count_lines(piece);
    }
    if (batch.line_count > lines_left()) {
        reload(lines_left());
    }
    if (!settle_events(batch, number, piece)) {
        reload(batch.events[settled_events_].line_num); // the last line that counts
    }
}

// Fixes the line budget of the file, which holds lines longer than the limit, unless it has one.
void LoadingThread::count_lines(const LogPiece& piece) {
    if (max_lines_ == INT64_MAX) {
        const char* name = seq_file_path[piece.file].input_file;
        const FileDescriptor file = open_log(piece);
        max_lines_ =
            static_cast<int64_t>(total_lines_in_open_file(name, file.get(), piece.range.file_size));
    }
}

bool LoadingThread::settle_events(const RequestBatch& batch, uint32_t number,
                                  const LogPiece& piece) {
    const BatchPlace place = {number, seq_file_path[piece.file].input_file, lines_before_};
    for (; settled_events_ < batch.events.size(); ++settled_events_) {
        if (!settlement_->settle(batch.events[settled_events_], place, grants_)) {
            DEBUG_LOG(1, fname,
                      "Max unaccounted urls reached, No more new files will be processed");
            is_full_ = true;
            return false;
        }
    }
    return true;
}

void LoadingThread::end(const LogPiece& piece, RequestBatch& batch) {
    if (is_full_ && !batch.rows.empty()) {
        batch.rows.pop_back();
        refuse_last_line(batch.notes);
        refuse_last_line(batch.tally.get());
    }
    if (batch.tally != nullptr) {
        tally_.merge(*batch.tally);
        batch.tally.reset();
    }
    batch.events = {};
    lines_before_ += batch.line_count;
    is_file_done_ = is_file_done_ || lines_before_ >= max_lines_;
    counters_.total_req += batch.counters.total_req;
    counters_.bad_req += batch.counters.bad_req;
    counters_.time_filtered_req += batch.counters.time_filtered_req;
    arguments_.total_valid_req_t += batch.rows.size();
    if (piece.ends_file && !is_full_) {
        end_file(seq_file_path[piece.file]);
    }
    if (piece.ends_thread) {
        write_progress("\tThread[%d] ended at %s , total time taken = %ld(sec)\n",
                       arguments_.thread_idx, get_cur_date_time(nullptr),
                       static_cast<long>(std::time(nullptr) - start_));
    }
}

void LoadingThread::end_file(const InputFileInfo& file) const {
    if (file.body_flag != 0) {
        return;
    }
    DEBUG_LOG(3, fname, "Thread[%d] Processing of Url file - '%s' completed, %lu request processed",
              arguments_.thread_idx, file.input_file, arguments_.total_valid_req_t);
    write_progress("\t\tThread[%d] end processeding file '%s' at %s\n", arguments_.thread_idx,
                   file.input_file, get_cur_date_time(nullptr));
}
