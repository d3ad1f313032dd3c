// What must have come of the things that a run has begun.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Book.h"
#include "IDownload.h"

namespace cluster {

// Names of callbacks.
constexpr char kAnswer[] = "answer";  ///< of a question to the cluster; the last one ends with " last"
constexpr char kDone[] = "done";      ///< of a transfer

/// The last calls come last, and as many times as they should.
/// @param lasts how many are due   @param mayStayOpen the queue refused a request, which nobody is told
std::string judgeQuestion(const Activity& activity, size_t lasts, bool mayStayOpen);

/// It has ended, and its callback has run, but not too often. What was released, or is no more, owes nothing.
/// @param mostCalls 0 for a transfer that never calls back   @param troubled the queue may have refused something
std::string judgeTransfer(const Activity& activity, const std::weak_ptr<Tarnwick::OrvUpdate::IDownload>& weak,
                          size_t mostCalls, bool troubled);

/// Each callback ran once at most, and in their order.
std::string judgeInstallation(const Activity& activity);

/// "pull", "push" and so on.
std::string kindOf(Tarnwick::OrvUpdate::IDownload& transfer);
/// A pull that cannot send ends in silence; it tells so by its error.
bool endedInSilence(Tarnwick::OrvUpdate::IDownload& transfer);

}  // namespace cluster
