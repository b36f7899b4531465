#pragma once

#include <string>

// Names and directory of the workspace in which a run works: one workspace and one profile inside
// the installation. Set by zvlb_set_ta_dir_ex1 while the command line is read, only read
// afterwards.

extern char g_zv_workspace[256]; // workspace name, from option `scenario` or "admin"
extern char g_zv_profile[256];   // profile name, from option `scenario` or "default"
extern char
    g_zv_rta_dir[1025]; // workspace/<workspace>/<profile>/quarvel, relative to the installation
extern char g_zv_ta_dir[1025]; // the installation's directory, "/" and g_zv_rta_dir

// The directory of a workspace and profile, relative to the installation.
std::string relative_workspace_directory(const std::string& workspace, const std::string& profile);

// Sets the four texts above from the installation's directory and the two names (at most 255
// characters each). Returns -1 and changes nothing when an argument is null or empty; otherwise the
// length that the whole g_zv_ta_dir needs, of which at most 1023 characters are stored.
int zvlb_set_ta_dir_ex1(const char* work_dir, const char* workspace, const char* profile);
