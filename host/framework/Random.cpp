// The class Random: sequences of numbers that a seed decides, the same on every machine.
#include <cmath>
#include <random>

#include "host/framework/NumberFunctions.h"
#include "host/framework/Support.h"

namespace host {

namespace {

struct RandomData {
    std::mt19937_64* generator;  // never null
    std::int32_t seed;
    double spare;  // the second of a pair of normal numbers
    bool hasSpare;
};

sdk::ClassDefinition definition{.name = "Random", .instanceDataSize = sizeof(RandomData)};

RandomData& Data(sdk::Object* object) { return DataOf<RandomData>(object, definition); }

std::mt19937_64& Generator(sdk::Object* object) {
    RandomData& data = Data(object);
    if (!data.generator) throw std::bad_alloc();
    return *data.generator;
}

void SetSeed(sdk::Object* object, std::int32_t seed) {
    Generator(object).seed(static_cast<std::uint32_t>(seed));
    Data(object).seed = seed;
    Data(object).hasSpare = false;
}

// A seed of its own in every process.
void RandomizeSeed(sdk::Object* object) { SetSeed(object, static_cast<std::int32_t>(std::random_device{}())); }

void Make(sdk::Object* object) {
    Data(object).generator = new (std::nothrow) std::mt19937_64;
    if (Data(object).generator) AtBorder([object] { RandomizeSeed(object); });
}

void Destroy(sdk::Object* object) { delete Data(object).generator; }

std::int32_t Seed(sdk::Object* object) { return Data(object).seed; }

// --- Numbers --------------------------------------------------------------------------------

// At least 0, below 1.
double Number(sdk::Object* object) { return static_cast<double>(Generator(object)() >> 11) * 0x1p-53; }

// Each of `count` numbers from 0 on as likely as the others: draws from an incomplete last round
// are dropped.
std::uint64_t Below(sdk::Object* object, std::uint64_t count) {
    const std::uint64_t rounds = UINT64_MAX / count * count;
    std::uint64_t drawn;
    do drawn = Generator(object)();
    while (drawn >= rounds);
    return drawn % count;
}

std::int32_t InRange(sdk::Object* object, std::int32_t least, std::int32_t most) {
    if (least > most) Fail(kContainersRaise.noRange(least, most));
    const auto count = static_cast<std::uint64_t>(std::int64_t{most} - least + 1);
    return static_cast<std::int32_t>(least + static_cast<std::int64_t>(Below(object, count)));
}

std::int32_t LessThan(sdk::Object* object, std::int32_t end) {
    if (end < 1) Fail(kContainersRaise.noneBelow(end));
    return InRange(object, 0, end - 1);
}

// Of the normal distribution around 0 with a deviation of 1, by Marsaglia's polar method.
double Gaussian(sdk::Object* object) {
    RandomData& data = Data(object);
    if (std::exchange(data.hasSpare, false)) return data.spare;
    double x, y, square;
    do {
        x = 2 * Number(object) - 1;
        y = 2 * Number(object) - 1;
        square = x * x + y * y;
    } while (square >= 1 || square == 0);
    const double scale = std::sqrt(-2 * std::log(square) / square);
    data.spare = y * scale;
    data.hasSpare = true;
    return x * scale;
}

}  // namespace

void RegisterRandom(Runtime& runtime) {
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"Number as double", Guarded<&Number>>(sdk::kMemberPortable),
        sdk::Method<"InRange(least as integer, most as integer) as integer", Guarded<&InRange>>(sdk::kMemberPortable),
        sdk::Method<"LessThan(limit as integer) as integer", Guarded<&LessThan>>(sdk::kMemberPortable),
        sdk::Method<"Gaussian as double", Guarded<&Gaussian>>(sdk::kMemberPortable),
        sdk::Method<"RandomizeSeed", Guarded<&RandomizeSeed>>(sdk::kMemberPortable),
    };
    static const sdk::PropertyRecord properties[] = {ReadWrite<"Integer", &Seed, &SetSeed>("Seed")};
    definition.constructor = &Make;
    definition.destructor = &Destroy;
    SetMethods(definition, methods);
    SetProperties(definition, properties);
    RegisterOrAbort(runtime, definition);
}

}  // namespace host
