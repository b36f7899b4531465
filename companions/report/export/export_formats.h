#pragma once

#include "companions/report/export/export_notes.h"
#include "companions/report/export/load_target.h"

#include <cstdio>
#include <string>
#include <vector>

// The formats that a load can be exported to, each in the file of its name.

// What a format cannot express of a target: notes it, changes the target to what comes nearest,
// and returns false when nothing does.
bool fits_any(LoadTarget& target, ExportNotes& notes); // files of data for other programs
bool fits_vegeta(LoadTarget& target, ExportNotes& notes);
bool fits_siege(LoadTarget& target, ExportNotes& notes);
bool fits_k6(LoadTarget& target, ExportNotes& notes);
bool fits_jmeter(LoadTarget& target, ExportNotes& notes);

// Writes targets that fit the format, as they come. Whether `out` has taken all is for the caller
// to find out.
void export_csv(const Targets& targets, FILE* out);
void export_json(const Targets& targets, FILE* out);
void export_vegeta(const Targets& targets, FILE* out);
void export_siege(const Targets& targets, FILE* out);
void export_k6(const Targets& targets, FILE* out);     // the data of the script
void export_jmeter(const Targets& targets, FILE* out); // the data of the test plan

// What runs the data, for which it looks in a file of this name beside it.
void write_k6_script(const std::string& data_name, FILE* out);
void write_jmeter_plan(const std::string& data_name, FILE* out);

// What bodies are sent as; nothing tells what they are. siege goes by the file's name.
constexpr const char* body_content_type = "application/x-www-form-urlencoded";

struct ExportFormat {
    const char* name;
    const char* description; // for help
    bool needs_hosts;        // a URL that is a path alone is of no use
    bool (*fits)(LoadTarget& target, ExportNotes& notes);
    void (*write)(const Targets& targets, FILE* out);
    void (*write_plan)(const std::string& data_name, FILE* out); // null: there is one file
    const char* data_suffix; // of the plan's name: the file that `write` writes then
};

extern const std::vector<ExportFormat> export_formats;
