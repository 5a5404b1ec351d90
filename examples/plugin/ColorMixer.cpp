// A plug-in with one class:
//
//   Class ColorMixer
//     Weight As Double                                   the second colour's part of a mix, 0 to 1
//     Mix(first As Color, second As Color) As Color
//     Event Mixed(mix As Color) As Color                 may answer with another colour
//
// A host loads the library, calls REALPluginMain and from then on the functions in the class's record.
#include <cmath>
#include <cstdint>
#include <iterator>

#include "sdk/Declare.h"
#include "sdk/HostFunctions.h"

namespace {

using sdk::Color;
using sdk::Object;

// --- The host's functions, found by name -------------------------------------------------------

sdk::Resolver resolver = nullptr;

// Gives 0 where the host lacks the function.
template <class Result, class... Declared, class... Arguments>
Result CallHost(const sdk::HostFunctionName<Result(Declared...)>& name, Arguments... arguments) {
    const auto function = reinterpret_cast<Result (*)(Declared...)>(resolver(name.name));
    return function ? function(arguments...) : Result();
}

// --- The class ---------------------------------------------------------------------------------

// The data of an instance. The host clears it and tells where in an object it lies.
struct MixerData {
    double weight;
};

sdk::EventRecord events[] = {{"Mixed(mix as Color) as Color", 0}};

Color Mix(Object* self, Color first, Color second);

const sdk::MethodRecord methods[] = {
    // Would not compile if the declaration and the function disagreed.
    sdk::Method<"Mix(first as Color, second as Color) as Color", &Mix>(sdk::kMemberPortable),
};

const sdk::PropertyRecord properties[] = {
    sdk::ReadWrite<"Weight as Double", &MixerData::weight>(sdk::kMemberPortable),
};

void Construct(Object* self);

sdk::ClassDefinition mixer{.version = sdk::kInterfaceVersion,
                           .name = "ColorMixer",
                           .instanceDataSize = sizeof(MixerData),
                           .constructor = &Construct,
                           .properties = properties,
                           .propertyCount = std::size(properties),
                           .methods = methods,
                           .methodCount = std::size(methods),
                           .events = events,
                           .eventCount = std::size(events)};

MixerData& DataOf(Object* self) {
    return *reinterpret_cast<MixerData*>(reinterpret_cast<std::uint8_t*>(self) + mixer.instanceDataOffset);
}

// --- Its members -------------------------------------------------------------------------------

void Construct(Object* self) { DataOf(self).weight = 0.5; }

// A script may assign any number: what is none counts as 0.
double WeightOf(Object* self) {
    const double weight = DataOf(self).weight;
    return weight > 0 ? std::fmin(weight, 1) : 0;
}

// One channel of a mix, which lies `shift` bits up in both colours.
std::uint32_t MixChannel(std::uint32_t first, std::uint32_t second, int shift, double weight) {
    const double from = first >> shift & 0xFF;
    const double to = second >> shift & 0xFF;
    return static_cast<std::uint32_t>(std::lround(from + (to - from) * weight)) << shift;
}

// Asks the instance's handler of Mixed, if it has one.
Color AskMixed(Object* self, Color mix) {
    const sdk::AnyFunction handler = CallHost(sdk::kGetEventInstancePPC, self, events[0].hostNumber);
    return handler ? reinterpret_cast<Color (*)(Object*, Color)>(handler)(self, mix) : mix;
}

Color Mix(Object* self, Color first, Color second) {
    const auto a = static_cast<std::uint32_t>(first);
    const auto b = static_cast<std::uint32_t>(second);
    const double weight = WeightOf(self);
    return AskMixed(self,
                    Color{MixChannel(a, b, 16, weight) | MixChannel(a, b, 8, weight) | MixChannel(a, b, 0, weight)});
}

}  // namespace

extern "C" std::intptr_t REALPluginMain(sdk::EntryFunction entry) {
    resolver = reinterpret_cast<sdk::Resolver>(entry(sdk::kResolverService));
    CallHost(sdk::kRegisterPluginVersion, sdk::kInterfaceVersion);
    return CallHost(sdk::kPluginRegisterClass, &mixer);
}
