#include <random>

#include "SignatureTableFixture.h"

// Changes of the signed file at random, from a seed, in and around all that a signature is made of.

namespace support {
namespace {

class SignatureMutation : public SignatureTableFixture, public testing::WithParamInterface<unsigned> {
protected:
    void SetUp() override {
        const auto form = GetParam() % 2 ? TimeStamp::Rfc3161 : TimeStamp::CounterSignature;
        sign(SigningKit::Publisher, {.stamp = TimeStamp{form, 1600000000, mKit.timeStamper()}});
        mSound = bytes();
        mTable = table();
        mEntry = securityEntry();
        mChecksum = peHead() + 24 + 64;
        mRandom.seed(GetParam());
    }

    size_t below(size_t limit) { return mRandom() % limit; }

    /// A place in the table; now and then in the table's entry of the head, or anywhere in the file.
    size_t somePlace(const std::string& file) {
        switch (below(12)) {
            case 0:
                return mEntry + below(8);
            case 1:
                return below(file.size());
            case 2:
                return mTable + below(64);
            default:
                return mTable + below(std::max<size_t>(file.size(), mTable + 1) - mTable);
        }
    }

    void mutate(std::string& file) {
        const size_t at = std::min(somePlace(file), file.size() - 1);
        switch (below(7)) {
            case 0:
                file.resize(at + 1);
                break;
            case 1:
                file.erase(at, 1 + below(16));
                break;
            case 2:
                file.insert(at, std::string(1 + below(16), static_cast<char>(mRandom())));
                break;
            case 3:
                file += file.substr(at, 8 * (1 + below(64)));
                break;
            case 4:
                file[at] = "\x00\x30\x7f\x80\x84\xff"[below(6)];
                break;
            default:
                file[at] = static_cast<char>(file[at] ^ 1 << below(8));
                break;
        }
    }

    /// Whether all that is before the table, but for the two fields of the head that nothing can cover, is as it was.
    bool keepsWhatIsCovered(std::string file) const {
        if (file.size() < mTable) return false;
        file.replace(mChecksum, 4, mSound, mChecksum, 4);
        file.replace(mEntry, 8, mSound, mEntry, 8);
        return file.compare(0, mTable, mSound, 0, mTable) == 0;
    }

    std::string mSound;
    size_t mTable = 0, mEntry = 0, mChecksum = 0;
    std::mt19937 mRandom;
};

TEST_P(SignatureMutation, NeverMakesAFileGoodWhoseCoveredBytesChanged) {
    ASSERT_TRUE(verify(signedFile()).good);
    int good = 0, bad = 0;
    for (int round = 0; round < 150; ++round) {
        std::string mutated = mSound;
        if (round % 10 == 0)
            mutated[mChecksum + below(4)] = static_cast<char>(mRandom());
        else
            for (size_t left = 1 + below(3); left > 0; --left) mutate(mutated);
        setBytes(mutated);
        const Verdict verdict = verify(signedFile());
        ++(verdict.good ? good : bad);
        if (!verdict.good) continue;
        ASSERT_TRUE(keepsWhatIsCovered(mutated)) << "seed " << GetParam() << " round " << round;
        ASSERT_EQ("Orv Test Publisher", verdict.signer) << "seed " << GetParam() << " round " << round;
    }
    // The checksum, which no signature covers, may change.
    EXPECT_GE(good, 15);
    EXPECT_GT(bad, 50);
}

INSTANTIATE_TEST_SUITE_P(Seeds, SignatureMutation, testing::Range(1u, 5u));

}  // namespace
}  // namespace support
