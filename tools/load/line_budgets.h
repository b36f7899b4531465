#pragma once

// Fixes how many lines each file of the input file list is to give (InputFileInfo::num_req), where
// the scenario does not say: as many as it has now. Ends the run with the first file of the list
// for which that is none, or which is no regular file.
void fix_line_budgets();
