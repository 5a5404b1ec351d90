// Stands between the plug-in and the worlds it makes. The linker sends its calls here
// (--wrap): a name beginning with __wrap_ replaces the function, __real_ is the one replaced.
#include "tests/support/plugins/FailingWorlds.h"

#include "platform/Worlds.h"

namespace {

using failing_worlds::Fault;

failing_worlds::Record record;

bool Fails(Fault fault) { return record.fault == fault; }

}  // namespace

extern "C" {

__attribute__((visibility("default"))) failing_worlds::Record* RecordOfWorlds() { return &record; }

#define WRAPPED(result, name, mangled, ...)                \
    result Real##name(__VA_ARGS__) asm("__real_" mangled); \
    result Wrapped##name(__VA_ARGS__) asm("__wrap_" mangled)

WRAPPED(sdk::GWorld*, NewGWorld, "_ZN8platform9NewGWorldEiiiPKNS_10ColorTableE", std::int32_t depth, std::int32_t width,
        std::int32_t height, const platform::ColorTable* colors);
WRAPPED(void, DisposeGWorld, "_ZN8platform13DisposeGWorldEPN3sdk6GWorldE", sdk::GWorld* world);
WRAPPED(platform::PixMap*, GetGWorldPixMap, "_ZN8platform15GetGWorldPixMapEPN3sdk6GWorldE", sdk::GWorld* world);
WRAPPED(bool, LockPixels, "_ZN8platform10LockPixelsEPNS_6PixMapE", platform::PixMap* pixMap);
WRAPPED(std::uint8_t*, GetPixBaseAddr, "_ZN8platform14GetPixBaseAddrEPKNS_6PixMapE", const platform::PixMap* pixMap);

sdk::GWorld* WrappedNewGWorld(std::int32_t depth, std::int32_t width, std::int32_t height,
                              const platform::ColorTable* colors) {
    sdk::GWorld* const world = Fails(Fault::NoWorld) ? nullptr : RealNewGWorld(depth, width, height, colors);
    record.made += world != nullptr;
    return world;
}

void WrappedDisposeGWorld(sdk::GWorld* world) {
    if (world) {
        ++record.disposed;
        record.locks += world->pixMap.lockCount;
    }
    RealDisposeGWorld(world);
}

platform::PixMap* WrappedGetGWorldPixMap(sdk::GWorld* world) {
    return Fails(Fault::NoPixMap) ? nullptr : RealGetGWorldPixMap(world);
}

bool WrappedLockPixels(platform::PixMap* pixMap) { return !Fails(Fault::LockRefused) && RealLockPixels(pixMap); }

std::uint8_t* WrappedGetPixBaseAddr(const platform::PixMap* pixMap) {
    return Fails(Fault::NullBase) ? nullptr : RealGetPixBaseAddr(pixMap);
}

}  // extern "C"
