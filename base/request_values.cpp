#include "base/request_values.h"

const char na_string[] = "NA";
