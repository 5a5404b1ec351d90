// Construction, properties and masks of Picture, and what plug-ins are shown of one.
#include "host/framework/Picture.h"

#include <array>

#include "host/framework/FolderItem.h"
#include "host/framework/Graphics.h"
#include "host/framework/PictureFiles.h"
#include "host/framework/RgbSurface.h"
#include "host/framework/Support.h"

namespace host {

namespace {

struct PictureData {
    PictureStorage storage;
    Object* mask;           // holds one reference, or nil
    DrawingState* drawing;  // null before it was asked for
    std::int32_t locks;
};

sdk::ClassDefinition pictureClass{.name = "Picture", .instanceDataSize = sizeof(PictureData)};

std::int64_t excessUnlocks = 0;

PictureData& Data(sdk::Object* picture) { return DataOf<PictureData>(picture, pictureClass); }

void Destroy(sdk::Object* picture) {
    PictureData& data = Data(picture);
    DestroyStorage(data.storage);
    Release(data.mask);
    delete data.drawing;
}

void Construct(sdk::Object* picture, std::int32_t width, std::int32_t height, std::int32_t depth) {
    PictureStorage storage;
    if (Data(picture).storage.bytes) Fail(kPicturesRaise.madeTwice());
    if (width < 1 || height < 1) Fail(kPicturesRaise.size(width, height));
    if (depth != 32 && depth != 24 && depth != 16 && depth != 8 && depth != 1) Fail(kPicturesRaise.depth(depth));
    if (!CreateStorage(storage, width, height, depth)) throw std::bad_alloc();
    Data(picture).storage = storage;
}

// A picture around a storage, which it takes over; nil, and the storage destroyed, when memory is
// short.
Ref<Object> PictureAround(PictureStorage storage) {
    Ref<Object> picture = NewObject(Runtime::Get().ClassNamed(pictureClass.name));
    if (picture)
        Data(picture.get()).storage = storage;
    else
        DestroyStorage(storage);
    return picture;
}

// Takes over a mask made for this picture alone; nil takes the old one away.
void SetMask(sdk::Object* picture, Ref<Object> mask) { Release(std::exchange(Data(picture).mask, mask.Detach())); }

// --- Properties -----------------------------------------------------------------------------

std::int32_t Width(sdk::Object* picture) { return Data(picture).storage.width; }
std::int32_t Height(sdk::Object* picture) { return Data(picture).storage.height; }
std::int32_t Depth(sdk::Object* picture) { return Data(picture).storage.depth; }

sdk::Object* GetSurface(sdk::Object* picture) { return NewSurface(picture).Detach(); }

sdk::Object* GetGraphics(sdk::Object* picture) { return NewGraphics(picture).Detach(); }

// Nil for a picture without pixels.
sdk::Object* GetMask(sdk::Object* picture) {
    Ref<Object> mask = MaskOrNew(picture, Width(picture), Height(picture));
    if (!mask && StorageOf(picture)) throw std::bad_alloc();
    return mask.Detach();
}

void AssignMask(sdk::Object* picture, sdk::Object* mask) {
    if (!mask) return SetMask(picture, nullptr);
    PictureStorage copy;
    const PictureStorage* storage = StorageOf(mask);
    if (!storage) Fail(kPicturesRaise.emptyMask());
    if (!CopyStorage(copy, *storage)) throw std::bad_alloc();
    Ref<Object> own = PictureAround(copy);
    if (!own) throw std::bad_alloc();
    SetMask(picture, own);
}

bool HasMask(sdk::Object* picture) { return Data(picture).mask != nullptr; }

// --- Files ----------------------------------------------------------------------------------

constexpr std::int32_t kDefaultFormat = 0;  // by the name's extension

struct SaveFormat {
    const char* declaration;
    ImageFileFormat format;
};

// The number in each declaration is the constant's value, counted from 1.
constexpr std::array kSaveFormats{
    SaveFormat{"SaveAsPNG = 1", ImageFileFormat::Png},   SaveFormat{"SaveAsJPEG = 2", ImageFileFormat::Jpeg},
    SaveFormat{"SaveAsTIFF = 3", ImageFileFormat::Tiff}, SaveFormat{"SaveAsWebP = 4", ImageFileFormat::WebP},
    SaveFormat{"SaveAsBMP = 5", ImageFileFormat::Bmp},   SaveFormat{"SaveAsPNM = 6", ImageFileFormat::Pnm},
};

void SaveWith(sdk::Object* picture, sdk::Object* file, std::int32_t format, std::optional<std::int32_t> quality) {
    ImageWriteOptions options{std::nullopt, quality};
    if (format < 0 || format > static_cast<std::int32_t>(kSaveFormats.size())) Fail(kPicturesRaise.format(format));
    if (format != kDefaultFormat) options.format = kSaveFormats[static_cast<std::size_t>(format) - 1].format;
    WritePicture(picture, PathOf(file), options);
}

void Save(sdk::Object* picture, sdk::Object* file, std::int32_t format) {
    SaveWith(picture, file, format, std::nullopt);
}

void SaveWithQuality(sdk::Object* picture, sdk::Object* file, std::int32_t format, std::int32_t quality) {
    SaveWith(picture, file, format, quality);
}

sdk::Object* Open(sdk::Object* file) { return ReadPicture(PathOf(file)).Detach(); }

// --- Host functions -------------------------------------------------------------------------

void LockDescription(sdk::Object* picture, sdk::PictureDescription* description) {
    *description = {};
    if (!IsInstance(picture, pictureClass)) return;
    ++Data(picture).locks;
    const PictureStorage& storage = Data(picture).storage;
    *description = {storage.world ? sdk::kPictureKindWorld : sdk::kPictureKindNone, storage.world, storage.width,
                    storage.height};
}

void UnlockDescription(sdk::Object* picture) {
    if (!IsInstance(picture, pictureClass)) return;
    if (Data(picture).locks > 0)
        --Data(picture).locks;
    else
        ++excessUnlocks;
}

sdk::Object* BuildFromWorld(sdk::GWorld* world, bool handOver) {
    PictureStorage storage;
    if (!world || !(handOver ? AdoptWorld(storage, world) : CopyWorld(storage, *world))) return nullptr;
    Ref<Object> picture = NewObject(Runtime::Get().ClassNamed(pictureClass.name));
    if (picture)
        Data(picture.get()).storage = storage;
    else if (!handOver)
        DestroyStorage(storage);
    return picture.Detach();
}

sdk::Object* GetPictureMask(sdk::Object* picture, bool create, std::int32_t width, std::int32_t height) {
    if (!IsInstance(picture, pictureClass)) return nullptr;
    if (create) return MaskOrNew(picture, width, height).Detach();
    return Ref<Object>::Share(MaskOf(picture)).Detach();
}

sdk::Object* GraphicsGetter(sdk::Object* picture) {
    return StorageOf(picture) ? NewGraphics(picture).Detach() : nullptr;
}

void BindPictureFunctions(Runtime& runtime) {
    runtime.Bind<sdk::klockPictureDescription>(&LockDescription);
    runtime.Bind<sdk::kunlockPictureDescription>(&UnlockDescription);
    runtime.Bind<sdk::kREALBuildPictureFromGWorld>(&BuildFromWorld);
    runtime.Bind<sdk::kREALGetPictureMask>(&GetPictureMask);
    runtime.Bind<sdk::kpluginPictureGraphicsGetter>(&GraphicsGetter);
    runtime.Bind<sdk::knewPicture>([](std::int32_t width, std::int32_t height, std::int32_t depth) -> sdk::Object* {
        return NewPicture(width, height, depth).Detach();
    });
}

sdk::Object* NewPictureFunction(std::int32_t width, std::int32_t height, std::int32_t depth) {
    return NewPicture(width, height, depth).Detach();
}

void RegisterPictureClass(Runtime& runtime) {
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"Constructor(width as integer, height as integer, depth as integer = 32)", Guarded<&Construct>>(0),
        sdk::Method<"Save(file as FolderItem, format as integer = 0)", Guarded<&Save>>(0),
        sdk::Method<"Save(file as FolderItem, format as integer, quality as integer)", Guarded<&SaveWithQuality>>(0),
    };
    static const sdk::MethodRecord sharedMethods[] = {
        sdk::SharedMethod<"Open(file as FolderItem) as Picture", Guarded<&Open>>(0),
    };
    static const sdk::PropertyRecord properties[] = {
        ReadOnly<"Integer", &Width>("Width"),
        ReadOnly<"Integer", &Height>("Height"),
        ReadOnly<"Integer", &Depth>("Depth"),
        ReadOnly<"Graphics", &GetGraphics>("Graphics"),
        ReadOnly<"RGBSurface", &GetSurface>("RGBSurface"),
        ReadWrite<"Picture", &GetMask, &AssignMask>("Mask"),
        ReadOnly<"Boolean", &HasMask>("HasMask"),
    };
    static sdk::ConstantRecord constants[kSaveFormats.size() + 1] = {{"SaveAsDefault = 0", nullptr, 0}};
    for (std::size_t i = 0; i < kSaveFormats.size(); ++i) constants[i + 1] = {kSaveFormats[i].declaration, nullptr, 0};
    pictureClass.destructor = &Destroy;
    SetMethods(pictureClass, methods);
    SetSharedMethods(pictureClass, sharedMethods);
    SetProperties(pictureClass, properties);
    SetConstants(pictureClass, constants);
    RegisterOrAbort(runtime, pictureClass);
}

}  // namespace

