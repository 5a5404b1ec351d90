// Bounds, depth and disposal of a world, as members of its object.
#include "host/framework/WorldClass.h"

#include "host/framework/Support.h"
#include "platform/Worlds.h"

namespace host {

namespace {

static_assert(kObjectHeadSize == sdk::kGWorldTQXDataOffset, "plug-ins look for the world elsewhere");

sdk::ClassDefinition definition{.name = "GWorldTQX", .instanceDataSize = sizeof(sdk::GWorldTQXData)};

// Null in an instance that nobody gave a world.
const sdk::GWorld* WorldOf(sdk::Object* object) { return DataOf<sdk::GWorldTQXData>(object, definition).world; }

void Destroy(sdk::Object* object) {
    auto& data = DataOf<sdk::GWorldTQXData>(object, definition);
    if (data.ownsWorld) platform::DisposeGWorld(data.world);
}

std::int32_t Width(sdk::Object* object) { return WorldOf(object) ? WorldOf(object)->width : 0; }
std::int32_t Height(sdk::Object* object) { return WorldOf(object) ? WorldOf(object)->height : 0; }
std::int32_t Depth(sdk::Object* object) { return WorldOf(object) ? WorldOf(object)->pixMap.depth : 0; }
std::int32_t RowBytes(sdk::Object* object) { return WorldOf(object) ? WorldOf(object)->pixMap.rowBytes : 0; }

// Counted from the first byte of the top row.
std::int32_t Byte(sdk::Object* object, std::int64_t offset) {
    const std::int64_t count = std::int64_t{RowBytes(object)} * Height(object);
    if (offset < 0 || offset >= count) Fail(kPicturesRaise.worldByte(offset, count));
    return WorldOf(object)->pixMap.baseAddress[offset];
}

}  // namespace

void RegisterWorldClass(Runtime& runtime) {
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"Byte(offset as int64) as integer", Guarded<&Byte>>(sdk::kMemberPortable),
    };
    static const sdk::PropertyRecord properties[] = {
        ReadOnly<"Integer", &Width>("Width"),
        ReadOnly<"Integer", &Height>("Height"),
        ReadOnly<"Integer", &Depth>("Depth"),
        ReadOnly<"Integer", &RowBytes>("RowBytes"),
    };
    definition.destructor = &Destroy;
    SetMethods(definition, methods);
    SetProperties(definition, properties);
    RegisterOrAbort(runtime, definition);
}

}  // namespace host
