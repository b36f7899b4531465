#pragma once

#include "base/line_observer.h"
#include "base/line_text.h"

#include <cstddef>
#include <span>
#include <string_view>

constexpr size_t settings_line_size = 2048; // of the buffer whose limit lines are held to

// What a keyword has a say in.
enum class SettingEffect : unsigned char {
    loading,        // what is loaded from the logs, and so in all results
    classification, // only what becomes of the unique URLs in url.list
    none
};

// A line that begins with a keyword, the name of its place.
struct SettingLine {
    LinePlace place;
    const char* value;
};

struct SettingKeyword {
    std::string_view keyword;
    SettingEffect effect;
    void (*apply)(const SettingLine& line);
    bool keeps_blanks = false; // the value is handed over with its leading blanks
};

// In the order in which they are tried; a line counts for the first one that it begins with.
std::span<const SettingKeyword> all_setting_keywords();

// The keyword that a line counts for; null for comments and unknown lines.
const SettingKeyword* find_setting_keyword(const char* line);

// Sets what a line says, nothing when it has no keyword, and tells the line observer of it. `place`
// has no name yet. Fails when the value is malformed or too long.
void apply_setting_line(LinePlace place, LineText line);

// Reads the settings file and sets the values of replay_settings.h and the field positions of
// field_layout.h. Fails when the file cannot be opened, a line cannot be applied, or sessions go by
// cookie and no cookie is named.
void read_replay_prof_setting(const char* replay_setting_file);
