#include "tools/parse/request_record.h"

const char na_string[] = "NA";
