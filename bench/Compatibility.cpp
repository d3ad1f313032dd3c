// Questions to compatibility documents of more and more rules. The peer is the document of ten rules: a question must
// not grow faster than the rules do.
#include <sstream>

#include "Bench.h"
#include "VersionCompatible.h"

namespace bench {

using namespace Tarnwick::OrvUpdate;

namespace {

constexpr int kQuestions = 2000;  // of one measured run

/// Versions of a thousand to a number, so that no rule holds what another holds.
std::string versionOf(int number) { return "1." + std::to_string(number / 1000) + "." + std::to_string(number % 1000); }

std::string makeDocument(int rules) {
    std::ostringstream text;
    for (const auto* array : {"Client", "other"}) {
        const bool clients = *array == 'C';
        text << (clients ? R"({"Version":"1.0","ClientCompatibles":[)" : R"(],"SystemCompatibles":[)");
        for (int i = 0; i < rules; ++i) {
            const std::string range =
                R"({"LowVersion":")" + versionOf(i) + R"(","HigherVersion":")" + versionOf(i + 1) + "\"}";
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

double secondsOfOne(const IVersionCompatible& document, const Question& question, int rules) {
    const auto pairs = makePairs(rules);
    return medianSeconds(
               [&] {
                   for (int i = 0; i < kQuestions; ++i) {
                       require(question.ask(document, pairs[static_cast<size_t>(i) % pairs.size()]),
                               "a question is answered wrongly");
                   }
               },
               5) /
           kQuestions;
}

}  // namespace

void measureCompatibility(const Report& report) {
    std::map<std::string, double> ofTen;
    for (const int rules : {10, 100, 1000, 10000}) {
        const std::string text = makeDocument(rules);
        const auto document = IVersionCompatible::loadFromMem(text);
        require(document != nullptr, "the document cannot be read");
        for (const Question& question : kAll) {
            const double each = secondsOfOne(*document, question, rules) * 1e9;
            Row row{.name = std::string(question.name) + ", " + std::to_string(rules) + " rules",
                    .ours = each,
                    .unit = "ns"};
            if (rules == 10) {
                ofTen[question.name] = each;
            } else {
                row.peer = "itself, 10 rules";
                row.theirs = ofTen[question.name];
                row.ratio = ofTen[question.name] / 10 / (each / rules);
                row.target = 1.0;
                row.holds = *row.ratio >= *row.target;
            }
            report(row);
        }
        const double load =
            medianSeconds([&] { require(IVersionCompatible::loadFromMem(text) != nullptr, "unread"); }, 5);
        report({.name = "read a document, " + std::to_string(rules) + " rules",
                .ours = load * 1e9 / (2 * rules),
                .unit = "ns/rule"});
    }
}

}  // namespace bench
