// The plug-in's one export: start-up.
#include <cstdlib>
#include <ctime>

#include "platform/FileWindow.h"
#include "plugin/buffer/Destination.h"
#include "plugin/buffer/MappedStorage.h"
#include "plugin/buffer/PixelBuffer.h"
#include "plugin/classes/PictureClass.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

// The host's version, kept for whoever debugs; nothing depends on it.
double hostVersion = 0;

std::intptr_t RegisterClasses() {
    DeclarePictureConstants();
    host.PluginRegisterClass(&pictureClass);
    return host.PluginRegisterClass(&factoryClass);
}

std::intptr_t Start(sdk::EntryFunction entry) {
    KeepResolver(reinterpret_cast<sdk::Resolver>(entry(sdk::kResolverService)));
    host.RegisterPluginVersion(sdk::kInterfaceVersion);
    hostVersion = host.REALGetRBVersion();
    std::srand(static_cast<unsigned>(std::time(nullptr)));  // for the diffusion filter
    host.REALenterMovies();
    KeepPageSize(platform::PageSize());
    return RegisterClasses();
}

}  // namespace

}  // namespace tqx

// Called once by the host after loading; the loader has run the static initialisation by then.
extern "C" __attribute__((visibility("default"))) std::intptr_t REALPluginMain(sdk::EntryFunction entry) {
    return tqx::Start(entry);
}
