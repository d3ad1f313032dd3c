// A transfer from the cloud that fails, and its log.
#pragma once

#include "HttpTransferFixture.h"

namespace support {

class HttpTransferFailure : public HttpTransferFixture {
protected:
    /// The texts of the log so far.
    std::vector<std::string> logged() const {
        std::vector<std::string> texts;
        for (const auto& entry : mLog.entries()) {
            EXPECT_EQ(entry.level, 2);
            EXPECT_EQ(entry.file, "OrvUpdate/Src/OrvDownload");
            texts.push_back(entry.text);
        }
        return texts;
    }
    std::string removal() const { return "onHttpFinishCallback() remove fileName:" + mPath + "\r\n"; }
    using Texts = std::vector<std::string>;
};

}  // namespace support
