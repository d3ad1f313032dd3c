// Takes the place of every program start while it lives.
#pragma once

#include <memory>
#include <vector>

#include "Public/Base/System.h"

namespace support {

/// No program is started; each attempt is noted. Restores the system's way at its end.
class ProgramRecorder {
public:
    /// @param result of every start   @param nativeError the system's number that a failed start leaves behind
    explicit ProgramRecorder(bool result = true, int nativeError = 0);
    ~ProgramRecorder();
    ProgramRecorder(const ProgramRecorder&) = delete;
    ProgramRecorder& operator=(const ProgramRecorder&) = delete;

    /// What was to be started so far, in order.
    std::vector<Public::Base::ProgramStart> starts() const;

private:
    struct State;
    std::shared_ptr<State> mState;  // shared with a start that outlives this object
};

}  // namespace support
