#include "companions/report/export/csv_fields.h"
#include "companions/report/export/export_formats.h"

#include <fmt/core.h>

void export_csv(const Targets& targets, FILE* out) {
    fmt::print(out, "method,url,host,transaction,body_file,count\r\n");
    targets([out](const LoadTarget& target) {
        fmt::print(out, "{},{},{},{},{},{}\r\n", csv_field(target.method), csv_field(target.url),
                   csv_field(target.host), csv_field(target.transaction),
                   csv_field(target.body_file), target.count);
    });
}
