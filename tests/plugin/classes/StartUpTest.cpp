// The plug-in's start-up seen by a host that notes everything: a copy of the library is loaded,
// so that its state is apart from that of the plug-in that the other tests use.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "sdk/HostFunctions.h"
#include "sdk/PluginInterface.h"
#include "tests/support/Places.h"

namespace {

std::vector<std::string> steps;
std::vector<std::string> hidden;
std::vector<sdk::ClassDefinition*> registered;

std::int32_t NoteClass(sdk::ClassDefinition* definition) {
    steps.push_back(std::string("register ") + definition->name);
    registered.push_back(definition);
    return 1;
}

void NoteVersion(std::int32_t version) { steps.push_back("version " + std::to_string(version)); }

double GiveHostVersion() {
    steps.push_back("host version");
    return 5.5;
}

void NoteMovies() { steps.push_back("movies"); }

template <class Function>
sdk::AnyFunction Erased(Function function) {
    return reinterpret_cast<sdk::AnyFunction>(function);
}

sdk::AnyFunction Resolve(const char* name) {
    if (std::find(hidden.begin(), hidden.end(), name) != hidden.end()) return nullptr;
    const std::map<std::string, sdk::AnyFunction> functions = {
        {"PluginRegisterClass", Erased(&NoteClass)},
        {"RegisterPluginVersion", Erased(&NoteVersion)},
        {"REALGetRBVersion", Erased(&GiveHostVersion)},
        {"REALenterMovies", Erased(&NoteMovies)},
    };
    const auto found = functions.find(name);
    return found == functions.end() ? nullptr : found->second;
}

sdk::AnyFunction Enter(const char* service) {
    steps.push_back(std::string("entry ") + service);
    return Erased(&Resolve);
}

// Loads a fresh copy, starts it and leaves it loaded: there is no unload step.
void StartCopy(const std::vector<std::string>& hiddenFunctions = {}) {
    steps.clear();
    registered.clear();
    hidden = hiddenFunctions;
    static int number = 0;
    const auto folder = std::filesystem::temp_directory_path() / ("tqx-start-" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    const auto copy = folder / ("copy" + std::to_string(++number) + ".so");
    std::filesystem::copy_file(support::PluginFile(), copy);
    void* const library = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
    std::filesystem::remove_all(folder);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto start = reinterpret_cast<sdk::PluginMain>(dlsym(library, sdk::kPluginMainName));
    ASSERT_NE(start, nullptr);
    start(&Enter);
}

TEST(StartUp, RunsItsStepsInOrder) {
    StartCopy();
    EXPECT_EQ(steps, (std::vector<std::string>{"entry ResolverPPC", "version 9", "host version", "movies",
                                               "register PictureTQX", "register PictureFactoryTQX"}));
}

TEST(StartUp, SkipsWhatTheHostLacks) {
    StartCopy({"REALGetRBVersion", "REALenterMovies", "PluginRegisterClass"});
    EXPECT_EQ(steps, (std::vector<std::string>{"entry ResolverPPC", "version 9"}));
}

TEST(StartUp, SeedsTheRandomGenerator) {
    // The seed is the time, so two starts in different seconds differ; the generator's state
    // after a start is that of some second around now.
    const long before = static_cast<long>(std::time(nullptr));
    StartCopy();
    const int drawn = std::rand();
    const long after = static_cast<long>(std::time(nullptr));
    bool found = false;
    for (long second = before; second <= after && !found; ++second) {
        std::srand(static_cast<unsigned>(second));
        found = std::rand() == drawn;
    }
    EXPECT_TRUE(found);
}

TEST(StartUp, RegistersTheClassRecords) {
    StartCopy();
    ASSERT_EQ(registered.size(), 2u);
    const sdk::ClassDefinition& picture = *registered[0];
    EXPECT_EQ(picture.version, 9);
    EXPECT_EQ(picture.superclass, nullptr);
    EXPECT_EQ(picture.constructor, nullptr);
    EXPECT_NE(picture.destructor, nullptr);
    EXPECT_EQ(picture.flags, 4);
    EXPECT_EQ(picture.propertyCount, 31);
    EXPECT_EQ(picture.methodCount, 100);
    EXPECT_EQ(picture.constantCount, 61);
    EXPECT_EQ(picture.eventCount, 0);
    ASSERT_EQ(picture.sharedMethodCount, 1);
    EXPECT_STREQ(picture.sharedMethods[0].declaration,
                 "CreatePictureTQX(width as integer, height as integer, theImageFormat as integer) as PictureTQX");
    EXPECT_EQ(picture.sharedMethods[0].flags, 4);
    const sdk::ClassDefinition& factory = *registered[1];
    EXPECT_EQ(factory.version, 9);
    EXPECT_EQ(factory.superclass, nullptr);
    EXPECT_EQ(factory.instanceDataSize, 0);
    EXPECT_EQ(factory.flags, 4);
    EXPECT_EQ(factory.constructor, nullptr);
    EXPECT_EQ(factory.destructor, nullptr);
    EXPECT_EQ(factory.propertyCount, 0);
    EXPECT_EQ(factory.methodCount, 0);
    EXPECT_EQ(factory.constantCount, 0);
    ASSERT_EQ(factory.eventCount, 1);
    EXPECT_STREQ(factory.events[0].declaration,
                 "NewPictureTQX(Width as integer, Height as integer, ImageFormat as integer) as PictureTQX");
    ASSERT_EQ(factory.sharedMethodCount, 1);
    EXPECT_STREQ(factory.sharedMethods[0].declaration, "SetFactory(factory as PictureFactoryTQX)");
    EXPECT_EQ(factory.sharedMethods[0].flags, 0);
}

TEST(StartUp, CarriesConstantsInTheirDeclarationsAlone) {
    StartCopy();
    std::vector<std::string> texts;
    for (int i = 0; i < registered[0]->constantCount; ++i) {
        EXPECT_EQ(registered[0]->constants[i].value, 0);
        EXPECT_EQ(registered[0]->constants[i].reserved, nullptr);
        texts.push_back(registered[0]->constants[i].declaration);
    }
    EXPECT_EQ(texts[0], "ImageFormatUnknown = 0");
    EXPECT_EQ(texts[1], "ImageFormatRGB = 1");
    EXPECT_EQ(texts[11], "ImageFormatG = &h0000000B");
    EXPECT_EQ(texts[22], "ImageFormatRofRGB = &h0000000F");
    EXPECT_EQ(texts[43], "ImageFormatAofABGR = &h00000012");
    EXPECT_EQ(texts[44], "ScaleTriangle = 1");
    EXPECT_EQ(texts[51], "DitherMagic2x2Matrix = 1");
    EXPECT_EQ(texts[60], "DitherCluster8Matrix = &h0000000A");
}

// What `command` prints.
std::string OutputOf(const std::string& command) {
    std::string text;
    FILE* const pipe = popen(command.c_str(), "r");
    char part[512];
    while (pipe && std::fgets(part, sizeof part, pipe)) text += part;
    if (pipe) pclose(pipe);
    return text;
}

TEST(Library, ExportsOneSymbol) {
    EXPECT_EQ(OutputOf("nm -D --defined-only " + support::PluginFile() + " | awk '{print $NF}'"), "REALPluginMain\n");
}

TEST(Library, NeedsOnlyTheRunTime) {
    const std::string needed =
        OutputOf("readelf -d " + support::PluginFile() + " | sed -n 's/.*NEEDED.*\\[\\(.*\\)\\]/\\1/p'");
    EXPECT_NE(needed.find("libc.so"), std::string::npos);
    std::istringstream lines(needed);
    for (std::string line; std::getline(lines, line);) {
        const bool runTime = line.starts_with("libc.so") || line.starts_with("libm.so") ||
                             line.starts_with("libstdc++.so") || line.starts_with("libgcc_s.so") ||
                             line.starts_with("ld-linux");
        const bool sanitizer = line.starts_with("libasan.so") || line.starts_with("libubsan.so");
        EXPECT_TRUE(runTime || sanitizer) << line;
    }
}

}  // namespace
