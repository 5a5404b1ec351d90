// Windows along a row in registers of 16-bit sums, for BoxBlur.cpp.

namespace rows::ROWS_LEVEL {

namespace {

// Words of a pixel: three channels get a fourth, so that whole pixels fill a lane of eight words.
template <int Channels>
constexpr int kSlots = Channels == 3 ? 4 : Channels;

template <int Channels>
constexpr int kLaneBytes = 8 / kSlots<Channels>* Channels;  // bytes of the pixels of a lane

// Bytes that a step may read and write: of three channels, whole lanes at kLaneBytes apart.
template <int Channels>
constexpr int kReach = Channels == 3 ? (kLaneCount - 1) * kLaneBytes<3> + 16 : kLaneCount * 8;

alignas(16) constexpr std::uint8_t kThreeToWords[16] = {0, 255, 1, 255, 2, 255, 255, 255,
                                                        3, 255, 4, 255, 5, 255, 255, 255};
alignas(16) constexpr std::uint8_t kThreeFromBytes[16] = {0,   1,   2,   4,   5,   6,   255, 255,
                                                          255, 255, 255, 255, 255, 255, 255, 255};

template <int Channels>
ROWS_INLINE Register LoadSamples(const std::uint8_t* from) {
    if constexpr (Channels == 3) return ShuffleBytes(LoadLanes(from, kLaneBytes<3>), RepeatLane(kThreeToWords));
    return LoadWords(from);
}

template <int Channels>
ROWS_INLINE void StoreMeans(std::uint8_t* to, Register words) {
    if constexpr (Channels == 3)
        StoreLanes(to, kLaneBytes<3>, ShuffleBytes(PackWords(words, words), RepeatLane(kThreeFromBytes)));
    else
        StoreWords(to, words);
}

// Each word plus those of the pixels before it in its lane.
template <int Slots>
ROWS_INLINE Register RunningSums(Register words) {
    if constexpr (Slots == 1) words = AddWords(words, ShiftLanesUp<2>(words));
    if constexpr (Slots <= 2) words = AddWords(words, ShiftLanesUp<4>(words));
    return AddWords(words, ShiftLanesUp<8>(words));
}

// The last pixel of each lane in all places of the lane.
template <int Slots>
ROWS_INLINE Register LastPixels(Register words) {
    alignas(16) std::uint8_t index[16];
    for (int i = 0; i < 16; ++i) index[i] = static_cast<std::uint8_t>(16 - 2 * Slots + i % (2 * Slots));
    return ShuffleBytes(words, RepeatLane(index));
}

template <int Channels>
struct SlidingWindows {
    Register sums;  // the windows' before a step; a pixel in all places
    Register factor;
    __m128i shift;

