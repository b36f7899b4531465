#pragma once

// Fixes how many lines each file of the input file list is to give (InputFileInfo::num_req), where
// the scenario does not say: as many as it has now. Ends the run when that is none.
void fix_line_budgets();
