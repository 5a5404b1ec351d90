// Which moves and grays a conversion comes down to, and running them.
#include "plugin/rows/Convert.h"

#include "plugin/rows/Blocks.h"

namespace rows {

namespace {

struct Pixel {
    std::uint8_t red, green, blue, gray, alpha;
};

template <ChannelSet From>
Pixel Read(const PixelLayout& layout, const std::uint8_t* pixel) {
    if constexpr (From == ChannelSet::Gray || From == ChannelSet::GrayAlpha) {
        const std::uint8_t gray = pixel[layout.offset[0]];
        return {gray, gray, gray, gray, From == ChannelSet::GrayAlpha ? pixel[layout.offset[1]] : std::uint8_t{0}};
    } else {
        const std::uint8_t red = pixel[layout.offset[0]];
        const std::uint8_t green = pixel[layout.offset[1]];
        const std::uint8_t blue = pixel[layout.offset[2]];
        return {red, green, blue, Gray(red, green, blue),
                From == ChannelSet::RgbAlpha ? pixel[layout.offset[3]] : std::uint8_t{0}};
    }
}

template <ChannelSet To>
void Write(const PixelLayout& layout, const Pixel& value, bool writeAlpha, std::uint8_t alpha, std::uint8_t* pixel) {
    if constexpr (To == ChannelSet::Gray || To == ChannelSet::GrayAlpha) {
        pixel[layout.offset[0]] = value.gray;
        if (To == ChannelSet::GrayAlpha && writeAlpha) pixel[layout.offset[1]] = alpha;
    } else {
        pixel[layout.offset[0]] = value.red;
        pixel[layout.offset[1]] = value.green;
        pixel[layout.offset[2]] = value.blue;
        if (To == ChannelSet::RgbAlpha && writeAlpha) pixel[layout.offset[3]] = alpha;
    }
}

// The definition: one pixel after the other.
template <ChannelSet From, ChannelSet To>
void ConvertPlain(const Conversion& conversion, const std::uint8_t* source, std::uint8_t* destination,
                  std::int32_t width) {
    const AlphaRule rule = conversion.alpha;
    const bool inverts = rule == AlphaRule::Invert || rule == AlphaRule::InvertFirst;
    const bool fromFirst = rule == AlphaRule::CopyFirst || rule == AlphaRule::InvertFirst;
    const std::uint8_t flip = inverts ? 255 : 0;
    const std::uint8_t first = width > 0 ? Read<From>(conversion.from, source).alpha : std::uint8_t{0};
    for (std::int32_t x = 0; x < width; ++x) {
        const Pixel value = Read<From>(conversion.from, source);
        const std::uint8_t alpha = (fromFirst ? first : value.alpha) ^ flip;
        Write<To>(conversion.to, value, rule != AlphaRule::Leave, alpha, destination);
        source += conversion.from.pixelSize;
        destination += conversion.to.pixelSize;
    }
}

void ConvertPlainOf(const Conversion& conversion, const std::uint8_t* source, std::uint8_t* destination,
                    std::int32_t width) {
    ForChannelSet(conversion.fromSet, [&]<ChannelSet From>() {
        ForChannelSet(conversion.toSet,
                      [&]<ChannelSet To>() { ConvertPlain<From, To>(conversion, source, destination, width); });
    });
}

bool IsColour(ChannelSet set) { return set == ChannelSet::Rgb || set == ChannelSet::RgbAlpha; }

// Where alpha stands among a set's channels.
int AlphaChannel(ChannelSet set) { return IsColour(set) ? 3 : 1; }

bool WritesAlpha(const Conversion& conversion) {
    return conversion.alpha != AlphaRule::Leave && SetHasAlpha(conversion.toSet);
}

// Adds the pixel's own alpha.
void AddAlpha(const Conversion& conversion, PixelMoves& moves) {
    moves.Add(conversion.from.offset[AlphaChannel(conversion.fromSet)],
              conversion.to.offset[AlphaChannel(conversion.toSet)], conversion.alpha == AlphaRule::Invert ? 255 : 0);
}

// A conversion that only moves bytes: gray to gray or colour, colour to colour.
MovePlan PlanByMoves(const Conversion& conversion, std::int64_t bytes) {
    const int first = IsColour(conversion.fromSet) ? 1 : 0;  // gray serves every colour
    PixelMoves moves{conversion.from.pixelSize, conversion.to.pixelSize};
    for (int channel = 0; channel < (IsColour(conversion.toSet) ? 3 : 1); ++channel)
        moves.Add(conversion.from.offset[channel * first], conversion.to.offset[channel]);
    if (WritesAlpha(conversion)) AddAlpha(conversion, moves);
    return PlanMoves(moves, bytes);
}

MovePlan PlanGrayStore(const Conversion& conversion) {
    PixelMoves moves{1, conversion.to.pixelSize};
    moves.Add(0, conversion.to.offset[0]);
    return PlanMoves(moves);
}

MovePlan PlanAlpha(const Conversion& conversion) {
    PixelMoves moves{conversion.from.pixelSize, conversion.to.pixelSize};
    AddAlpha(conversion, moves);
    return PlanMoves(moves);
}

// Colour to gray, some pixels at a time: their grays into a buffer, alpha, then the grays' places.
// Reads each pixel's alpha before its gray is written.
void ConvertByGrays(const ConversionPlan& plan, const std::uint8_t* source, std::uint8_t* destination,
                    std::int32_t width) {
    constexpr std::int32_t kPixelsATime = 512;
    std::uint8_t grays[kPixelsATime];
    const PixelLayout& from = plan.conversion.from;
    const PixelLayout& to = plan.conversion.to;
    if (plan.moves.copies && !plan.alphaMoves && AreDisjoint(plan.from, source, plan.to, destination, width))
        return GrayRow(plan.grays, source, destination + to.offset[0], width);
    for (const auto [x, count] : Blocks(width, kPixelsATime)) {
        const std::uint8_t* const read = source + std::int64_t{x} * from.pixelSize;
        std::uint8_t* const written = destination + std::int64_t{x} * to.pixelSize;
        GrayRow(plan.grays, read, grays, count);
        if (plan.alphaMoves) MoveRow(plan.alpha, read, written, count);
        MoveRow(plan.moves, grays, written, count);
    }
}

}  // namespace

ConversionPlan PlanConversion(const Conversion& conversion, std::int64_t bytes) {
    ConversionPlan plan{};
    plan.conversion = conversion;
    plan.from = SpanOf(conversion.from.pixelSize, conversion.from.offset, ChannelCount(conversion.fromSet));
    plan.to = SpanOf(conversion.to.pixelSize, conversion.to.offset, ChannelCount(conversion.toSet));
    if (conversion.alpha == AlphaRule::CopyFirst || conversion.alpha == AlphaRule::InvertFirst) return plan;
    plan.byMoves = !IsColour(conversion.fromSet) || IsColour(conversion.toSet);
    plan.alphaMoves = !plan.byMoves && WritesAlpha(conversion);
    // Gray is stored after alpha, so they can't share a byte.
    plan.byGrays = !plan.byMoves && !(plan.alphaMoves && conversion.to.offset[0] == conversion.to.offset[1]);
    if (plan.byGrays) plan.grays = PlanGray(conversion.from);
    plan.moves = plan.byMoves ? PlanByMoves(conversion, bytes) : PlanGrayStore(conversion);
    if (plan.alphaMoves) plan.alpha = PlanAlpha(conversion);
    return plan;
}

void ConvertRow(const ConversionPlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width) {
    if (width <= 0) return;
    if (plan.byMoves)
        MoveRow(plan.moves, source, destination, width);
    else if (plan.byGrays && MayReadAhead(plan.from, source, plan.to, destination, width))
        ConvertByGrays(plan, source, destination, width);
    else
        ConvertPlainOf(plan.conversion, source, destination, width);
}

void ConvertRow(const Conversion& conversion, const std::uint8_t* source, std::uint8_t* destination,
                std::int32_t width) {
    constexpr std::int32_t kWorthAPlan = 64;  // below, the plain loop is done before a plan is made
    if (width < kWorthAPlan) return ConvertPlainOf(conversion, source, destination, width);
    ConvertRow(PlanConversion(conversion), source, destination, width);
}

}  // namespace rows
