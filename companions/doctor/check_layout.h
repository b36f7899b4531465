#pragma once

#include "companions/doctor/finding.h"
#include "companions/doctor/observed_file.h"

#include <map>
#include <string>

// The field layout that the settings make.

// Which lines of the settings name fields.
class LayoutLines {
  public:
    // A line that is taken.
    void note(const ReadLine& line);

    // Line that sets the field's position last; 0 when none does.
    int line_of(const std::string& field) const;

    // Lines that have set a field and been undone since, by another line for a longer name.
    struct UndoneLine {
        int line;
        int undoing_line;
    };
    const std::map<std::string, UndoneLine>& undone() const { return undone_; }

  private:
    std::map<std::string, int> lines_;
    std::map<std::string, UndoneLine> undone_;
};

// Completes the layout as a run does, and adds its faults and what it lacks for what the settings
// ask for. Afterwards the layout holds, as long as it has no faults.
void check_layout(FileFindings& findings, const LayoutLines& lines);
