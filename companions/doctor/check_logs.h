#pragma once

#include "companions/doctor/check_hosts.h"
#include "companions/doctor/check_scenario.h"
#include "companions/doctor/finding.h"

// Lines of the inputs that decide what becomes of the logs; 0: there is none.
struct DecidingLines {
    int cookie_name = 0;     // of the settings
    int zone = 0;            // of the file that names the zone of the period
    PeriodLines period = {}; // of the scenario
};

// Gives a sample of every log to the parser of a run, and adds what becomes of it: lines that are
// rejected, as the fields that the parser sees; times against the replay period; requests without
// the session cookie, and the cookies that are there instead. The settings, the layout and the
// scenario have to be read; nothing is added where the layout has faults. Returns the hosts of the
// samples.
KnownHosts check_logs(Findings& findings, const DecidingLines& lines);
