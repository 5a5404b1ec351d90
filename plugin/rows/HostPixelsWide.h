// Masked rows in registers, for HostPixels.cpp.
//
// A lane of host pixels meets as many destination pixels, of which those of three bytes leave the
// end of their lane to the next one: it is stored as it was loaded, and then over.

namespace rows::ROWS_LEVEL {

namespace {

constexpr std::int32_t kPixels = kLaneCount * kLanePixels;

// Where whole steps end: their lanes must lie between the first and last written byte of the row.
ROWS_INLINE std::int32_t PixelsOfSteps(const MaskedPlan& plan, std::int32_t width) {
    const std::int64_t size = plan.layout.pixelSize;
    const std::int64_t step = kPixels * size, reach = (kLaneCount - 1) * kLanePixels * size + 16;
    const std::int64_t bytes = plan.span.Extent(width);
    const std::int64_t steps = bytes < reach ? 0 : (bytes - reach) / step + 1;
    return static_cast<std::int32_t>(std::min<std::int64_t>(steps, width / kPixels)) * kPixels;
}

// The bytes of a step in the order of the destination.
struct DrawnBytes {
    Register index, fromMask, flip;

    ROWS_INLINE Register Of(const std::uint8_t* picture, const std::uint8_t* mask) const {
        const Register colors = ShuffleBytes(Load(picture), index);
        const Register alphas = mask ? ShuffleBytes(Load(mask), index) : Bytes(255);
        return Xor(Choose(MaskOfBytes(fromMask), alphas, colors), flip);
    }
};

ROWS_INLINE Register BlendWords(Register keep, Register destination, Register picture) {
    // keep × destination + (255 - keep) × picture, modulo 2^16: the sum is below it.
    const Register sum =
        AddWords(MulWords(keep, SubWords(destination, picture)), SubWords(ShiftWordsUp<8>(picture), picture));
    // Division by 255, exact for every 16-bit number.
    return ShiftWordsDown<7>(MulHighWords(sum, Words(0x8081)));
}

ROWS_INLINE Register BlendBytes(Register keep, Register destination, Register picture) {
    return PackWords(
        BlendWords(UnpackLowBytes(keep, Zero()), UnpackLowBytes(destination, Zero()), UnpackLowBytes(picture, Zero())),
        BlendWords(UnpackHighBytes(keep, Zero()), UnpackHighBytes(destination, Zero()),
                   UnpackHighBytes(picture, Zero())));
}

void DrawMasked(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
                std::uint8_t* destination, std::int32_t width) {
    const DrawnBytes drawn{RepeatLane(plan.index), RepeatLane(plan.fromMask), RepeatLane(plan.maskFlip)};
    const Mask written = MaskOfBytes(RepeatLane(plan.written));
    const std::int64_t size = plan.layout.pixelSize, stride = kLanePixels * size;
    const std::int32_t pixels = PixelsOfSteps(plan, width);
    for (std::int64_t x = 0; x < pixels; x += kPixels) {
        std::uint8_t* const to = destination + plan.span.offset + x * size;
        const Register bytes = drawn.Of(picture + x * kHostPixel, mask ? mask + x * kHostPixel : nullptr);
        StoreLanes(to, stride, Choose(written, bytes, LoadLanes(to, stride)));
    }
    const std::int64_t done = std::int64_t{pixels} * kHostPixel;
    DrawMaskedPlain(plan, picture + done, mask ? mask + done : nullptr, destination + pixels * size, width - pixels);
}

// The destination is brought into the order of host pixels, blended and brought back.
void BlendMasked(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
                 std::uint8_t* destination, std::int32_t width) {
    const Register index = RepeatLane(plan.index), inverse = RepeatLane(plan.inverse), flip = Bytes(plan.flip);
    const Mask written = MaskOfBytes(RepeatLane(plan.written));
    const std::int64_t size = plan.layout.pixelSize, stride = kLanePixels * size;
    const std::int32_t pixels = PixelsOfSteps(plan, width);
    for (std::int64_t x = 0; x < pixels; x += kPixels) {
        std::uint8_t* const to = destination + plan.span.offset + x * size;
        const Register before = LoadLanes(to, stride), keep = Xor(Load(mask + x * kHostPixel), flip);
        const Register blended = BlendBytes(keep, ShuffleBytes(before, inverse), Load(picture + x * kHostPixel));
        StoreLanes(to, stride, Choose(written, ShuffleBytes(blended, index), before));
    }
    const std::int64_t done = std::int64_t{pixels} * kHostPixel;
    BlendMaskedPlain(plan, picture + done, mask + done, destination + pixels * size, width - pixels);
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
