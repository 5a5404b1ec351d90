// Rows of moves in registers, for Move.cpp.
//
// A plan of moves becomes one shuffle of bytes that serves some pixels at a time, a step: which byte
// of the source each byte of the destination comes from, or that it stays. AVX-512 shuffles 64 bytes
// across the register and has masks for what may be touched, so a step is a load, a shuffle and a
// store, and the rest of the row is a shorter step. AVX2 shuffles within lanes of 16 bytes and has
// no masks. There a lane of the destination is a step of its own, made of the 16, 32, 48 or 64 bytes
// of the source that its pixels may lie in; the lanes of a register are such steps side by side, each
// loaded from its own address. Bytes that stay are read first and written back, so steps end where
// a load or a store would leave the row, and the plain loop does what is left.
//
// Three bytes a pixel don't fill 16 bytes: a lane has five pixels and one byte more. That byte is
// the next lane's first and is written right the next moment; the last one is put back.
//
// In reverse the destination still grows from its left, while the source is read from its right end:
// steps count down, and the shuffle turns the pixels around within a step.

namespace rows::ROWS_LEVEL {

namespace {

#if ROWS_LEVEL_IS_AVX512

// Loads and stores under masks: nothing outside the moved bytes is touched, so the rest of a row
// that doesn't fill a step is one more step with shorter masks.
void MoveAhead(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width,
               bool reversed) {
    const MoveShuffle& shuffle = plan.shuffle;
    const std::int64_t fromSize = plan.moves.fromPixelSize, toSize = plan.moves.toPixelSize;
    const std::int64_t pixels = shuffle.pixels;
    const __m512i index = Load(reversed ? shuffle.reversed : shuffle.index), flip = Load(shuffle.flip);
    const __mmask64 read = LowBits((pixels - 1) * fromSize + plan.from.size);
    const __mmask64 written = MaskOfBytes(Load(shuffle.written));
    const std::int64_t step = reversed ? -pixels * fromSize : pixels * fromSize;
    std::int64_t at = reversed ? (width - pixels) * fromSize : 0;
    std::int64_t left = width;
    for (; left >= pixels; left -= pixels) {
        const __m512i bytes = _mm512_maskz_permutexvar_epi8(written, index, _mm512_maskz_loadu_epi8(read, source + at));
        _mm512_mask_storeu_epi8(destination, written, _mm512_xor_si512(bytes, flip));
        at += step;
        destination += pixels * toSize;
    }
    if (left == 0) return;
    // In reverse the rest lies at the row's start, and the shuffle looks too far right by what is
    // missing of a step.
    const __m512i missing = Bytes(static_cast<int>(reversed ? (pixels - left) * fromSize : 0));
    const __mmask64 readLeft = LowBits((left - 1) * fromSize + plan.from.size);
    const __m512i rest = _mm512_maskz_loadu_epi8(readLeft, reversed ? source : source + at);
    const __m512i bytes = _mm512_maskz_permutexvar_epi8(written, _mm512_sub_epi8(index, missing), rest);
    _mm512_mask_storeu_epi8(destination, written & LowBits(left * toSize), _mm512_xor_si512(bytes, flip));
}

#else

// Source bytes that make a step, as lanes: of each a part of the shuffle.
template <int Sources>
struct StepBytes {
    Register part[Sources];

    ROWS_INLINE void Read(const std::uint8_t* from, std::int64_t stride) {
        for (int i = 0; i < Sources; ++i) part[i] = LoadLanes(from + 16 * i, stride);
    }
};

template <int Sources>
struct StepShuffle {
    Register index[Sources];
    Register flip;

    ROWS_INLINE StepShuffle(const MoveLanes& lanes, bool reversed) : flip(RepeatLane(lanes.flip)) {
        for (int i = 0; i < Sources; ++i) index[i] = RepeatLane(reversed ? lanes.reversed[i] : lanes.index[i]);
    }

    ROWS_INLINE Register Of(const StepBytes<Sources>& bytes) const {
        Register moved = ShuffleBytes(bytes.part[0], index[0]);
        for (int i = 1; i < Sources; ++i) moved = Or(moved, ShuffleBytes(bytes.part[i], index[i]));
        return Xor(moved, flip);
    }
};

// Where a row's steps lie. Forward a step's lanes begin with their pixels and reach past them; in
// reverse they end with them, and the first lane is the one further right.
struct MoveSteps {
    std::int64_t count;        // that neither read nor write outside the row
    const std::uint8_t* from;  // of the first step's first lane
    std::int64_t stride;       // from a lane to the next, and
    std::int64_t advance;      // from a step to the next, in source bytes
    std::int64_t destinationStride;

