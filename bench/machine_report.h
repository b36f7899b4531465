#pragma once

namespace bench {

// Prints what a reader needs to judge the figures: date, machine, system, time zone.
void print_machine_report();

} // namespace bench
