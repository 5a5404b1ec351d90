// What every test program begins with: a desk host with its framework.
#include <gmock/gmock.h>

#include "host/calls/Runtime.h"
#include "host/framework/Framework.h"

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    host::RegisterFramework(host::Runtime::Get());
    return RUN_ALL_TESTS();
}