    MoveSteps(const MovePlan& plan, const std::uint8_t* source, std::int32_t width, bool reversed) {
        const MoveLanes& lanes = plan.lanes;
        const std::int64_t lane = std::int64_t{lanes.pixels} * plan.moves.fromPixelSize;
        destinationStride = std::int64_t{lanes.pixels} * plan.moves.toPixelSize;
        const std::int64_t read = (kLaneCount - 1) * lane + 16 * lanes.sources;
        const std::int64_t written = (kLaneCount - 1) * destinationStride + 16;
        const std::int64_t sourceBytes = plan.from.Extent(width), destinationBytes = plan.to.Extent(width);
        count = std::min((sourceBytes - read) / (kLaneCount * lane),
                         (destinationBytes - written) / (kLaneCount * destinationStride)) +
                1;
        if (sourceBytes < read || destinationBytes < written) count = 0;
        count = std::min<std::int64_t>(count, width / (kLaneCount * lanes.pixels));
        from = reversed ? source + sourceBytes - 16 * lanes.sources : source;
        stride = reversed ? -lane : lane;
        advance = kLaneCount * stride;
    }
};

// Each step is read, and with it the destination's bytes that stay, before the one ahead of it is
// written: a lane of five pixels of three bytes ends with a byte that is the next one's.
template <int Sources, bool WritesAll>
std::int32_t MoveLanesOf(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination,
                         std::int32_t width, bool reversed) {
    const MoveSteps steps(plan, source, width, reversed);
    const StepShuffle<Sources> shuffle(plan.lanes, reversed);
    const Mask written = MaskOfBytes(RepeatLane(plan.lanes.written));
    const std::int64_t advance = kLaneCount * steps.destinationStride;
    StepBytes<Sources> bytes;
    Register before = Zero();
    const std::uint8_t* from = steps.from;
    // The byte after the last step's pixels, which its last lane may end with.
    std::uint8_t* const end = destination + steps.count * advance;
    const bool spills = WritesAll && plan.moves.toPixelSize == 3 && steps.count > 0;
    const std::uint8_t kept = spills ? *end : std::uint8_t{0};
    if (steps.count > 0) bytes.Read(from, steps.stride);
    if (steps.count > 0 && !WritesAll) before = LoadLanes(destination, steps.destinationStride);
    for (std::int64_t i = 0; i < steps.count; ++i) {
        Register moved = shuffle.Of(bytes);
        if constexpr (!WritesAll) moved = Choose(written, moved, before);
        if (i + 1 < steps.count) {
            from += steps.advance;
            bytes.Read(from, steps.stride);
            if constexpr (!WritesAll) before = LoadLanes(destination + advance, steps.destinationStride);
        }
        StoreLanes(destination, steps.destinationStride, moved);
        destination += advance;
    }
    if (spills) *end = kept;
    return static_cast<std::int32_t>(steps.count * kLaneCount * plan.lanes.pixels);
}

template <bool WritesAll>
std::int32_t MoveLanesBySources(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination,
                                std::int32_t width, bool reversed) {
    switch (plan.lanes.sources) {
        case 1:
            return MoveLanesOf<1, WritesAll>(plan, source, destination, width, reversed);
        case 2:
            return MoveLanesOf<2, WritesAll>(plan, source, destination, width, reversed);
        case 3:
            return MoveLanesOf<3, WritesAll>(plan, source, destination, width, reversed);
        default:
            return MoveLanesOf<4, WritesAll>(plan, source, destination, width, reversed);
    }
}

void MoveAhead(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width,
               bool reversed) {
    const std::int32_t done = plan.lanes.writesAll
                                  ? MoveLanesBySources<true>(plan, source, destination, width, reversed)
                                  : MoveLanesBySources<false>(plan, source, destination, width, reversed);
    const std::int64_t skipped = std::int64_t{done} * plan.moves.fromPixelSize;
    MoveEach(plan, reversed ? source : source + skipped, destination + std::int64_t{done} * plan.moves.toPixelSize,
             width - done, reversed);
}

#endif

// The pixels of a register in reverse.
struct ReverseShuffle {
    Register index;

#if ROWS_LEVEL_IS_AVX512
    ROWS_INLINE explicit ReverseShuffle(const MovePlan& plan) : index(Load(plan.shuffle.reversed)) {}
    ROWS_INLINE Register Of(Register pixels) const { return _mm512_permutexvar_epi8(index, pixels); }
#else
    ROWS_INLINE explicit ReverseShuffle(const MovePlan& plan) : index(RepeatLane(plan.lanes.reversed[0])) {}
    ROWS_INLINE Register Of(Register pixels) const {
        return _mm256_permute4x64_epi64(ShuffleBytes(pixels, index), 0x4E);
    }
#endif
};

// Registers from both ends trade places; the pieces take what is left in the middle.
void MirrorRegisters(const MovePlan& plan, std::uint8_t* row, std::int32_t width) {
    constexpr std::int64_t kAhead = 2048;
    const ReverseShuffle reverse(plan);
    const std::int64_t size = plan.moves.toPixelSize;
    std::uint8_t *left = row, *right = row + width * size;
    for (; right - left >= 2 * kBytes; left += kBytes) {
        right -= kBytes;
        AskFor(left + kAhead, kBytes);
        AskFor(right - kAhead, kBytes);
        const Register atLeft = Load(left), atRight = Load(right);
        Store(left, reverse.Of(atRight));
        Store(right, reverse.Of(atLeft));
    }
    MirrorByEnds(plan, left, static_cast<std::int32_t>((right - left) / size));
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
