#include "tools/config/log_files.h"

InputFileInfo seq_file_path[max_al_files];
int num_al_files = 0;
