// How the launched installer reads its command line.
#include "Order.h"

#include "FileText.h"
#include "Public/Base/File.h"
#include "TempDir.h"

namespace {

using Arguments = std::vector<std::string>;

TEST(Order, GoodArgumentsGiveTheOrder) {
    UpgradeOrder order;
    EXPECT_EQ(readOrder({"/p/a.exe", "/i", "3", "4711", "/r.json", "/b", "1"}, order), "");
    EXPECT_EQ(order.package, "/p/a.exe");
    EXPECT_EQ(order.installDir, "/i");
    EXPECT_EQ(order.role, 3);
    EXPECT_EQ(order.hostProcess, 4711U);
    EXPECT_EQ(order.reportFile, "/r.json");
    EXPECT_EQ(order.backupDir, "/b");
    EXPECT_TRUE(order.flag);
}

TEST(Order, WithoutABackupDirectoryItIsOneBesideTheProgram) {
    UpgradeOrder order;
    EXPECT_EQ(readOrder({"/p/a.exe", "/i", "3", "1", "", "", "0"}, order), "");
    EXPECT_EQ(order.backupDir, Public::Base::File::getExcutableFileFullPath() + "/backup");
}

struct BadOrder {
    const char* name;
    Arguments arguments;
    const char* reason;
};

class OrderRefusal : public testing::TestWithParam<BadOrder> {};

TEST_P(OrderRefusal, TellsWhatIsWrong) {
    UpgradeOrder order;
    EXPECT_EQ(readOrder(GetParam().arguments, order), GetParam().reason);
}

INSTANTIATE_TEST_SUITE_P(
    Order, OrderRefusal,
    testing::Values(
        BadOrder{"Nothing", {}, "there must be seven arguments"},
        BadOrder{"Six", {"/p", "/i", "3", "1", "", ""}, "there must be seven arguments"},
        BadOrder{"NoPackage", {"", "/i", "3", "1", "", "", "1"}, "PACKAGE is empty"},
        BadOrder{"NoInstallDir", {"/p", "", "3", "1", "", "", "1"}, "INSTALL_DIR is empty"},
        BadOrder{"RoleNoNumber", {"/p", "/i", "server", "1", "", "", "1"}, "ROLE is none of 1 to 5"},
        BadOrder{"RoleEmpty", {"/p", "/i", "", "1", "", "", "1"}, "ROLE is none of 1 to 5"},
        BadOrder{"RoleZero", {"/p", "/i", "0", "1", "", "", "1"}, "ROLE is none of 1 to 5"},
        BadOrder{"RoleSix", {"/p", "/i", "6", "1", "", "", "1"}, "ROLE is none of 1 to 5"},
        BadOrder{"RoleAndMore", {"/p", "/i", "3x", "1", "", "", "1"}, "ROLE is none of 1 to 5"},
        BadOrder{"ProcessNoNumber", {"/p", "/i", "3", "host", "", "", "1"}, "HOST_PROCESS is no process id"},
        BadOrder{"ProcessNegative", {"/p", "/i", "3", "-1", "", "", "1"}, "HOST_PROCESS is no process id"},
        BadOrder{"ProcessTooLarge", {"/p", "/i", "3", "4294967297", "", "", "1"}, "HOST_PROCESS is no process id"},
        BadOrder{"Flag", {"/p", "/i", "3", "1", "", "", "yes"}, "FLAG is neither 0 nor 1"},
        BadOrder{"BackupIsInstallDir", {"/p", "/i", "3", "1", "", "/i/", "1"}, "BACKUP_DIR holds /i"},
        BadOrder{"BackupHoldsInstallDir", {"/p", "/x/i", "3", "1", "", "/x/y\\..", "1"}, "BACKUP_DIR holds /x/i"},
        BadOrder{"BackupHoldsPackage", {"/b/p.exe", "/i", "3", "1", "", "/b", "1"}, "BACKUP_DIR holds /b/p.exe"},
        BadOrder{"BackupIsTheRoot", {"/p", "/i", "3", "1", "", "/", "1"}, "BACKUP_DIR holds /i"}),
    [](const auto& each) { return each.param.name; });

}  // namespace
