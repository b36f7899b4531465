#include "companions/report/export/export_formats.h"

const std::vector<ExportFormat> export_formats = {
    {"csv", "a table with a row and a count for each URL", false, fits_any, export_csv, nullptr,
     ""},
    {"json", "the same as an object with an array", false, fits_any, export_json, nullptr, ""},
    {"vegeta", "targets in vegeta's HTTP format", true, fits_vegeta, export_vegeta, nullptr, ""},
    {"siege", "siege's file of URLs", true, fits_siege, export_siege, nullptr, ""},
    {"k6", "a script for k6, and FILE.json with its data", true, fits_k6, export_k6,
     write_k6_script, ".json"},
    {"jmeter", "a test plan for JMeter, and FILE.csv with its data", true, fits_jmeter,
     export_jmeter, write_jmeter_plan, ".csv"},
};

bool fits_any(LoadTarget& /*target*/, ExportNotes& /*notes*/) {
    return true;
}
