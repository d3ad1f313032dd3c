#include "Public/Base/Printer.h"

#include "LogRecorder.h"

using namespace Public::Base;

namespace {

struct FormatCase {
    const char* name;
    const char* format;
    std::vector<Value> values;
    const char* text;
};

class PrinterFormat : public testing::TestWithParam<FormatCase> {};

TEST_P(PrinterFormat, FillsInItsValues) {
    const support::LogRecorder log;
    printer(LOG_Level_Progress, "unit", "operation", 7, GetParam().format, GetParam().values);
    ASSERT_EQ(log.entries().size(), 1U);
    EXPECT_EQ(log.entries()[0].text, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Printer, PrinterFormat,
                         testing::Values(FormatCase{"Plain", "fail!\r\n", {}, "fail!\r\n"},
                                         FormatCase{"TextAndNumber", "%s has %d", {"x", 5}, "x has 5"},
                                         FormatCase{"NumberAsText", "%s", {5}, "5"},
                                         FormatCase{"TextAsNumber", "%d", {"abc"}, "abc"},
                                         FormatCase{"MissingValueStays", "%s %s", {"one"}, "one %s"},
                                         FormatCase{"SpareValueIsDropped", "%s", {"one", "two"}, "one"},
                                         FormatCase{"DoublePercent", "100%% of %d", {3}, "100% of 3"},
                                         FormatCase{"OtherLetterStays", "%x %f", {1}, "%x %f"},
                                         FormatCase{"PercentAtTheEnd", "50%", {1}, "50%"},
                                         FormatCase{"ValuesAreNoFormats", "%s %s", {"%s", "b"}, "%s b"},
                                         FormatCase{"Empty", "", {}, ""}),
                         [](const auto& each) { return each.param.name; });

TEST(Printer, HandsOverEveryPart) {
    const support::LogRecorder log;
    printer(LOG_Level_Error, "OrvUpdate/Src/X", "full name", 42, "text", {});
    const auto entry = log.entries().at(0);
    EXPECT_EQ(entry.level, 2);
    EXPECT_EQ(entry.file, "OrvUpdate/Src/X");
    EXPECT_EQ(entry.function, "full name");
    EXPECT_EQ(entry.line, 42);
}

TEST(Printer, BearsNullTexts) {
    const support::LogRecorder log;
    printer(LOG_Level_Error, nullptr, nullptr, 0, nullptr, {});
    EXPECT_EQ(log.entries().at(0).text, "");
}

TEST(Printer, SinkThatThrowsDoesNotEndTheCaller) {
    setLogSink([](const LogEntry&) { throw std::runtime_error("full"); });
    EXPECT_NO_THROW(printer(LOG_Level_Error, "u", "f", 1, "x", {}));
    setLogSink({});
}

TEST(Printer, DefaultSinkWritesOneLineWithAllParts) {
    setLogSink({});
    testing::internal::CaptureStderr();
    printer(LOG_Level_Error, "OrvUpdate/Src/X", "operation", 42, "went wrong: %s\r\n", {"why"});
    const std::string line = testing::internal::GetCapturedStderr();
    EXPECT_NE(line.find(" 2 "), std::string::npos) << line;
    EXPECT_NE(line.find("OrvUpdate/Src/X operation:42 went wrong: why\n"), std::string::npos) << line;
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
}

TEST(Printer, MayBeCalledFromManyThreadsWhileTheSinkChanges) {
    std::atomic<int> seen{0};
    setLogSink([&seen](const LogEntry&) { ++seen; });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int j = 0; j < 200; ++j) printer(LOG_Level_Detail, "u", "f", j, "%d", {j});
        });
    }
    for (int i = 0; i < 100; ++i) setLogSink([&seen](const LogEntry&) { ++seen; });
    for (auto& thread : threads) thread.join();
    setLogSink({});
    EXPECT_EQ(seen, 4 * 200);
}

TEST(Printer, SinkThatThrowsSomethingElseDoesNotEndTheCallerEither) {
    setLogSink([](const LogEntry&) { throw 5; });
    EXPECT_NO_THROW(printer(LOG_Level_Error, "u", "f", 1, "x", {}));
    setLogSink({});
}

TEST(Printer, TextOfSeveralLinesStaysOneLineOfTheDefaultSink) {
    setLogSink({});
    testing::internal::CaptureStderr();
    printer(LOG_Level_Error, "unit", "f", 1, "name:%s\r\n", {"a\r\n2026-01-01 forged"});
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_NE(text.find("name:a\\r\\n2026-01-01 forged\n"), std::string::npos) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
}

}  // namespace
