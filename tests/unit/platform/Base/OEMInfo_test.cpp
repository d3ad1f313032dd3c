#include "Public/Base/OEMInfo.h"

using Public::Base::OEMInfo;

namespace {

TEST(OEMInfo, NamesTheDefaultDirectory) {
    OEMInfo::setOemInfo({});
    EXPECT_EQ(OEMInfo::getOemInfo().programDataDirectory, "Tarnwick Orv");
}

TEST(OEMInfo, TakesAnotherAndGoesBackForAnEmptyOne) {
    OEMInfo::setOemInfo({"Other Brand"});
    EXPECT_EQ(OEMInfo::getOemInfo().programDataDirectory, "Other Brand");
    OEMInfo::setOemInfo({""});
    EXPECT_EQ(OEMInfo::getOemInfo().programDataDirectory, "Tarnwick Orv");
}

TEST(OEMInfo, MayBeSetWhileOthersRead) {
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::thread reader([&] {
        while (!stop) {
            const std::string name = OEMInfo::getOemInfo().programDataDirectory;
            if (name != "A" && name != "Tarnwick Orv") ++wrong;
        }
    });
    for (int i = 0; i < 500; ++i) OEMInfo::setOemInfo({i % 2 == 0 ? "A" : ""});
    stop = true;
    reader.join();
    OEMInfo::setOemInfo({});
    EXPECT_EQ(wrong, 0);
}

TEST(OEMInfo, WhatWasHandedOutDoesNotChange) {
    OEMInfo::setOemInfo({});
    const Public::Base::OEMDefine before = OEMInfo::getOemInfo();
    OEMInfo::setOemInfo({"Other Brand"});
    EXPECT_EQ(before.programDataDirectory, "Tarnwick Orv");
    OEMInfo::setOemInfo({});
}

}  // namespace
