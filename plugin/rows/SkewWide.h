// Sheared rows in registers, for Skew.cpp.

namespace rows::ROWS_LEVEL {

namespace {

// The pixel before lies pixelSize bytes before each byte, so one load further left has what was
// left for all of them. Bytes between channels are read and looked up too, but not stored.
void ShearRow(const SkewPlan& plan, const SkewTables& tables, const std::uint8_t* source, std::uint8_t* destination,
              std::int64_t count) {
    const std::int64_t size = plan.from.pixelSize, pixels = kBytes / size;
    const TableRegisters left = LoadTable(tables.left);
    const Mask channels = MaskOfBytes(Load(plan.channels));
    for (std::int64_t i = 0; i < count; i += pixels) {
        const std::int64_t bytes = (std::min(count - i, pixels) - 1) * size + plan.fromSpan.size;
        const Register values = LoadPart(source + i * size, bytes);
        const Register before = LoadPart(source + (i - 1) * size, bytes);
        const Register rest = SubBytes(values, LookUpBytes(left, values));
        const Register moved = AddBytes(rest, LookUpBytes(left, before));
        std::uint8_t* const to = destination + i * size;
        StorePart(to, Choose(channels, moved, LoadPart(to, bytes)), bytes);
    }
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
