// Sheared rows in registers, for Skew.cpp.

namespace rows::ROWS_LEVEL {

namespace {

struct LeavingRegisters {
    TableRegisters table;
    Register share;

    // What values leave. Where a look-up is a chain of shuffles, products that tell are quicker.
    ROWS_INLINE Register Of(Register values) const {
#if ROWS_LEVEL_IS_AVX512
        return LookUpBytes(table, values);
#else
        const Register low = UnpackLowBytes(values, Zero()), high = UnpackHighBytes(values, Zero());
        // A fraction that a value's worth of the share's last place takes past 1 leaves a doubt.
        const Register lowSum = AddWordsCapped(MulWords(low, share), low);
        const Register highSum = AddWordsCapped(MulWords(high, share), high);
        if (AnySet(Or(EqualWords(lowSum, Words(-1)), EqualWords(highSum, Words(-1))), Bytes(255)))
            return LookUpBytes(table, values);
        return PackWords(MulHighWords(low, share), MulHighWords(high, share));
#endif
    }
};

// The pixel before lies pixelSize bytes before each byte, so one load further left has what was
// left for all of them. Bytes between channels are read too, and stay.
template <bool WritesAll>
void ShearBytes(const SkewPlan& plan, const LeavingRegisters& leaving, const std::uint8_t* source,
                std::uint8_t* destination, std::int64_t bytes) {
    const std::int64_t size = plan.from.pixelSize;
    int part = 0;
    for (std::int64_t at = 0; at < bytes; at += kBytes) {
        const Register values = LoadPart(source + at, bytes - at);
        const Register before = LoadPart(source + at - size, bytes - at);
        Register moved = AddBytes(SubBytes(values, leaving.Of(values)), leaving.Of(before));
        if constexpr (!WritesAll)
            moved = Choose(MaskOfBytes(Load(plan.channels + part)), moved, LoadPart(destination + at, bytes - at));
        StorePart(destination + at, moved, bytes - at);
        part = part + kBytes == SkewPlan::kPeriod ? 0 : part + kBytes;
    }
}

void ShearRow(const SkewPlan& plan, const SkewTables& tables, const std::uint8_t* source, std::uint8_t* destination,
              std::int64_t count) {
    if (count < 1) return;
    const LeavingRegisters leaving{LoadTable(tables.left), Words(tables.share)};
    const std::int64_t bytes = (count - 1) * plan.from.pixelSize + plan.fromSpan.size;
    if (plan.writesAll)
        ShearBytes<true>(plan, leaving, source, destination, bytes);
    else
        ShearBytes<false>(plan, leaving, source, destination, bytes);
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
