#include "base/workspace_directory.h"

#include <cstdio>

char g_zv_workspace[256];
char g_zv_profile[256];
char g_zv_rta_dir[1025];
char g_zv_ta_dir[1025];

namespace {

constexpr size_t max_ta_dir_size = 1024;

bool is_empty(const char* text) {
    return text == nullptr || text[0] == '\0';
}

} // namespace

std::string relative_workspace_directory(const std::string& workspace, const std::string& profile) {
    return "workspace/" + workspace + "/" + profile + "/quarvel";
}

int zvlb_set_ta_dir_ex1(const char* work_dir, const char* workspace, const char* profile) {
    if (is_empty(work_dir) || is_empty(workspace) || is_empty(profile)) {
        return -1;
    }
    std::snprintf(g_zv_workspace, sizeof g_zv_workspace, "%s", workspace);
    std::snprintf(g_zv_profile, sizeof g_zv_profile, "%s", profile);
    std::snprintf(g_zv_rta_dir, sizeof g_zv_rta_dir, "%s",
                  relative_workspace_directory(workspace, profile).c_str());
    return std::snprintf(g_zv_ta_dir, max_ta_dir_size, "%s/%s", work_dir, g_zv_rta_dir);
}
