#pragma once

// Number of processors of the machine. Fails when it cannot be read.
int zvr_get_num_cpu();

// Number of worker threads that the options and settings ask for, or that goes by the processors
// when they ask for none. Fails when it is negative, or the processors cannot be counted.
int choose_thread_count();

// Number of worker threads for that many processors, when nobody asked for a number: some
// processors are left to the rest of the machine.
int zvr_get_num_threads(int num_cpu);
