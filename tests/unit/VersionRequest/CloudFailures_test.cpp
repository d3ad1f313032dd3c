// Answers of the update cloud that fail, and what a response means.
#include "CloudRequestFixture.h"
#include "GbkTexts.h"

using namespace Tarnwick::OrvUpdate;
using support::noteList;
using support::noteRecord;
using Access = VersionRequestAccess;
using Texts = std::vector<std::string>;

namespace {

class CloudResponse : public CloudRequest {};

}  // namespace

// --- Failures of the request for versions

namespace {

struct FailureCase {
    const char* name;
    int status;
    std::string body;
    int code;
    std::string message;
};
void PrintTo(const FailureCase& one, std::ostream* out) { *out << one.name; }
class CloudFailure : public CloudRequest, public testing::WithParamInterface<FailureCase> {};

const std::vector<FailureCase> kFailures{
    {"NotFound", 404, "", -304, kTextRequestError},
    {"ServerError", 500, "[]", -304, kTextRequestError},
    {"NoContent", 204, "", -304, kTextRequestError},
    {"Created", 201, "[]", -304, kTextRequestError},
    {"Unauthorized", 401, "", -105, kTextAuthFailed},
    {"Timeout", 408, "", -201, kTextNetworkTimeout},
    {"Forbidden", 403, "", -304, kTextRequestError},
    {"NoJson", 200, "sorry", -301, ""},
    {"EmptyBody", 200, "", -301, ""},
    {"CutJson", 200, R"([{"softversion":"1.0")", -301, ""},
    {"MissingMembers", 200, R"({"x":1})", -301, ""},
    {"Number", 200, "5", -301, ""},
};

}  // namespace

TEST_P(CloudFailure, OfVersionsEmptiesTheCloudsPartOfTheCatalogue) {
    fillCatalogue();
    mCloud.versions(GetParam().body, GetParam().status);
    const auto outcome = askVersions();
    EXPECT_EQ(outcome.code, GetParam().code);
    EXPECT_EQ(outcome.message, GetParam().message);
    EXPECT_EQ(texts(), (Texts{"1.0", "3.0"}));
}

TEST_P(CloudFailure, OfNotesAddsNothing) {
    mCloud.notes(noteList(noteRecord("1.0", "kept")));
    askNotes(false);
    mCloud.notes(GetParam().body, GetParam().status);
    const auto outcome = askNotes(false);
    EXPECT_EQ(outcome.code, GetParam().code);
    EXPECT_EQ(outcome.message, GetParam().message);
    EXPECT_EQ(notes(), Texts{"1.0 kept"});
}

TEST_P(CloudFailure, IsNotLoggedByTheRequests) {
    support::LogRecorder log;
    mCloud.versions(GetParam().body, GetParam().status);
    mCloud.notes(GetParam().body, GetParam().status);
    EXPECT_EQ(askVersions().code, GetParam().code);
    EXPECT_EQ(askNotes(true).code, GetParam().code);
    for (const auto& line : log.entries()) EXPECT_NE(line.file, "OrvUpdate/Src/VersionRequest") << line.text;
}

INSTANTIATE_TEST_SUITE_P(Table, CloudFailure, testing::ValuesIn(kFailures),
                         [](const auto& one) { return one.param.name; });

// --- What a response means

namespace {

std::shared_ptr<Public::Network::HTTPClientResponse> response(int status) {
    const auto header = std::make_shared<Public::Network::HTTPHeader>();
    header->statuscode = status;
    return std::make_shared<Public::Network::HTTPClientResponse>(
        header, std::make_shared<Public::Network::ReadContent>(Public::Base::SharedBuffer()));
}

struct StatusCase {
    int status;
    int code;
    std::string message;
};
void PrintTo(const StatusCase& one, std::ostream* out) { *out << one.status; }
class CloudStatus : public testing::TestWithParam<StatusCase> {};

}  // namespace

TEST_P(CloudStatus, HasItsCodeAndMessage) {
    const ErrorInfo error = Access::checkHttpResponse(response(GetParam().status));
    EXPECT_EQ(error.errorCode(), GetParam().code);
    EXPECT_EQ(error.errorMessage(), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Table, CloudStatus,
    testing::Values(StatusCase{200, 0, ""}, StatusCase{408, -201, kTextNetworkTimeout},
                    StatusCase{0, -201, kTextNetworkTimeout}, StatusCase{401, -105, kTextAuthFailed},
                    StatusCase{206, -304, kTextRequestError}, StatusCase{302, -304, kTextRequestError},
                    StatusCase{400, -304, kTextRequestError}, StatusCase{503, -304, kTextRequestError}),
    [](const auto& one) { return "Status" + std::to_string(one.param.status); });

TEST_F(CloudResponse, ThatIsMissingIsATimeOut) {
    const ErrorInfo error = Access::checkHttpResponse(nullptr);
    EXPECT_EQ(error.errorCode(), -201);
    EXPECT_EQ(error.errorMessage(), kTextNetworkTimeout);
}

TEST_F(CloudResponse, MessagesAreTheFixedTextsInTheirCodePage) {
    EXPECT_EQ(Access::checkHttpResponse(nullptr).errorMessage(), "\xCD\xF8\xC2\xE7\xB3\xAC\xCA\xB1");
    EXPECT_EQ(Access::checkHttpResponse(response(401)).errorMessage(),
              "\xC8\xA8\xCF\xDE\xC8\xCF\xD6\xA4\xCA\xA7\xB0\xDC");
    EXPECT_EQ(Access::checkHttpResponse(response(500)).errorMessage(), "\xC7\xEB\xC7\xF3\xB4\xED\xCE\xF3");
}
