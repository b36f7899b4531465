#pragma once

#include "tools/config/field_layout.h"

#include <array>
#include <string>

// A layout of access logs, as the replay settings would say it.
struct LogLayout {
    std::string name;                                      // for people
    std::string log_type = "APACHE";                       // value of ACCESS_LOG_TYPE
    std::array<short, al_field_kind_count> positions = {}; // 1 to max_al_fields; 0: not in the log
    bool logs_when_done = false; // the time in the log is that at which the response was done

    bool has(FieldKind kind) const { return positions[kind] != 0; }
    bool is_apache() const { return log_type == "APACHE"; }
    int field_count() const; // that a line needs: the highest position

    // Whether the tool reads the same from the same places, by whatever name.
    bool reads_like(const LogLayout& other) const;
};

// Which of the fields the tool makes no use of in any mode.
bool is_never_read(FieldKind kind);

// The layout that the tool takes for a log type when the settings name no field, without the fields
// that are never read.
LogLayout default_layout(const std::string& log_type);

// The layout with which the tool reads a log without looking at client addresses: sessions go by
// cookie, and where no field holds cookies, that of the address stands for it.
LogLayout layout_without_sessions(LogLayout layout);

// Sets the settings that say how lines are read (log type, positions, session mode) and the tables
// that the parsers go by. `session` is a value of USER_SESSION_KEY. Fails, as a run would, when a
// field is missing. Not for threads.
void apply_layout(const LogLayout& layout, const char* session);

// The AL_FIELD and ACCESS_LOG_TYPE lines that make the tool read this layout, each ending in a line
// feed; nothing where the defaults do. The layout has no two kinds of which the name of one begins
// with that of the other, since the line of one would unset the other.
std::string layout_lines(const LogLayout& layout);
