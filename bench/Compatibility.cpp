// Questions to compatibility documents of more and more rules. The peer is the document of ten rules: a question must
// not grow faster than the rules do.
#include <sstream>

#include "Bench.h"
#include "VersionCompatible.h"

namespace bench {

using namespace Tarnwick::OrvUpdate;

namespace {

/// A short question is measured as a row of them.
int questionsOfARun(int rules) { return std::max(20, 200000 / rules); }

/// Versions of a thousand to a number, so that no rule holds what another holds.
std::string versionOf(int number) { return "1." + std::to_string(number / 1000) + "." + std::to_string(number % 1000); }

/// The range of one rule. Ranges that overlap all end behind the last one's beginning.
std::string rangeOf(int rule, bool overlapping) {
    return R"({"LowVersion":")" + versionOf(rule) + R"(","HigherVersion":")" +
           (overlapping ? "9" : versionOf(rule + 1)) + "\"}";
}

std::string makeDocument(int rules, bool overlapping) {
    std::ostringstream text;
    for (const auto* array : {"Client", "other"}) {
        const bool clients = *array == 'C';
        text << (clients ? R"({"Version":"1.0","ClientCompatibles":[)" : R"(],"SystemCompatibles":[)");
        for (int i = 0; i < rules; ++i) {
            const std::string range = rangeOf(i, overlapping);
            text << (i == 0 ? "" : ",") << R"({"System":["Windows"],")" << (clients ? "SystemVersion" : "Version")
                 << "\":" << range << ",\"" << array << R"(System":["Windows"],")" << array << "Version\":" << range
                 << '}';
        }
    }
    text << "]}";
    return text.str();
}

/// A component that one rule holds, and another of the same rule.
struct Pair {
    VersionCompatibles item, other;
};

VersionCompatibles component(const std::string& version) {
    return {Public::Base::SystemType_Windows, 0, Version(version, 0)};
}

/// Spread over all rules, so that no question is always the same one.
std::vector<Pair> makePairs(int rules) {
    std::vector<Pair> pairs;
    for (int i = 0; i < 100; ++i) {
        const std::string version = versionOf(static_cast<int>(int64_t{i} * 7919 % rules));
        pairs.push_back({component(version + ".5"), component(version + ".6")});
    }
    return pairs;
}

/// Asks, and tells whether the answer is the right one.
using Ask = bool (*)(const IVersionCompatible& document, const Pair& pair);

struct Question {
    const char* name;
    Ask ask;
};

const Question kAll[] = {
    {"ranges that go with a system",
     [](const IVersionCompatible& document, const Pair& pair) {
         std::set<IVersionCompatible::CompatibleRange> result;
         document.queryClientCompatibleFromSystem(VersionType_Client, pair.item, result);
         return result.size() == 1;
     }},
    {"client with system, yes",
     [](const IVersionCompatible& document, const Pair& pair) {
         return document.isClientCompatibleFromSystem(VersionType_Client, pair.item, pair.other);
     }},
    {"client with system, no",
     [](const IVersionCompatible& document, const Pair& pair) {
         static const VersionCompatibles stranger = component("9.9");
         return !document.isClientCompatibleFromSystem(VersionType_Client, pair.item, stranger);
     }},
    {"server with server, yes",
     [](const IVersionCompatible& document, const Pair& pair) {
         return document.isServerCompatibleFromServer(pair.item, pair.other);
     }},
};

/// Of ranges that hold the component, each of them, and of none that holds the other one.
const Question kOverlapping{"client with system, no, all rules speak of it",
                            [](const IVersionCompatible& document, const Pair&) {
                                static const VersionCompatibles item = component("8.0"), other = component("0.5");
                                return !document.isClientCompatibleFromSystem(VersionType_Client, item, other);
                            }};

double secondsOfOne(const IVersionCompatible& document, const Question& question, int rules) {
    const auto pairs = makePairs(rules);
    const int questions = questionsOfARun(rules);
    return medianSeconds(
               [&] {
                   for (int i = 0; i < questions; ++i) {
                       require(question.ask(document, pairs[static_cast<size_t>(i) % pairs.size()]),
                               "a question is answered wrongly");
                   }
               },
               5) /
           questions;
}

/// @param ofTen the same question's figure for ten rules, set by their row
Row row(const Question& question, int rules, double each, double& ofTen) {
    Row row{.name = std::string(question.name) + ", " + std::to_string(rules) + " rules", .ours = each, .unit = "ns"};
    if (rules == 10) {
        ofTen = each;
        return row;
    }
    row.peer = "itself, 10 rules";
    row.theirs = ofTen;
    row.ratio = ofTen / 10 / (each / rules);
    row.target = 1.0;
    row.holds = *row.ratio >= *row.target;
    return row;
}

}  // namespace

void measureCompatibility(const Report& report) {
    std::map<std::string, double> ofTen;
    for (const int rules : {10, 100, 1000, 10000}) {
        const auto measure = [&](const IVersionCompatible& document, const Question& question) {
            const double each = secondsOfOne(document, question, rules) * 1e9;
            report(row(question, rules, each, ofTen[question.name]));
        };
        const std::string text = makeDocument(rules, false);
        const auto document = IVersionCompatible::loadFromMem(text);
        const auto overlapping = IVersionCompatible::loadFromMem(makeDocument(rules, true));
        require(document && overlapping, "a document cannot be read");
        for (const Question& question : kAll) measure(*document, question);
        measure(*overlapping, kOverlapping);
        const double load =
            medianSeconds([&] { require(IVersionCompatible::loadFromMem(text) != nullptr, "unread"); }, 5);
        report({.name = "read a document, " + std::to_string(rules) + " rules",
                .ours = load * 1e9 / (2 * rules),
                .unit = "ns/rule"});
    }
}

}  // namespace bench
