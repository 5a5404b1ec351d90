// The prologue: whether pictures can be used, the yields, the destination, the channels.
#include "plugin/buffer/Operation.h"

#include <utility>

#include "plugin/buffer/Destination.h"

namespace tqx {

bool Begin(std::initializer_list<RowCursor*> pictures) {
    for (RowCursor* const picture : pictures)
        if (!IsUsable(picture->Picture()) || !picture->Yield()) return false;
    return std::all_of(pictures.begin(), pictures.end(), [](RowCursor* picture) { return picture->Stands(); });
}

bool BeginInPlace(RowCursor& picture) { return Begin({&picture}) && picture->Width > 0 && picture->Height > 0; }

Operation::Operation(sdk::Object* self, sdk::Object* dest, std::int32_t width, std::int32_t height)
    : source(*BufferOf(self)) {
    if (!Begin({&source})) return;
    OwnedObject made = dest ? OwnedObject::Retain(dest)
                            : OwnedObject(MakeDestinationToFinish(self, width, height, source->ImageFormat));
    if (!made || !IsUsable(*BufferOf(made.Get()))) return;
    result_ = std::move(made);
    destination.Open(*BufferOf(result_.Get()));
    const bool stands = destination.Yield() && source.Stands();
    ready_ = ChooseChannels(source.Picture(), &channels) && stands && source->Width > 0 && !source.Rows().IsEmpty();
}

Operation::Operation(sdk::Object* self, sdk::Object* dest)
    : Operation(self, dest, BufferOf(self)->Width, BufferOf(self)->Height) {}

// Of a mapped source rows may be missing, of a view whose parent was closed all are, and script code that runs in
// a yield may end the loop.
void Operation::WillWrite(int count) {
    PixelBuffer& made = destination.Picture();
    const bool comesThrough = !source->IsMapping && source->YieldTicks <= 0 && StorageStands(source.Picture());
    const bool isWhole =
        count == made.PixelSize && CommonWidth() == made.Width && Rows().first == 0 && Rows().end == made.storageRows;
    if (made.rowAddress == &ClearingRowAddress && comesThrough && isWhole)
        made.clearedFrom = made.Width * made.PixelSize;
}

sdk::Object* Operation::Give() {
    if (result_) FinishPicture(*BufferOf(result_.Get()));
    return result_.Give();
}

}  // namespace tqx
