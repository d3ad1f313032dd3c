// The signature of a program: where it lies, and what its message says. A message alone is read too, so that what the
// fuzzer learns of it is not lost behind a damaged program head.
#include <cstddef>
#include <cstdint>

#include "Base/PeSecurity.h"
#include "Require.h"
#include "SignatureMessage.h"

using namespace Public::Base;

namespace {

bool liesIn(PeSecurity::Bytes part, PeSecurity::Bytes whole) {
    return part.empty() || (part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const PeSecurity::Bytes file(data, size);
    const PeSecurity program = PeSecurity::locate(file);
    FUZZ_REQUIRE((program.state == PeSecurity::State::Signed) == program.flaw.empty());
    if (program.state == PeSecurity::State::NotProgram) {
        readMessage(file);
    } else if (program.state == PeSecurity::State::Signed) {
        for (const auto& part : program.covered) FUZZ_REQUIRE(liesIn(part, file));
        FUZZ_REQUIRE(!program.signature.empty() && liesIn(program.signature, file));
        readMessage(program.signature);
    }
    return 0;
}
