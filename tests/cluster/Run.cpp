#include "Run.h"

#include <cstdlib>
#include <iostream>

#include "Invariants.h"
#include "Packages.h"
#include "Scenario.h"
#include "Watchdog.h"

namespace cluster {

namespace {

void add(Book& book, const Violations& found) {
    for (const auto& text : found) book.violation(text);
}

constexpr std::chrono::seconds kLongestRun{110};

/// The scenario, with everything that it makes and ends.
void play(uint64_t seed, Pace pace, Machine& machine, Book& book, const std::function<void(Cluster&)>& meddle) {
    RunDice dice(seed);
    Cluster cluster(machine, book, pace);
    Scenario scenario(cluster, dice);
    scenario.setUp();
    scenario.play();
    cluster.settle();
    if (meddle) meddle(cluster);
    add(book, findWrongPackages(machine.stores()));
    scenario.calmDown();
    add(book, findWrongPackages(machine.stores()));
    book.close();
}

/// What a process makes once and keeps, such as the packages, must not be charged to a run.
void warmUp() {
    static const bool done = [] {
        Machine machine;
        Book book(machine.log());
        play(0, Pace::Steps, machine, book, {});
        return true;
    }();
    static_cast<void>(done);
}

}  // namespace

Pace paceOf(uint64_t seed) { return seed % 4 == 3 ? Pace::Threads : Pace::Steps; }

RunReport run(uint64_t seed) { return run(seed, paceOf(seed)); }

RunReport run(uint64_t seed, Pace pace, const std::function<void(Cluster&)>& meddle) {
    warmUp();
    const support::Watchdog watchdog(kLongestRun, [seed] {
        support::endAsHung("VIOLATION: run does not end\nagain: ./dev soak 1 " + std::to_string(seed));
    });
    const auto before = holdings();
    RunReport report;
    report.seed = seed;
    report.pace = pace;
    std::shared_ptr<RunLog> log;
    std::unique_ptr<Book> book;
    {
        Machine machine;
        log = machine.log();
        book = std::make_unique<Book>(log);
        const std::vector<std::string> mayChange{"stores", "drive/ProgramData"};
        const auto outside = fingerprintOf(machine.root(), mayChange);
        const auto program = fingerprintOf(machine.programDir());
        play(seed, pace, machine, *book, meddle);
        add(*book, findChanges(outside, fingerprintOf(machine.root(), mayChange)));
        add(*book, findChanges(program, fingerprintOf(machine.programDir())));
        book->findKept();
    }
    add(*book, findLeaks(before));
    report.violations = book->violations();
    report.counted = book->counted();
    report.log = log->lines();
    return report;
}

std::string RunReport::text() const {
    std::string text = "run of seed " + std::to_string(seed) + (pace == Pace::Steps ? "" : ", on threads") + "\n";
    for (const auto& line : log) text += line + "\n";
    for (const auto& violation : violations) text += "VIOLATION: " + violation + "\n";
    return text + "again: ./dev soak 1 " + std::to_string(seed) + "\n";
}

uint64_t fromEnvironment(const char* name, uint64_t otherwise) {
    const char* text = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): before any thread begins
    return text && *text ? std::strtoull(text, nullptr, 10) : otherwise;
}

}  // namespace cluster
