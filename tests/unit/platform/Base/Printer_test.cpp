#include "Public/Base/Printer.h"

#include <cstdio>

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

std::string writtenToStderr(const std::string& text) {
    setLogSink({});
    testing::internal::CaptureStderr();
    printer(LOG_Level_Error, "u", "f", 1, "%s", {text});
    return testing::internal::GetCapturedStderr();
}

struct LineCase {
    const char* name;
    std::string text;
    const char* end;  // what the line ends with
};

class PrinterLine : public testing::TestWithParam<LineCase> {};

TEST_P(PrinterLine, IsOneWhateverTheText) {
    const std::string line = writtenToStderr(GetParam().text);
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
    EXPECT_TRUE(line.ends_with(std::string(" f:1 ") + GetParam().end + "\n")) << line;
}

INSTANTIATE_TEST_SUITE_P(
    Printer, PrinterLine,
    testing::Values(LineCase{"LineEnd", "done\n", "done"}, LineCase{"WindowsLineEnd", "done\r\n", "done"},
                    LineCase{"SeveralLineEnds", "done\r\n\n\r", "done"}, LineCase{"LineEndsAlone", "\r\n\n", ""},
                    LineCase{"Empty", "", ""}, LineCase{"LineEndWithin", "a\nb", "a\\nb"},
                    LineCase{"ForgedEntry", "x\r\n2026-01-01 00:00:00.000 2 forged\n",
                             "x\\r\\n2026-01-01 00:00:00.000 2 forged"},
                    LineCase{"TerminalEscape", "\x1B[31mred", "\\x1b[31mred"},
                    LineCase{"ZeroByte", std::string("a\0b", 3), "a\\x00b"}, LineCase{"Delete", "a\x7F", "a\\x7f"},
                    LineCase{"Tab", "a\tb", "a\tb"}, LineCase{"Braces", "{} {0} {x}", "{} {0} {x}"},
                    LineCase{"Chinese", "\xE4\xB8\xAD", "\xE4\xB8\xAD"}),
    [](const auto& each) { return each.param.name; });

TEST(Printer, DefaultLineBeginsWithTimeLevelAndThread) {
    const std::string line = writtenToStderr("x");
    unsigned year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, milli = 0, level = 0;
    unsigned long thread = 0;
    ASSERT_EQ(std::sscanf(line.c_str(), "%4u-%2u-%2u %2u:%2u:%2u.%3u %u %lu u f:1 x", &year, &month, &day, &hour,
                          &minute, &second, &milli, &level, &thread),
              9)
        << line;
    EXPECT_EQ(level, 2U);
    EXPECT_GT(thread, 0U);
}

TEST(Printer, DefaultSinkWritesEveryLevel) {
    setLogSink({});
    testing::internal::CaptureStderr();
    for (const auto level : {LOG_Level_Error, LOG_Level_Progress, LOG_Level_Detail})
        printer(level, "u", "f", 1, "x", {});
    const std::string lines = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 3) << lines;
}

TEST(Printer, SinkThatThrowsAnythingDoesNotEndTheCaller) {
    setLogSink([](const LogEntry&) { throw 5; });
    EXPECT_NO_THROW(printer(LOG_Level_Error, "u", "f", 1, "x", {}));
    setLogSink({});
}

TEST(Printer, SinkMayLogAndReplaceItself) {
    std::vector<std::string> seen;
    setLogSink([&seen](const LogEntry& entry) {
        seen.push_back("first " + entry.text);
        setLogSink([&seen](const LogEntry& later) { seen.push_back("second " + later.text); });
        printer(LOG_Level_Detail, "u", "f", 1, "inner", {});
    });
    printer(LOG_Level_Detail, "u", "f", 1, "outer", {});
    setLogSink({});
    EXPECT_EQ(seen, (std::vector<std::string>{"first outer", "second inner"}));
}

TEST(LogRecorder, GivesTheDefaultSinkBack) {
    { const support::LogRecorder log; }
    testing::internal::CaptureStderr();
    printer(LOG_Level_Error, "u", "f", 1, "to stderr", {});
    EXPECT_NE(testing::internal::GetCapturedStderr().find("to stderr"), std::string::npos);
}

TEST(LogRecorder, TellsLevelAndWholeText) {
    const support::LogRecorder log;
    printer(LOG_Level_Error, "u", "f", 1, "fail!\r\n", {});
    EXPECT_TRUE(log.has(2, "fail!\r\n"));
    EXPECT_FALSE(log.has(4, "fail!\r\n"));
    EXPECT_FALSE(log.has(2, "fail!"));
}

}  // namespace
