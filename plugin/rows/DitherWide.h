// Dithering in registers, for Dither.cpp.

namespace rows::ROWS_LEVEL {

namespace {

// `TwoLevels`: the tables have one entry each.
template <bool TwoLevels>
void DitherBytes(const DitherPlan& plan, const DitherJob& job) {
    const CellBytes cells(plan, job);
    const TableRegisters lowers = LoadTable(plan.tables.lower), uppers = LoadTable(plan.tables.upper);
    const std::int64_t count = std::int64_t{job.count} * job.channels;
    const std::int32_t advance = kBytes % cells.period;
    std::int32_t cell = job.first % job.cells.size * job.channels;
    Register lower = Bytes(plan.tables.lower[0]), upper = Bytes(plan.tables.upper[0]);
    for (std::int64_t at = 0; at < count; at += kBytes) {
        const Register bytes = LoadPart(job.pixels + at, count - at);
        if constexpr (!TwoLevels) {
            lower = LookUpBytes(lowers, bytes);
            upper = LookUpBytes(uppers, bytes);
        }
        const Mask isUpper = Equal(MinBytes(bytes, Load(cells.highest + cell)), bytes);
        StorePart(job.result + at, Choose(isUpper, upper, lower), count - at);
        cell += advance;
        if (cell >= cells.period) cell -= cells.period;
    }
}

void DitherRow(const DitherPlan& plan, const DitherJob& job) {
    if (!IsWorthExpanding(job)) return DitherPlain(plan, job);
    return plan.tables.twoLevels ? DitherBytes<true>(plan, job) : DitherBytes<false>(plan, job);
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
