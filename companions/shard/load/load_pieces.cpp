#include "companions/shard/load/load_pieces.h"

#include "base/failure.h"
#include "companions/shard/exchange/event_records.h"
#include "companions/shard/exchange/row_block.h"
#include "companions/shard/exchange/sorted_rows.h"
#include "companions/shard/plan/apply_plan.h"
#include "companions/shard/plan/planned_logs.h"
#include "tools/config/log_files.h"
#include "tools/load/loading_thread.h"
#include "tools/load/log_piece_reader.h"

#include <set>
#include <string_view>

size_t loaded_run_size = size_t{128} << 20;

namespace {

// Rows of log pieces that are sorted together, with their texts.
class Run {
  public:
    explicit Run(FrameWriter& frames) : frames_(frames) {}
    ~Run();
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    // Reads the log piece into the run, all but requests that wait, and tells of these.
    void load(const LogPiece& piece, uint32_t number, EventFrameWriter& events);

    bool is_full() const;

    // Writes out what is held, in order.
    void write();

  private:
    ExchangedEvent exchanged_event(const SessionEvent& event, const PlacedRow& row) const;
    void add_rows(const RequestBatch& batch, uint32_t number);

    FrameWriter& frames_;
    ParsingThread parsing_ = {};
    std::vector<PlacedRow> rows_;
};

Run::~Run() {
    parsing_.interner.release_texts();
    parsing_.own_texts.release();
}

bool Run::is_full() const {
    const RequestTexts& texts = parsing_.interner.texts();
    return rows_.size() * sizeof(PlacedRow) + texts.held_size() + parsing_.own_texts.held_size() >=
           loaded_run_size;
}

void Run::load(const LogPiece& piece, uint32_t number, EventFrameWriter& events) {
    RequestBatch batch;
    const InputFileInfo& file = seq_file_path[piece.file];
    if (file.body_flag == 0) {
        load_piece(parsing_, piece, open_log(piece), 0, line_budget(file), batch, {});
    }
    events.add_piece({.log_piece = number,
                      .line_count = batch.line_count,
                      .counters = batch.counters,
                      .row_count = static_cast<uint32_t>(batch.rows.size()),
                      .has_line_pieces = batch.has_line_pieces},
                     file.instance_idx, batch.events.size());
    for (const SessionEvent& event : batch.events) {
        events.add_event(exchanged_event(event, {batch.rows[event.row], {number, event.row}}));
    }
    add_rows(batch, number);
}

ExchangedEvent Run::exchanged_event(const SessionEvent& event, const PlacedRow& row) const {
    return {.waits = event.waits,
            .line_num = event.line_num,
            .akaau_id = event.akaau_id,
            .request = exchanged_row(parsing_.interner.texts(), row)};
}

void Run::add_rows(const RequestBatch& batch, uint32_t number) {
    auto event = batch.events.begin();
    for (uint32_t i = 0; i < batch.rows.size(); ++i) {
        const bool has_event = event != batch.events.end() && event->row == i;
        if (!has_event || !event->waits) {
            rows_.push_back({batch.rows[i], {number, i}});
        }
        event += has_event ? 1 : 0;
    }
}

void Run::write() {
    const RequestTexts& texts = parsing_.interner.texts();
    sort_rows(texts, rows_);
    RowBlockWriter writer(frames_, nlohmann::json::object());
    for (const PlacedRow& row : rows_) {
        writer.add(exchanged_row(texts, row));
    }
    writer.finish();
}

std::vector<size_t> logs_of(const std::vector<LogPiece>& log_pieces,
                            const std::vector<uint32_t>& numbers) {
    std::set<size_t> logs;
    for (const uint32_t number : numbers) {
        logs.insert(static_cast<size_t>(log_pieces[number].file));
    }
    return {logs.begin(), logs.end()};
}

std::vector<uint32_t> log_pieces_of(const Plan& plan, const std::vector<uint32_t>& pieces) {
    std::vector<uint32_t> numbers;
    for (const uint32_t piece : pieces) {
        if (piece >= plan.pieces.size()) {
            fail("The plan has no piece %u", piece);
        }
        for (uint32_t i = plan.pieces[piece].first; i != plan.pieces[piece].end; ++i) {
            numbers.push_back(i);
        }
    }
    return numbers;
}

// Who wants only the events need not read on behind the last of them.
void load_runs(const std::vector<LogPiece>& log_pieces, const std::vector<uint32_t>& numbers,
               FrameWriter& frames) {
    EventFrameWriter events(frames);
    for (auto number = numbers.begin(); number != numbers.end();) {
        Run run(frames);
        for (; number != numbers.end() && !run.is_full(); ++number) {
            run.load(log_pieces[*number], *number, events);
        }
        if (number == numbers.end()) {
            events.finish();
        }
        run.write();
    }
}

} // namespace

void load_pieces(const Plan& plan, const std::vector<uint32_t>& pieces, FrameWriter& frames) {
    const std::vector<uint32_t> numbers = log_pieces_of(plan, pieces);
    const std::vector<LogPiece> log_pieces = cut_planned_logs(plan.logs);
    const std::vector<size_t> logs = logs_of(log_pieces, numbers);
    check_logs(plan, logs);
    load_runs(log_pieces, numbers, frames);
    check_logs(plan, logs);
}
