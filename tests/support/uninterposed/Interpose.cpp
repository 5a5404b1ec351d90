// Where nothing can stand between a program and its system: for tests that have calls fail only to be quicker.
#include "tests/support/Interpose.h"

namespace support {

FailingCall::FailingCall(SystemCall call, std::int64_t, std::int64_t, int) : call_(call) {}
FailingCall::~FailingCall() = default;

}  // namespace support
