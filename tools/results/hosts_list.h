#pragma once

#include "base/own_directory.h"

#include <cstdint>

// hosts.list: the hosts of the unique URLs, one a line, each once, in byte order.

// Order of two indices into url_pattern by host, byte-wise. Less than, equal to or greater than 0.
int sort_host_list(int32_t a, int32_t b);

// Writes the file into the configuration directory. Fails when it cannot be written whole.
void write_hosts_list(const OwnDirectory& config_dir);
