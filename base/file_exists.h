#pragma once

// Whether anything of this name exists, a link counting for what it leads to.
bool file_exists(const char* path);
