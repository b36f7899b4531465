#pragma once

// Sets how the process takes the signals that its writing and its children can bring, whatever who
// started it has set. To be called by a program before it does anything else with files.
//
// No write ends the process by a signal: the results are written whatever becomes of the lines that
// accompany them, and a file that may not grow has its error line. The end of a child is not to be
// ignored, as the process that started this one may do: it is the checker's answer.
void take_over_signals();
