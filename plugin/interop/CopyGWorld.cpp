// A world filled with a picture's pixels and handed to a new object of the host's.
#include "plugin/interop/CopyGWorld.h"

#include <cstring>

#include "platform/Worlds.h"
#include "plugin/buffer/Operation.h"
#include "plugin/interop/LockedPicture.h"
#include "plugin/rows/Convert.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

constexpr const char* kWorldClass = "GWorldTQX";
constexpr std::int32_t kGrayRamp = 40;

// A world to be made and the pixels that go into it.
struct WorldPlan {
    std::int32_t depth;  // 0: the layout can't be exported
    rows::ChannelSet set;
    rows::PixelLayout layout;
};

WorldPlan PlanWorld(const PixelBuffer& buffer) {
    if (buffer.IsGray) return {8, rows::ChannelSet::Gray, {1, {0}}};
    if (!buffer.IsRGB) return {};
    if (buffer.HasAlpha) return {32, rows::ChannelSet::RgbAlpha, {4, {1, 2, 3, 0}}};
    return {24, rows::ChannelSet::Rgb, {3, {0, 1, 2}}};
}

// Rows with room for four bytes a pixel get them, the first one 255.
bool IsWide(const WorldPlan& plan, const LockedWorld& world) {
    return plan.depth == 24 && world.rowBytes >= std::int64_t{4} * world.width;
}

// Every byte of the world is written: a new one holds any. Rows that can't be had stay 0.
void WriteWorld(RowCursor& from, const WorldPlan& plan, const LockedWorld& world) {
    const auto alpha = rows::SetHasAlpha(plan.set) ? rows::AlphaRule::Copy : rows::AlphaRule::Leave;
    const bool wide = IsWide(plan, world);
    const rows::ConversionPlan conversion = rows::PlanConversion(
        {plan.set, plan.set, LayoutOf(from.Picture(), plan.set), wide ? kHostColors : plan.layout, alpha});
    for (std::int32_t y = 0; y < world.height; ++y) {
        ClearHostRow(world, y);
        const std::uint8_t* const row = from.Row(y);
        if (!row) continue;
        if (wide) std::memset(HostRow(world, y), 255, static_cast<std::size_t>(world.width) * 4);
        rows::ConvertRow(conversion, row, HostRow(world, y), world.width);
    }
}

sdk::GWorldTQXData& WorldOf(sdk::Object* instance) {
    return *reinterpret_cast<sdk::GWorldTQXData*>(reinterpret_cast<std::uint8_t*>(instance) +
                                                  sdk::kGWorldTQXDataOffset);
}

// An instance around a new world, which it owns. Empty, with nothing kept, when either fails.
OwnedObject MakeInstance(const PixelBuffer& buffer, std::int32_t depth, LockedWorld* locked) {
    const platform::ColorTable* const colors = depth == 8 ? platform::GetCTable(kGrayRamp) : nullptr;
    sdk::GWorld* const world = platform::NewGWorld(depth, buffer.Width, buffer.Height, colors);
    if (!world) return {};
    OwnedObject instance(host.PluginNewInstance(kWorldClass));
    if (!instance) platform::DisposeGWorld(world);
    if (!instance || !LockWorld(world, locked)) return {};
    WorldOf(instance.Get()) = {world, true};
    return instance;
}

}  // namespace

sdk::Object* CopyGWorld(sdk::Object* self) {
    PixelBuffer& buffer = *BufferOf(self);
    RowCursor from(buffer);
    const WorldPlan plan = PlanWorld(buffer);
    if (!Begin({&from}) || plan.depth == 0) return nullptr;
    LockedWorld world;
    OwnedObject instance = MakeInstance(buffer, plan.depth, &world);
    if (!instance) return nullptr;
    WriteWorld(from, plan, world);
    return instance.Give();
}

}  // namespace tqx
