#include "companions/doctor/check_layout.h"

#include "tools/config/field_layout.h"
#include "tools/config/replay_settings.h"

#include <algorithm>
#include <fmt/core.h>
#include <vector>

namespace {

constexpr const char* layout_cure =
    "Number the fields of a line of the log from 1, text in double quotes or square brackets being "
    "one field, and give AL_FIELD {} with the number.";

bool is_there(FieldKind kind) {
    return al_required_field_position[kind] != 0;
}

std::string position_text(FieldKind kind) {
    return fmt::format("AL_FIELD {} {}", al_required_fields[kind].name,
                       al_required_field_position[kind]);
}

void add_fault(FileFindings& findings, const LayoutLines& lines, const LayoutFault& fault) {
    const std::string field = al_required_fields[fault.kind].name;
    const bool is_missing = !is_there(fault.kind);
    findings.add(Severity::error, is_missing ? "field-missing" : "field-position",
                 lines.line_of(field), is_missing ? field : position_text(fault.kind),
                 fault.failure.message + (fault.failure.message.ends_with('.') ? "" : ".") +
                     " A run fails.",
                 fmt::format(layout_cure, field));
}

bool is_of_use(const std::string& field) {
    return field == "RESPONSE_TIME" ? consider_response_time != 0 : al_type != AL_TYPE_APACHE;
}

void report_undone_lines(FileFindings& findings, const LayoutLines& lines) {
    for (const auto& [field, undone] : lines.undone()) {
        findings.add(is_of_use(field) ? Severity::warning : Severity::note, "field-unset",
                     undone.line, "AL_FIELD " + field,
                     fmt::format("Line {} unsets this field again, since the name there begins "
                                 "with {}.",
                                 undone.undoing_line, field),
                     fmt::format("Put this line behind line {}.", undone.undoing_line));
    }
}

// What is not refused, but then finds nothing.
void report_useless_settings(FileFindings& findings) {
    if (auto_redirect_flag != 0 && !is_there(AL_LOCATION)) {
        findings.add(Severity::note, "no-location", 0, "AUTO_REDIRECT",
                     "The layout has no field LOCATION, so that requests which follow a redirect "
                     "are not found and count.",
                     "Log the header Location and give AL_FIELD LOCATION, if this matters.");
    }
    if (session_mode == SESSION_MODE_COOKIE && secondary_cookie_enable != 0 &&
        !is_there(AL_SET_COOKIE)) {
        findings.add(Severity::note, "no-set-cookie", 0, "SECONDARY_COOKIE",
                     "The layout has no field SET_COOKIE, so that requests which wait for their "
                     "session are not given one by a response.",
                     "Log the header Set-Cookie and give AL_FIELD SET_COOKIE, if this matters.");
    }
}

void report_default_layout(FileFindings& findings) {
    const char* const type = al_type == AL_TYPE_APACHE ? "APACHE"
                             : al_type == AL_TYPE_IIS  ? "IIS"
                                                       : "of another name";
    int fields = 0;
    for (const short position : al_required_field_position) {
        fields = std::max(fields, int{position});
    }
    findings.add(Severity::note, "default-layout", 0, "",
                 fmt::format("There is no AL_FIELD line, so the default layout of log type {} "
                             "holds: every line has to have {} fields.",
                             type, fields),
                 "Give AL_FIELD lines where the log has another layout.");
}

} // namespace

void LayoutLines::note(const ReadLine& line) {
    for (const LineRemark& remark : line.remarks) {
        if (remark.kind == ObservedKind::value_set) {
            lines_[remark.name] = line.number;
            undone_.erase(remark.name);
        } else if (remark.kind == ObservedKind::field_unset && lines_.contains(remark.name)) {
            undone_[remark.name] = {lines_[remark.name], line.number};
            lines_.erase(remark.name);
        }
    }
}

int LayoutLines::line_of(const std::string& field) const {
    const auto found = lines_.find(field);
    return found == lines_.end() ? 0 : found->second;
}

void check_layout(FileFindings& findings, const LayoutLines& lines) {
    const bool is_default = al_modified_flag == 0;
    set_default_field_positions();
    const std::vector<LayoutFault> faults = find_layout_faults();
    for (const LayoutFault& fault : faults) {
        add_fault(findings, lines, fault);
    }
    report_undone_lines(findings, lines);
    report_useless_settings(findings);
    if (is_default) {
        report_default_layout(findings);
    }
    if (faults.empty()) {
        validate_al_format();
    }
}
