#include "base/workspace_directory.h"

#include <gtest/gtest.h>
#include <string>

TEST(WorkspaceDirectory, IsNamedByInstallationWorkspaceAndProfile) {
    EXPECT_EQ(zvlb_set_ta_dir_ex1("/opt/zv", "w1", "p1"), 31);
    const char* incomplete[][3] = {
        {nullptr, "w", "p"}, {"/d", nullptr, "p"}, {"/d", "", "p"}, {"/d", "w", ""}};
    for (const auto& [work_dir, workspace, profile] : incomplete) {
        EXPECT_EQ(zvlb_set_ta_dir_ex1(work_dir, workspace, profile), -1);
    }
    EXPECT_STREQ(g_zv_workspace, "w1");
    EXPECT_STREQ(g_zv_profile, "p1");
    EXPECT_STREQ(g_zv_rta_dir, "workspace/w1/p1/quarvel");
    EXPECT_STREQ(g_zv_ta_dir, "/opt/zv/workspace/w1/p1/quarvel");

    const std::string long_dir(1002, 'd'); // one too many
    EXPECT_EQ(zvlb_set_ta_dir_ex1(long_dir.c_str(), "w", "p"), 1024);
    EXPECT_EQ(g_zv_ta_dir, long_dir + "/workspace/w/p/quarve");
}
