// Brightens a photograph by a script of its own: brighten SOURCE RESULT
#include <iostream>

#include "host/calls/PluginLoader.h"
#include "host/framework/Application.h"
#include "host/framework/Framework.h"
#include "host/script/Script.h"

namespace {

constexpr const char* kScript = R"(
Dim photo As New PictureTQX(GetFolderItem(App.Arguments(0)).OpenAsPicture)
GetFolderItem(App.Arguments(1)).SaveAsPicture(photo.GammaFilter(Nil, 2.2).CopyPicture)
Print Str(photo.Width) + " x " + Str(photo.Height)
)";

int RunOn(const std::vector<std::string>& files) {
    host::RegisterFramework(host::Runtime::Get());
    host::LoadPlugin(PLUGIN_PATH);
    host::SetApplicationArguments(files);
    script::RunOptions options;
    options.print = [](std::string_view line) { std::cout << line << '\n'; };
    options.complain = [](std::string_view text) { std::cerr << text; };
    return script::RunScript({"brighten", kScript}, options);
}

}  // namespace

int main(int count, char** words) {
    if (count != 3) {
        std::cerr << "Usage: brighten SOURCE RESULT\n";
        return 2;
    }
    try {
        return RunOn({words + 1, words + 3});
    } catch (const host::LoadError& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
