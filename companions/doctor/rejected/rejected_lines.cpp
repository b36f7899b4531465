#include "companions/doctor/rejected/rejected_lines.h"

#include "base/failure.h"
#include "base/parallel_tasks.h"
#include "companions/common/progress_bar.h"
#include "companions/doctor/rejected/log_texts.h"
#include "tools/load/load_phase.h"

#include <algorithm>
#include <unistd.h>
#include <vector>

namespace {

// A piece, and how many of its rejected lines are to be written.
struct PieceToWrite {
    const ExplainedPiece* piece;
    uint64_t line_count;
};

std::vector<PieceToWrite> choose_pieces(const ExplainedLogs& logs, uint64_t limit) {
    std::vector<PieceToWrite> chosen;
    for (const ExplainedPiece& piece : logs.pieces) {
        const uint64_t count = std::min(limit, uint64_t{piece.rejected.size()});
        if (count != 0) {
            chosen.push_back({&piece, count});
            limit -= count;
        }
    }
    return chosen;
}

void write_piece(const PieceToWrite& to_write, size_t text_size, const RejectedLineForm& form,
                 std::string& output) {
    const ExplainedPiece& piece = *to_write.piece;
    LogTexts texts(piece.piece, text_size);
    output.clear();
    for (size_t i = 0; i < to_write.line_count; ++i) {
        const RejectedPlace& place = piece.rejected[i];
        form(output, {piece.piece.file, piece.lines_before + place.line + 1, place.why,
                      texts.at(place.offset)});
    }
}

} // namespace

void write_output(FILE* stream, std::string_view text) {
    if (fwrite(text.data(), 1, text.size(), stream) != text.size() || fflush(stream) != 0) {
        fail("The output cannot be written");
    }
}

void write_rejected_lines(FILE* stream, const ExplainedLogs& logs, const ChosenLines& chosen,
                          const RejectedLineForm& form) {
    const size_t text_size = chosen.text_size;
    const std::vector<PieceToWrite> pieces = choose_pieces(logs, chosen.limit);
    const auto pieces_a_time = static_cast<size_t>(4 * std::max(run_thread_count, 1));
    std::vector<std::string> outputs(pieces_a_time); // whose memory is used again
    ProgressBar bar("Writing rejected lines", pieces.size());
    for (size_t begin = 0; begin < pieces.size(); begin += pieces_a_time) {
        const size_t count = std::min(pieces_a_time, pieces.size() - begin);
        run_tasks(run_thread_count, count,
                  [&](size_t i) { write_piece(pieces[begin + i], text_size, form, outputs[i]); });
        for (size_t i = 0; i < count; ++i) {
            write_output(stream, outputs[i]);
        }
        if (isatty(fileno(stream)) == 0) {
            bar.update(begin + count);
        }
    }
}
