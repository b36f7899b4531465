#pragma once

#include "tests/unit_helpers.h"

// What has to hold of the companions whatever their input is, as tests/properties/properties.h has
// it of the tool. These leave settings behind that other tests do not expect.

// Whatever stands in the inputs of a scenario, "check" says what is wrong with it in texts that are
// fit for a terminal, and finds an error where a run would fail over settings, scenario or
// patterns.
void check_checked_inputs(Choices& choices);

// Whatever stands in a frame that the stages of a job hand to each other, it is read, in its order,
// or refused with a message.
void check_exchanged_payloads(Choices& choices);
