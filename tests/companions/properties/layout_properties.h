#pragma once

#include "tests/unit_helpers.h"

// What has to hold of command "init" whatever logs and formats it is given. These leave settings
// behind that other tests do not expect.

// What is read out of a LogFormat or log_format is where the tool finds it in a line that the
// server writes by it; and whatever the format is, a layout without errors is one that a run takes.
void check_log_format(Choices& choices);

// Whatever is in a log, the settings and the scenario that are written for it are taken by the
// tool's readers as they are meant, and nothing that is printed or written can steer a terminal.
void check_log_layouts(Choices& choices);
