// The call behind Scale: what is refused, the intermediate, and the way the passes run.
#include "plugin/geometry/Scale.h"

#include <algorithm>
#include <cstdlib>

#include "plugin/buffer/Destination.h"
#include "plugin/buffer/ImageFormat.h"
#include "plugin/buffer/Operation.h"
#include "plugin/buffer/Sharing.h"
#include "plugin/geometry/ScaleJob.h"
#include "plugin/rows/Streaming.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

bool IsIntermediate(const PixelBuffer& buffer) { return buffer.Valid && buffer.ImageFormat == ImageFormatScaling; }

bool Yields(const ScaleJob& job) {
    return job.source->YieldTicks > 0 || job.self->YieldTicks > 0 || job.intermediate->YieldTicks > 0;
}

void CutToPictures(ScaleJob& job) {
    job.columns = std::clamp(job.self->Width, 0, job.width);
    job.rows = std::clamp(job.self.Rows().end, 0, job.height);
    job.keptColumns = std::clamp(job.intermediate->Width, 0, job.width);
    job.keptRows = std::clamp(job.intermediate.Rows().end, 0, job.source->Height);
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

std::int32_t MissingRows(const RowCursor& picture) {
    const RowRange present = picture.Rows();
    return picture->Height - (present.end - present.first);
}

bool RunInOrder(const ScaleJob& job) { return ScaleAcrossInOrder(job) && ScaleDownInOrder(job); }

bool RunPasses(const ScaleJob& job) {
    if (job.source.Rows().IsEmpty()) return ScaleDownInOrder(job);
    const PixelBuffer& source = job.source.Picture();
    const PixelBuffer& self = job.self.Picture();
    const PixelBuffer& intermediate = job.intermediate.Picture();
    if (Yields(job) || MayShareStorage(intermediate, source) || MayShareStorage(intermediate, self))
        return RunInOrder(job);
    if (job.intermediateIsOurs && !MayShareStorage(source, self) &&
        (ScaleInWholeNumbers(job) || ScaleQuickly(job) || ScaleThroughBands(job)))
        return true;
    const Across across = ScaleAcrossInBands(job);
    if (across == Across::NotDone) return RunInOrder(job);
    return (across == Across::Complete && RowsLieApart(job) && ScaleDownInBands(job)) || ScaleDownInOrder(job);
}

bool Run(ScaleJob& job) {
    if (!job.intermediate->Valid || !job.self->Valid || !job.source->Valid ||
        !IsIntermediate(job.intermediate.Picture()))
        return false;
    CutToPictures(job);
    if (!ChooseScalePath(job.source.Picture(), job.self.Picture(), std::int64_t{job.columns} * job.rows, &job.path) ||
        !Begin({&job.source, &job.self, &job.intermediate}))
        return false;
    if (job.source->Width <= 0 || job.source->Height <= 0) return true;
    if (MissingRows(job.source) > kMostMissingRows) return false;
    const rows::StreamsEnd end;
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
    RowCursor from(*BufferOf(source)), to(*BufferOf(self)), between(*BufferOf(temp ? temp : made.Get()));
    ScaleJob job{.source = from,
                 .self = to,
                 .intermediate = between,
                 .intermediateIsOurs = ours,
                 .kernel = kernel,
                 .width = width,
                 .height = height};
    return Run(job);
}

}  // namespace tqx
