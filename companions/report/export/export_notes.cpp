#include "companions/report/export/export_notes.h"

#include "companions/common/counted.h"

std::string ExportNotes::Amount::text() const {
    return requests == 0
               ? counted(urls, "URL")
               : fmt::format("{} ({})", counted(requests, "request"), counted(urls, "URL"));
}

void ExportNotes::print(FILE* stream) const {
    fmt::print(stream, "Exported: {}\n", exported_.text());
    for (const auto& [why, amount] : left_out_) {
        fmt::print(stream, "Left out: {} {}\n", amount.text(), why);
    }
    for (const auto& [why, amount] : changed_) {
        fmt::print(stream, "Changed: {} {}\n", amount.text(), why);
    }
}
