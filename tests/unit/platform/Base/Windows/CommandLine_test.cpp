#include "Base/Windows/CommandLine.h"

#include "Base/Windows/WindowsHeaders.h"
// Needs the system's types.
#include <shellapi.h>

#include "WideText.h"

namespace {

TEST(CommandLineOf, IsTakenApartIntoTheSameWords) {
    const std::vector<std::string> words = {"C:/with blank/program.exe",
                                            "",
                                            "plain",
                                            "two  blanks",
                                            "a\\",
                                            "a b\\",
                                            "a b\\\\",
                                            "\"",
                                            "a\"b",
                                            "back\\\"slash \\\\\" x",
                                            "\t tab",
                                            "^%&|<>",
                                            "\xE5\xAE\x89 \xE8\xA3\x85",
                                            "\\\\server\\share\\"};
    int count = 0;
    wchar_t** found = ::CommandLineToArgvW(Public::Base::commandLineOf(words).c_str(), &count);
    std::vector<std::string> back;
    for (int at = 0; at < count; ++at) back.push_back(support::narrow(found[at]));
    ::LocalFree(found);
    EXPECT_EQ(back, words);
}

}  // namespace
