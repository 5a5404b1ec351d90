// The command: runs scripts, prints what plug-ins offer, and tests them.
#include "host/calls/Runtime.h"
#include "host/framework/Framework.h"
#include "tqx/CommandLine.h"
#include "tqx/Output.h"

int main(int argc, char** argv) {
    tqx::SettleStandardStreams();
    host::RegisterFramework(host::Runtime::Get());
    return tqx::FinishOutput(tqx::Execute({argv + 1, argv + argc}));
}
