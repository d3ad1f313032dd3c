// The release notes of the catalogue.
#include "CatalogueFixture.h"
#include "OrvVersion/ReleaseHistory.h"

using namespace Tarnwick::OrvUpdate;
using Texts = std::vector<std::string>;

namespace {

class CatalogueNotes : public Catalogue {
protected:
    static ReleaseHistorySet notes(const std::string& records) {
        ReleaseHistorySet set;
        EXPECT_FALSE(ReleaseHistory::parseReleaseHistoryFromHttp(support::noteList(records), "", set, Version()));
        return set;
    }
    Texts noteTexts() {
        Texts texts;
        for (const auto& note : mRequest->getReleaseHistory()) {
            texts.push_back(note->getVersion().toString() + " " + note->getVersionInfo());
        }
        return texts;
    }
};

}  // namespace

TEST_F(CatalogueNotes, AreInsertedInOrder) {
    const ErrorInfo result =
        mRequest->addReleaseHistory(notes(support::noteRecord("2.0", "b") + "," + support::noteRecord("1.0", "a")));
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(noteTexts(), (Texts{"1.0 a", "2.0 b"}));
}

TEST_F(CatalogueNotes, StayWhenAnEquivalentOneComes) {
    mRequest->addReleaseHistory(notes(support::noteRecord("1.0", "first")));
    mRequest->addReleaseHistory(notes(support::noteRecord("1.0", "second") + "," + support::noteRecord("2.0", "new")));
    EXPECT_EQ(noteTexts(), (Texts{"1.0 first", "2.0 new"}));
}

TEST_F(CatalogueNotes, AreCleared) {
    mRequest->addReleaseHistory(notes(support::noteRecord("1.0")));
    EXPECT_EQ(mRequest->removeReleaseHistory().errorCode(), 0);
    EXPECT_TRUE(mRequest->getReleaseHistory().empty());
}

TEST_F(CatalogueNotes, AreReadAsACopy) {
    mRequest->addReleaseHistory(notes(support::noteRecord("1.0")));
    const auto copy = mRequest->getReleaseHistory();
    mRequest->removeReleaseHistory();
    EXPECT_EQ(copy.size(), 1U);
}

TEST_F(CatalogueNotes, AreIndependentOfTheVersions) {
    add("1.0", 2);
    mRequest->addReleaseHistory(notes(support::noteRecord("1.0")));
    mRequest->removeVersions();
    EXPECT_EQ(mRequest->getReleaseHistory().size(), 1U);
    add("1.0", 2);
    mRequest->removeReleaseHistory();
    EXPECT_EQ(mRequest->getVersions().size(), 1U);
}

TEST_F(CatalogueNotes, NothingIsNoNote) {
    EXPECT_EQ(mRequest->addReleaseHistory({nullptr}).errorCode(), 0);
    EXPECT_TRUE(mRequest->getReleaseHistory().empty());
}

TEST_F(CatalogueNotes, MayBeReadWhileTheyChange) {
    const auto set = notes(support::noteRecord("1.0") + "," + support::noteRecord("2.0"));
    std::thread writer([&] {
        for (int round = 0; round < 100; ++round) {
            mRequest->addReleaseHistory(set);
            mRequest->removeReleaseHistory();
        }
    });
    for (int round = 0; round < 100; ++round) EXPECT_LE(mRequest->getReleaseHistory().size(), 2U);
    writer.join();
}
