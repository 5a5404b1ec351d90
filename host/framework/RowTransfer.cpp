// Rows carried between image files and an object's row property.
#include "host/framework/RowTransfer.h"

#include <algorithm>
#include <vector>

#include "host/calls/Call.h"
#include "host/calls/Overload.h"
#include "host/framework/MemoryBlock.h"
#include "host/framework/Support.h"
#include "host/images/ImageReader.h"

namespace host {

namespace {

// An object seen through the names of its members.
class RowObject {
  public:
    explicit RowObject(Object* object) : object_(object) {
        if (!object) Fail(kPicturesRaise.noPictureForRows());
        width = PropertyOr("Width", -1);
        height = PropertyOr("Height", -1);
        if (width < 0 || height < 0 || object->type->FindMethods("RowInFormat").empty())
            Fail(kPicturesRaise.noRows(object->type->name()));
    }

    std::int32_t PropertyOr(const char* name, std::int32_t otherwise) const {
        const Property* property = object_->type->FindProperty(name);
        if (!property || property->shared || !property->readable()) return otherwise;
        const Value value = GetProperty(*property, object_);
        Runtime::Get().ThrowIfRaised();
        return value.IsNumber() || value.kind() == Kind::Boolean ? value.ToInt32() : otherwise;
    }

    std::int32_t FormatOf(PixelLayout layout) const {
        constexpr const char* names[] = {"ImageFormatG", "ImageFormatGA", "ImageFormatRGB", "ImageFormatRGBA"};
        const char* name = names[BytesPerPixel(layout) - 1];
        const Constant* constant = object_->type->FindConstant(name);
        if (!constant) Fail(kPicturesRaise.noConstant(object_->type->name(), name));
        return constant->value.ToInt32();
    }

    // Gives the row as a block; raises when it isn't there or too short.
    Ref<Object> GetRow(std::int32_t row, std::int32_t format, std::size_t bytes) const {
        Choice choice = Choose(row, format, nullptr);
        const Value value = Invoke(*choice.method, object_, choice.arguments);
        Runtime::Get().ThrowIfRaised();
        if (BytesOfMemoryBlock(value.object()).size() < bytes) Fail(kPicturesRaise.rowMissing(row));
        return Ref<Object>::Share(value.object());
    }

    void SetRow(std::int32_t row, std::int32_t format, const Value& block) const {
        Choice choice = Choose(row, format, &block);
        const Value assigned = std::move(choice.arguments.back());
        choice.arguments.pop_back();
        InvokeSetter(*choice.method, object_, choice.arguments, assigned);
        Runtime::Get().ThrowIfRaised();
    }

    std::int32_t width = 0;
    std::int32_t height = 0;

  private:
    Choice Choose(std::int32_t row, std::int32_t format, const Value* assigned) const {
        const Value arguments[] = {Value(row), Value(format)};
        const auto candidates = object_->type->FindMethods("RowInFormat");
        Choice choice = ChooseOverload(candidates, arguments, assigned);
        if (!choice.method) Fail(kPicturesRaise.rowsUnfit(object_->type->name()));
        return choice;
    }

    Object* object_;
};

// The memory block that carries each row in turn.
Ref<Object> NewRowBlock(std::size_t bytes) {
    Ref<Object> block = NewMemoryBlock(static_cast<std::int64_t>(bytes));
    if (!block) throw std::bad_alloc();
    return block;
}

}  // namespace

void ReadFileInto(const std::string& path, Object* picture) {
    const RowObject rows(picture);
    ImageReadSettings settings = DefaultImageReadSettings();
    settings.pixelsAtHand = std::int64_t{rows.width} * rows.height;
    ImageReader reader(path, settings);
    const ImageInfo& info = reader.Info();
    if (info.width != rows.width || info.height != rows.height)
        Fail(kPicturesRaise.otherSize(path, info.width, info.height, rows.width, rows.height));
    const PixelLayout layout = LayoutOf(false, HasAlpha(info.layout) || rows.PropertyOr("HasAlpha", 0) != 0);
    const std::int32_t format = rows.FormatOf(layout);
    const std::size_t rowBytes = std::size_t(info.width) * BytesPerPixel(layout);
    const Value block(NewRowBlock(rowBytes));
    for (std::int32_t y = 0; y < info.height; ++y) {
        // Whoever took the block and changed its size gets no more of it.
        const auto bytes = BytesOfMemoryBlock(block.object());
        if (bytes.size() < rowBytes) Fail(kPicturesRaise.rowShrunk());
        reader.ReadRow(bytes.data(), layout);
        rows.SetRow(y, format, block);
    }
}

void WriteFileFrom(const std::string& path, Object* picture, const ImageWriteOptions& options) {
    const RowObject rows(picture);
    const bool gray = rows.PropertyOr("IsGray", 0) != 0;
    const PixelLayout layout = LayoutOf(gray, rows.PropertyOr("HasAlpha", 0) != 0);
    const std::int32_t format = rows.FormatOf(layout);
    const std::size_t rowBytes = std::size_t(rows.width) * BytesPerPixel(layout);
    ImageWriter writer(path, rows.width, rows.height, layout, options);
    for (std::int32_t y = 0; y < rows.height; ++y) {
        const Ref<Object> block = rows.GetRow(y, format, rowBytes);
        writer.WriteRow(BytesOfMemoryBlock(block.get()).data());
    }
    writer.Finish();
}

}  // namespace host
