// What a host function gives while it is made to fail.
#include "host/calls/HostFunctionSlot.h"

namespace host {

void HostFunctionRecord::FailCall(std::int64_t nth, std::int64_t count) {
    failFrom = calls + nth;
    const std::int64_t room = std::numeric_limits<std::int64_t>::max() - failFrom;
    failTo = failFrom + (count - 1 < room ? count - 1 : room);
}

}  // namespace host
