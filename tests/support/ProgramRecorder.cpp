#include "ProgramRecorder.h"

#include <mutex>

#include "Public/Base/ErrorInfo.h"

namespace support {

struct ProgramRecorder::State {
    std::mutex mutex;
    std::vector<Public::Base::ProgramStart> starts;
};

ProgramRecorder::ProgramRecorder(bool result, int nativeError) : mState(std::make_shared<State>()) {
    Public::Base::System::setProgramStarter([state = mState, result, nativeError](const auto& start) {
        std::lock_guard lock(state->mutex);
        state->starts.push_back(start);
        if (!result) Public::Base::ErrorInfo::setLastSystemError(nativeError);
        return result;
    });
}

ProgramRecorder::~ProgramRecorder() { Public::Base::System::setProgramStarter({}); }

std::vector<Public::Base::ProgramStart> ProgramRecorder::starts() const {
    std::lock_guard lock(mState->mutex);
    return mState->starts;
}

}  // namespace support
