#include "plugin/geometry/Scale.h"

#include <algorithm>
#include <cstdlib>

#include "plugin/buffer/Destination.h"
#include "plugin/buffer/ImageFormat.h"
#include "plugin/buffer/Sharing.h"
#include "plugin/geometry/ScaleJob.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

bool IsIntermediate(const PixelBuffer& buffer) { return buffer.Valid && buffer.ImageFormat == ImageFormatScaling; }

// Each picture must be usable, and then has its yield.
bool Begin(const ScaleJob& job) {
    const ScalePictures pictures(job);
    for (PixelBuffer* picture : {job.source, job.self, job.intermediate})
        if (!IsUsable(*picture) || !pictures.Yield(*picture)) return false;
    return true;
}

bool Yields(const ScaleJob& job) {
    return job.source->YieldTicks > 0 || job.self->YieldTicks > 0 || job.intermediate->YieldTicks > 0;
}

void CutToPictures(ScaleJob& job) {
    job.columns = std::clamp(job.self->Width, 0, job.width);
    job.rows = std::clamp(RowsOf(*job.self).end, 0, job.height);
    job.keptColumns = std::clamp(job.intermediate->Width, 0, job.width);
    job.keptRows = std::clamp(RowsOf(*job.intermediate).end, 0, job.source->Height);
}

// Whether the intermediate's rows lie apart, so that what is read from it is what was written: the
// bands count on values from 0 to 255, and pieces of two values may make any number.
bool RowsLieApart(const ScaleJob& job) {
    return job.keptRows <= 1 ||
           std::abs(std::int64_t{job.intermediate->RowSize}) >= std::int64_t{job.keptColumns} * rows::kSlotPixelSize;
}

// Weights are kept for every row that the source claims: for very many that its storage doesn't have,
// that is as if memory were short.
constexpr std::int32_t kMostMissingRows = 1 << 24;

std::int32_t MissingRows(const PixelBuffer& buffer) {
    const RowRange present = RowsOf(buffer);
    return buffer.Height - (present.end - present.first);
}

bool RunInOrder(const ScaleJob& job) { return ScaleAcrossInOrder(job) && ScaleDownInOrder(job); }

bool RunPasses(const ScaleJob& job) {
    if (RowsOf(*job.source).IsEmpty()) return ScaleDownInOrder(job);
    if (Yields(job) || MayShareStorage(*job.intermediate, *job.source) || MayShareStorage(*job.intermediate, *job.self))
        return RunInOrder(job);
    if (job.intermediateIsOurs && !MayShareStorage(*job.source, *job.self) && ScaleThroughBands(job)) return true;
    const Across across = ScaleAcrossInBands(job);
    if (across == Across::NotDone) return RunInOrder(job);
    return (across == Across::Complete && RowsLieApart(job) && ScaleDownInBands(job)) || ScaleDownInOrder(job);
}

bool Run(ScaleJob& job) {
    if (!job.intermediate->Valid || !job.self->Valid || !job.source->Valid || !IsIntermediate(*job.intermediate))
        return false;
    if (!ChooseScalePath(*job.source, *job.self, &job.path) || !Begin(job)) return false;
    if (job.source->Width <= 0 || job.source->Height <= 0) return true;
    if (MissingRows(*job.source) > kMostMissingRows) return false;
    CutToPictures(job);
    return RunPasses(job);
}

}  // namespace

bool Scale(sdk::Object* self, sdk::Object* source, sdk::Object* temp, std::int32_t mode, std::int32_t width,
           std::int32_t height) {
    if (!source || width <= 0 || height <= 0) return false;
    OwnedObject made;
    bool ours = false;
    if (!temp) {
        ours = !HasFactory(self);
        const std::int32_t rows = BufferOf(source)->Height;
        // Mostly both passes go band by band, and one that nobody else knows is not touched.
        made = OwnedObject(ours ? MakeUntouchedPicture(width, rows, ImageFormatScaling)
                                : MakeDestination(self, width, rows, ImageFormatScaling));
        if (!made || !IsIntermediate(*BufferOf(made.Get()))) return false;
    }
    const ScaleKernel* const kernel = KernelOfMode(mode);
    if (!kernel) return false;
    ScaleJob job{BufferOf(source), BufferOf(self), BufferOf(temp ? temp : made.Get()), ours, kernel, width, height};
    return Run(job);
}

}  // namespace tqx