// --- For the host ---------------------------------------------------------------------------

Ref<Object> NewPicture(std::int32_t width, std::int32_t height, std::int32_t depth) {
    PictureStorage storage;
    return CreateStorage(storage, width, height, depth) ? PictureAround(storage) : nullptr;
}

PictureStorage* StorageOf(sdk::Object* picture) {
    if (!IsInstance(picture, pictureClass) || !Data(picture).storage.bytes) return nullptr;
    return &Data(picture).storage;
}

Object* MaskOf(sdk::Object* picture) { return IsInstance(picture, pictureClass) ? Data(picture).mask : nullptr; }

Ref<Object> MaskOrNew(sdk::Object* picture, std::int32_t width, std::int32_t height) {
    PictureData& data = Data(picture);
    if (!data.mask) SetMask(picture, NewPicture(width, height, 32));
    return Ref<Object>::Share(data.mask);
}

DrawingState& DrawingStateOf(sdk::Object* picture) {
    DrawingState*& drawing = Data(picture).drawing;
    if (!drawing) drawing = new DrawingState;
    return *drawing;
}

std::int32_t PictureLockCount(sdk::Object* picture) { return Data(picture).locks; }

std::int64_t ExcessUnlockCount() { return excessUnlocks; }

void RegisterPicture(Runtime& runtime) {
    static const sdk::MethodRecord functions[] = {
        sdk::SharedMethod<"NewPicture(width as integer, height as integer, depth as integer = 32) as Picture",
                          Guarded<&NewPictureFunction>>(0),
    };
    RegisterPictureClass(runtime);
    RegisterSurface(runtime);
    runtime.RegisterFunctions(functions);
    BindPictureFunctions(runtime);
}

}  // namespace host
