// An installer that installs nothing.
#pragma once

#include "IInstaller.h"

namespace Tarnwick::OrvUpdate {

/// Says what a test wants.
class FakeInstaller : public IInstaller {
public:
    ErrorInfo start(const std::string&, bool, const Function<void()>&) override { return {}; }
    ErrorInfo stop() override { return {}; }
    ErrorInfo cancel() override { return {}; }
    ErrorInfo getProgress(float& progress) override {
        progress = pos;
        return result;
    }
    bool finish() override { return finished; }
    ErrorInfo getError() override { return error; }

    float pos = 0;
    bool finished = false;
    ErrorInfo result;
    ErrorInfo error;
};

}  // namespace Tarnwick::OrvUpdate
