#pragma once

#include "companions/doctor/finding.h"

// Gives a sample of every log to the parser of a run, and adds what becomes of it: lines that are
// rejected, as the fields that the parser sees; times against the replay period; requests without
// the session cookie, and the cookies that are there instead. The settings, the layout and the
// scenario have to be read; nothing is added where the layout has faults. `cookie_line`: of the
// settings, that names the session cookie; 0: none.
void check_logs(Findings& findings, int cookie_line);
