#pragma once

#include "tools/config/log_files.h"

// The access-log files of the run and their grouping into instances: runs of files that lie in one
// directory and whose names begin alike, up to the first '_'. One thread loads all files of an
// instance.

extern int g_num_instance; // instances, numbered in the order of the sorted list; set by
                           // process_input_file_list2

// Sorts the list by path and gives every file its instance. To be called once.
void process_input_file_list2();

// Order of two files: byte-wise by path. Less than, equal to or greater than 0.
int sort_seq_files(const InputFileInfo& a, const InputFileInfo& b);
