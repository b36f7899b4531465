#include "companions/doctor/field_view.h"

#include "companions/doctor/init/line_trial.h"
#include "tools/config/field_layout.h"

#include <fmt/core.h>
#include <vector>

namespace {

constexpr size_t most_characters = 40; // of a field

// Name of the kind at a position; empty: the layout has no use for it.
std::string kind_at(size_t position) {
    for (int kind = 0; kind < al_field_kind_count; ++kind) {
        if (al_required_field_position[kind] == static_cast<short>(position)) {
            return al_required_fields[kind].name;
        }
    }
    return "";
}

std::string cut(const std::string& field) {
    return field.size() <= most_characters ? field : field.substr(0, most_characters) + "...";
}

// The kinds that stand behind the last field.
std::string missing_kinds(size_t field_count) {
    std::string missing;
    for (size_t position = field_count + 1;
         position <= static_cast<size_t>(max_required_field_position); ++position) {
        const std::string kind = kind_at(position);
        if (!kind.empty()) {
            missing += fmt::format("{}{} {}", missing.empty() ? "" : ", ", position, kind);
        }
    }
    return missing;
}

} // namespace

std::string fields_as_seen(const std::string& line) {
    const std::vector<std::string> fields = split_into_fields(line.substr(0, line.find('\0')));
    if (fields.empty()) {
        return "It has no fields, since a quote or bracket is not closed.";
    }
    std::string seen = "Its fields: ";
    for (size_t i = 0; i < fields.size(); ++i) {
        const std::string kind = kind_at(i + 1);
        seen += fmt::format("{}{}{}{} '{}'", i == 0 ? "" : ", ", i + 1, kind.empty() ? "" : " ",
                            kind, cut(fields[i]));
    }
    const std::string missing = missing_kinds(fields.size());
    return seen + (missing.empty() ? "." : "; missing: " + missing + ".");
}
