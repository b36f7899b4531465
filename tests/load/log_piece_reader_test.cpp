#include "tools/load/log_piece_reader.h"

#include "tests/unit_helpers.h"
#include "tools/config/log_files.h"

TEST(LogPieceReader, KeepsNoRoomForWhatALogHasLost) {
    const TemporaryDirectory directory;
    std::string name = directory.write("log", "");
    seq_file_path[0] = {name.data(), 0, 0, 0, 0};
    LogPiece piece = {};
    piece.range = {0, log_piece_size, log_piece_size};
    struct stat status = {};
    ASSERT_EQ(stat(name.c_str(), &status), 0);
    piece.identity = identity_of(status);
    ParsingThread parsing;
    RequestBatch batch;
    load_piece(parsing, piece, open_log(piece), 0, INT64_MAX, batch, {});
    EXPECT_EQ(batch.line_count, 0);
    EXPECT_EQ(batch.rows.capacity(), 0U);
    seq_file_path[0] = {};
}