    ROWS_INLINE void Step(const std::uint8_t* leaving, const std::uint8_t* entering, std::uint8_t* result) {
        const Register change = SubWords(LoadSamples<Channels>(entering), LoadSamples<Channels>(leaving));
        const Register inLane = RunningSums<kSlots<Channels>>(change);
        const Register ends = LastPixels<kSlots<Channels>>(inLane);
        const Register before = SumOfLanesBefore(ends);
        const Register window = AddWords(sums, SubWords(AddWords(inLane, before), change));
        StoreMeans<Channels>(result, ShiftWordsDownBy(MulHighWords(window, factor), shift));
        sums = AddWords(sums, RepeatLastLane(AddWords(before, ends)));
    }
};

template <int Channels>
void BlurWordsOf(const WindowStretch& stretch, std::int32_t size, std::int32_t* sums) {
    constexpr int kStep = kLaneCount * kLaneBytes<Channels>;
    const WordMean mean(size);
    alignas(kBytes) std::uint16_t word[kBytes / 2];
    for (int i = 0; i < kBytes / 2; ++i) word[i] = static_cast<std::uint16_t>(sums[i % kSlots<Channels> % Channels]);
    SlidingWindows<Channels> windows{Load(word), Words(mean.factor), _mm_cvtsi32_si128(mean.shift)};
    std::int64_t at = 0;
    for (; at + kReach<Channels> <= stretch.count; at += kStep)
        windows.Step(stretch.leaving + at, stretch.entering + at, stretch.result + at);
    // The rest through copies that go on with zeros, which change no sum.
    constexpr int kMost = kReach<Channels> + kStep + 16;
    std::uint8_t leaving[kMost] = {}, entering[kMost] = {}, result[kMost];
    const std::int64_t rest = stretch.count - at;
    std::memcpy(leaving, stretch.leaving + at, static_cast<std::size_t>(rest));
    std::memcpy(entering, stretch.entering + at, static_cast<std::size_t>(rest));
    for (std::int64_t i = 0; i < rest; i += kStep) windows.Step(leaving + i, entering + i, result + i);
    std::memcpy(stretch.result + at, result, static_cast<std::size_t>(rest));
    Store(word, windows.sums);
    for (int i = 0; i < Channels; ++i) sums[i] = word[i];
}

#if ROWS_LEVEL_IS_AVX512

// Lane i of 32 becomes lane i - Distance, the lowest lanes 0; added to what was there.
template <int Distance>
ROWS_INLINE Register AddShifted(Register words, Register lane) {
    const __mmask32 present = ~__mmask32{0} << Distance;
    return AddWords(words, _mm512_maskz_permutexvar_epi16(present, SubWords(lane, Words(Distance)), words));
}

// Three channels without a fourth: a permutation moves words across lanes as well. Lane 0 of a step
// belongs to the channel behind that of the last lane.
template <>
void BlurWordsOf<3>(const WindowStretch& stretch, std::int32_t size, std::int32_t* sums) {
    alignas(kBytes) std::uint16_t word[32];
    for (int i = 0; i < 32; ++i) word[i] = static_cast<std::uint16_t>(i);
    const Register lane = Load(word);
    for (int i = 0; i < 32; ++i) word[i] = static_cast<std::uint16_t>(29 + i % 3);
    const Register lastOfChannel = Load(word);
    for (int i = 0; i < 32; ++i) word[i] = static_cast<std::uint16_t>(sums[i % 3]);
    Register before = Load(word);
    const WordMean mean(size);
    const Register factor = Words(mean.factor);
    const __m128i shift = _mm_cvtsi32_si128(mean.shift);
    std::int64_t at = 0;
    for (; at < stretch.count; at += 32) {
        const auto present = static_cast<__mmask32>(LowBits(stretch.count - at));
        const Register change = _mm512_cvtepu8_epi16(_mm256_maskz_loadu_epi8(present, stretch.entering + at));
        const Register gone = _mm512_cvtepu8_epi16(_mm256_maskz_loadu_epi8(present, stretch.leaving + at));
        const Register difference = SubWords(change, gone);
        Register changes = AddShifted<3>(difference, lane);
        changes = AddShifted<6>(changes, lane);
        changes = AddShifted<12>(changes, lane);
        changes = AddShifted<24>(changes, lane);
        const Register after = AddWords(before, changes);
        const Register means = ShiftWordsDownBy(MulHighWords(SubWords(after, difference), factor), shift);
        _mm256_mask_storeu_epi8(stretch.result + at, present, _mm512_cvtepi16_epi8(means));
        before = _mm512_permutexvar_epi16(lastOfChannel, after);
    }
    Store(word, before);
    for (int i = 0; i < 3; ++i) sums[(at + i) % 3] = word[i];
}

#endif

void BlurWords(const WindowStretch& stretch, int channels, std::int32_t size, std::int32_t* sums) {
    switch (channels) {
        case 1:
            return BlurWordsOf<1>(stretch, size, sums);
        case 2:
            return BlurWordsOf<2>(stretch, size, sums);
        case 3:
            return BlurWordsOf<3>(stretch, size, sums);
        default:
            return BlurWordsOf<4>(stretch, size, sums);
    }
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
