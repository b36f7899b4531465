#include "companions/doctor/init/log_layout.h"

#include "tools/config/replay_settings.h"
#include "tools/config/settings_file.h"

#include <algorithm>
#include <vector>

namespace {

void apply_setting(const std::string& text) {
    std::string line = text; // the reader cuts it in place
    apply_setting_line({"", 1}, {line.data(), line.size()});
}

void set_log_type(const std::string& log_type) {
    apply_setting("ACCESS_LOG_TYPE " + log_type);
}

// In the order in which the fields stand in the log.
std::vector<FieldKind> present_kinds(const LogLayout& layout) {
    std::vector<FieldKind> kinds;
    for (int kind = 0; kind < al_field_kind_count; ++kind) {
        if (layout.has(static_cast<FieldKind>(kind))) {
            kinds.push_back(static_cast<FieldKind>(kind));
        }
    }
    std::ranges::sort(kinds, {}, [&](FieldKind kind) { return layout.positions[kind]; });
    return kinds;
}

std::string field_line(const LogLayout& layout, FieldKind kind) {
    return std::string("AL_FIELD ") + al_required_fields[kind].name + " " +
           std::to_string(layout.positions[kind]) + "\n";
}

} // namespace

int LogLayout::field_count() const {
    return std::ranges::max(positions);
}

bool LogLayout::reads_like(const LogLayout& other) const {
    return log_type == other.log_type && positions == other.positions;
}

bool is_never_read(FieldKind kind) {
    return kind == AL_REFERER || kind == AL_USER_AGENT || kind == AL_CONTENT_TYPE ||
           kind == AL_HTTP_VERSION;
}

LogLayout default_layout(const std::string& log_type) {
    set_log_type(log_type);
    al_modified_flag = 0;
    set_default_field_positions();
    LogLayout layout = {"the tool's default layout", log_type};
    for (int kind = 0; kind < al_field_kind_count; ++kind) {
        const bool is_used = !is_never_read(static_cast<FieldKind>(kind));
        layout.positions[static_cast<size_t>(kind)] =
            is_used ? al_required_field_position[kind] : short{0};
    }
    return layout;
}

LogLayout layout_without_sessions(LogLayout layout) {
    if (!layout.has(AL_REQUEST_COOKIE)) {
        layout.positions[AL_REQUEST_COOKIE] = layout.positions[AL_CLIENT_IP];
        layout.positions[AL_CLIENT_IP] = 0;
    }
    return layout;
}

void apply_layout(const LogLayout& layout, const char* session) {
    set_log_type(layout.log_type);
    apply_setting(std::string("USER_SESSION_KEY ") + session);
    std::ranges::copy(layout.positions, al_required_field_position);
    al_modified_flag = 1;
    max_required_field_position = 0;
    validate_al_format();
}

std::string layout_lines(const LogLayout& layout) {
    std::string lines;
    if (!layout.is_apache()) {
        lines += "ACCESS_LOG_TYPE " + layout.log_type + "\n";
    }
    if (layout.reads_like(default_layout(layout.log_type))) {
        return lines;
    }
    for (const FieldKind kind : present_kinds(layout)) {
        lines += field_line(layout, kind);
    }
    return lines;
}
