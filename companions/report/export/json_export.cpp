#include "companions/common/shown_text.h"
#include "companions/report/export/export_formats.h"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

Json text_or_null(const std::string& text) {
    return text.empty() ? Json() : Json(valid_utf8(text));
}

std::string object_of(const LoadTarget& target) {
    const Json object = {{"method", target.method},
                         {"url", target.url},
                         {"host", text_or_null(target.host)},
                         {"transaction", text_or_null(target.transaction)},
                         {"body_file", text_or_null(target.body_file)},
                         {"count", target.count}};
    return object.dump(-1, ' ', true);
}

} // namespace

void export_json(const Targets& targets, FILE* out) {
    const char* separator = "";
    fmt::print(out, "{{\"targets\": [");
    targets([out, &separator](const LoadTarget& target) {
        fmt::print(out, "{}\n{}", separator, object_of(target));
        separator = ",";
    });
    fmt::print(out, "\n]}}\n");
}
