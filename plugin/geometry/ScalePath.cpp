// Channels read and written for each pair of layouts.
#include "plugin/geometry/ScalePath.h"

#include "plugin/buffer/Channels.h"

namespace tqx {

namespace {

constexpr int kGraySlot = 1, kAlphaSlot = 3;

// Where one value of a pixel goes.
struct Write {
    int value;
    std::int32_t offset;  // in self's pixels, bytes
};

struct Writes {
    Write write[4];
    int count = 0;
    void Add(int value, std::int32_t offset) { write[count++] = {value, offset}; }
};

// One value to all three colours. In a gray picture these lie at byte 0, wherever its gray is, so
// the luma of a colour picture may land in its alpha: intended.
void AddToColours(Writes& writes, const PixelBuffer& self) {
    writes.Add(0, self.RedOffset);
    writes.Add(0, self.GreenOffset);
    writes.Add(0, self.BlueOffset);
}

rows::SlotLayout SlotsOf(int values, bool alpha) {
    if (values >= 3) return {values, {0, 1, 2, 3}, false};
    return {values, {kGraySlot, alpha ? kAlphaSlot : 0}, false};
}

rows::MovePlan PackOf(const rows::Samples& samples) {
    rows::PixelMoves moves;
    moves.fromPixelSize = samples.layout.pixelSize;
    moves.toPixelSize = samples.bytes;
    for (int c = 0; c < samples.bytes; ++c) moves.Add(samples.layout.offset[c], c);
    return rows::PlanMoves(moves);
}

// `place` gives each value's place in a pixel of `pixelSize` bytes.
template <class Place>
rows::MovePlan WritesFrom(const Writes& writes, const PixelBuffer& self, std::int32_t pixelSize, std::int64_t pixels,
                          Place place) {
    rows::PixelMoves moves;
    moves.fromPixelSize = pixelSize;
    moves.toPixelSize = self.PixelSize;
    for (int i = 0; i < writes.count; ++i) moves.Add(place(writes.write[i].value), writes.write[i].offset);
    return rows::PlanMoves(moves, rows::BytesToWrite(pixels, 1, self.PixelSize));
}

// Where the values of a source's channels go in self, in the order in which they are written.
Writes WritesTo(const PixelBuffer& self, const rows::Samples& samples, bool alpha) {
    Writes writes;
    const int values = samples.Values();
    if (values >= 3) {
        writes.Add(0, self.RedOffset);
        writes.Add(1, self.GreenOffset);
        writes.Add(2, self.BlueOffset);
    } else if (self.IsGray && !samples.luma) {
        writes.Add(0, self.GrayOffset);
    } else {
        AddToColours(writes, self);
    }
    if (alpha) writes.Add(values - 1, self.AlphaOffset);
    return writes;
}

}  // namespace

bool ChooseScalePath(const PixelBuffer& source, const PixelBuffer& self, std::int64_t pixels, ScalePath* path) {
    rows::ChannelSet set, selfSet;
    if (!ChooseChannels(source, &set) || !ChooseChannels(self, &selfSet)) return false;
    const bool fromGray = source.IsGray, toGray = self.IsGray;
    const bool alpha = source.HasAlpha && self.HasAlpha && (toGray || !fromGray);
    const rows::ChannelSet read = fromGray ? (alpha ? rows::ChannelSet::GrayAlpha : rows::ChannelSet::Gray)
                                           : (alpha ? rows::ChannelSet::RgbAlpha : rows::ChannelSet::Rgb);
    path->samples = {LayoutOf(source, read), rows::ChannelCount(read), toGray && !fromGray};
    path->slots = SlotsOf(path->samples.Values(), alpha);
    path->slots.clearsRest = alpha && fromGray;
    path->pack = PackOf(path->samples);
    const Writes writes = WritesTo(self, path->samples, alpha);
    path->fromPacked = WritesFrom(writes, self, path->Values(), pixels, [](int value) { return value; });
    path->fromSlots =
        WritesFrom(writes, self, rows::kSlots, pixels, [&](int value) { return path->slots.slot[value]; });
    return true;
}

}  // namespace tqx
