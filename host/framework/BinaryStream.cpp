// Bytes and numbers from and to files.
#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>

#include "host/framework/FileStream.h"
#include "host/framework/FolderItem.h"
#include "host/framework/Streams.h"
#include "host/framework/Support.h"

namespace host {

namespace {

struct StreamData {
    FileStream* stream;  // null in an instance that a script made by itself
    bool bigEndian;
};

sdk::ClassDefinition definition{.name = "BinaryStream", .instanceDataSize = sizeof(StreamData)};

StreamData& Data(sdk::Object* object) { return DataOf<StreamData>(object, definition); }

FileStream& Stream(sdk::Object* object) {
    if (!Data(object).stream) Fail(kFilesRaise.noFile());
    return *Data(object).stream;
}

void Destroy(sdk::Object* object) { delete Data(object).stream; }

// --- Opening --------------------------------------------------------------------------------

sdk::Object* Open(sdk::Object* file, bool readWrite) {
    return OpenBinary(PathOf(file), readWrite ? FileStream::Mode::ReadWrite : FileStream::Mode::Read).Detach();
}

sdk::Object* Create(sdk::Object* file, bool overwrite) {
    return OpenBinary(PathOf(file), overwrite ? FileStream::Mode::Create : FileStream::Mode::CreateNew).Detach();
}

// --- Bytes ----------------------------------------------------------------------------------

sdk::String* Read(sdk::Object* object, std::int32_t count) {
    return GiveString(Stream(object).Read(count), sdk::Encoding::None);
}

void Write(sdk::Object* object, sdk::String* bytes) { Stream(object).Write(Bytes(bytes)); }

bool AtEnd(sdk::Object* object) { return Stream(object).AtEnd(); }
void Close(sdk::Object* object) { Stream(object).Close(); }
void Flush(sdk::Object* object) { Stream(object).Length(); }

// --- Numbers --------------------------------------------------------------------------------

void SwapIfWanted(sdk::Object* object, char* bytes, std::size_t size) {
    constexpr bool machineIsBig = std::endian::native == std::endian::big;
    if (Data(object).bigEndian != machineIsBig) std::reverse(bytes, bytes + size);
}

// A number that the file has only a part of raises, and stays unread.
template <class Number, class Declared>
Declared ReadNumber(sdk::Object* object) {
    const std::int64_t position = Stream(object).Position();
    std::string bytes = Stream(object).Read(sizeof(Number));
    if (bytes.size() < sizeof(Number)) {
        Stream(object).SetPosition(position);
        Fail(kFilesRaise.endOfFile());
    }
    SwapIfWanted(object, bytes.data(), bytes.size());
    Number number;
    std::memcpy(&number, bytes.data(), sizeof number);
    return static_cast<Declared>(number);
}

template <class Number, class Declared>
void WriteNumber(sdk::Object* object, Declared value) {
    char bytes[sizeof(Number)];
    const Number number = static_cast<Number>(value);
    std::memcpy(bytes, &number, sizeof bytes);
    SwapIfWanted(object, bytes, sizeof bytes);
    Stream(object).Write({bytes, sizeof bytes});
}

bool ReadBoolean(sdk::Object* object) { return ReadNumber<std::uint8_t, std::int32_t>(object) != 0; }
void WriteBoolean(sdk::Object* object, bool value) { WriteNumber<std::uint8_t, std::int32_t>(object, value); }

// --- Texts behind a byte that counts their bytes ------------------------------------------------

sdk::String* ReadPString(sdk::Object* object) { return Read(object, ReadNumber<std::uint8_t, std::int32_t>(object)); }

// Cut behind 255 bytes.
void WritePString(sdk::Object* object, sdk::String* text) {
    const std::string_view bytes = Bytes(text).substr(0, UINT8_MAX);
    WriteNumber<std::uint8_t, std::int32_t>(object, static_cast<std::int32_t>(bytes.size()));
    Stream(object).Write(bytes);
}

// --- Properties -----------------------------------------------------------------------------

std::int64_t Position(sdk::Object* object) { return Stream(object).Position(); }
void SetPosition(sdk::Object* object, std::int64_t position) { Stream(object).SetPosition(position); }
std::int64_t Length(sdk::Object* object) { return Stream(object).Length(); }
void SetLength(sdk::Object* object, std::int64_t length) { Stream(object).SetLength(length); }
bool LittleEndian(sdk::Object* object) { return !Data(object).bigEndian; }
void SetLittleEndian(sdk::Object* object, bool value) { Data(object).bigEndian = !value; }

using Whole = std::int32_t;

}  // namespace

Ref<Object> OpenBinary(const std::string& path, FileStream::Mode mode) {
    auto stream = std::make_unique<FileStream>(path, mode);
    Ref<Object> object = NewInstanceOf(definition);
    Data(object.get()).stream = stream.release();
    return object;
}

void RegisterBinaryStream(Runtime& runtime) {
    constexpr std::int32_t kFlags = sdk::kMemberPortable;
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"Read(count as integer) as string", Guarded<&Read>>(kFlags),
        sdk::Method<"ReadInt8 as integer", Guarded<&ReadNumber<std::int8_t, Whole>>>(kFlags),
        sdk::Method<"ReadUInt8 as integer", Guarded<&ReadNumber<std::uint8_t, Whole>>>(kFlags),
        sdk::Method<"ReadByte as integer", Guarded<&ReadNumber<std::uint8_t, Whole>>>(kFlags),
        sdk::Method<"ReadInt16 as integer", Guarded<&ReadNumber<std::int16_t, Whole>>>(kFlags),
        sdk::Method<"ReadUInt16 as integer", Guarded<&ReadNumber<std::uint16_t, Whole>>>(kFlags),
        sdk::Method<"ReadInt32 as integer", Guarded<&ReadNumber<std::int32_t, Whole>>>(kFlags),
        sdk::Method<"ReadUInt32 as uint32", Guarded<&ReadNumber<std::uint32_t, std::uint32_t>>>(kFlags),
        sdk::Method<"ReadInt64 as int64", Guarded<&ReadNumber<std::int64_t, std::int64_t>>>(kFlags),
        sdk::Method<"ReadSingle as single", Guarded<&ReadNumber<float, float>>>(kFlags),
        sdk::Method<"ReadDouble as double", Guarded<&ReadNumber<double, double>>>(kFlags),
        sdk::Method<"ReadShort as integer", Guarded<&ReadNumber<std::int16_t, Whole>>>(kFlags),
        sdk::Method<"ReadUShort as integer", Guarded<&ReadNumber<std::uint16_t, Whole>>>(kFlags),
        sdk::Method<"ReadLong as integer", Guarded<&ReadNumber<std::int32_t, Whole>>>(kFlags),
        sdk::Method<"ReadBoolean as boolean", Guarded<&ReadBoolean>>(kFlags),
        sdk::Method<"ReadPString as string", Guarded<&ReadPString>>(kFlags),
        sdk::Method<"Write(bytes as string)", Guarded<&Write>>(kFlags),
        sdk::Method<"WriteInt8(value as integer)", Guarded<&WriteNumber<std::int8_t, Whole>>>(kFlags),
        sdk::Method<"WriteUInt8(value as integer)", Guarded<&WriteNumber<std::uint8_t, Whole>>>(kFlags),
        sdk::Method<"WriteByte(value as integer)", Guarded<&WriteNumber<std::uint8_t, Whole>>>(kFlags),
        sdk::Method<"WriteInt16(value as integer)", Guarded<&WriteNumber<std::int16_t, Whole>>>(kFlags),
        sdk::Method<"WriteUInt16(value as integer)", Guarded<&WriteNumber<std::uint16_t, Whole>>>(kFlags),
        sdk::Method<"WriteInt32(value as integer)", Guarded<&WriteNumber<std::int32_t, Whole>>>(kFlags),
        sdk::Method<"WriteUInt32(value as uint32)", Guarded<&WriteNumber<std::uint32_t, std::uint32_t>>>(kFlags),
        sdk::Method<"WriteInt64(value as int64)", Guarded<&WriteNumber<std::int64_t, std::int64_t>>>(kFlags),
        sdk::Method<"WriteSingle(value as single)", Guarded<&WriteNumber<float, float>>>(kFlags),
        sdk::Method<"WriteDouble(value as double)", Guarded<&WriteNumber<double, double>>>(kFlags),
        sdk::Method<"WriteShort(value as integer)", Guarded<&WriteNumber<std::int16_t, Whole>>>(kFlags),
        sdk::Method<"WriteUShort(value as integer)", Guarded<&WriteNumber<std::uint16_t, Whole>>>(kFlags),
        sdk::Method<"WriteLong(value as integer)", Guarded<&WriteNumber<std::int32_t, Whole>>>(kFlags),
        sdk::Method<"WriteBoolean(value as boolean)", Guarded<&WriteBoolean>>(kFlags),
        sdk::Method<"WritePString(text as string)", Guarded<&WritePString>>(kFlags),
        sdk::Method<"EOF as boolean", Guarded<&AtEnd>>(kFlags),
        sdk::Method<"Flush", Guarded<&Flush>>(kFlags),
        sdk::Method<"Close", Guarded<&Close>>(kFlags),
    };
    static const sdk::MethodRecord sharedMethods[] = {
        sdk::SharedMethod<"Open(file as FolderItem, readWrite as boolean = False) as BinaryStream", Guarded<&Open>>(
            kFlags),
        sdk::SharedMethod<"Create(file as FolderItem, overwrite as boolean = False) as BinaryStream", Guarded<&Create>>(
            kFlags),
    };
    static const sdk::PropertyRecord properties[] = {
        ReadWrite<"Int64", &Position, &SetPosition>("Position"),
        ReadWrite<"Int64", &Length, &SetLength>("Length"),
        ReadWrite<"Boolean", &LittleEndian, &SetLittleEndian>("LittleEndian"),
    };
    definition.destructor = &Destroy;
    SetMethods(definition, methods);
    SetSharedMethods(definition, sharedMethods);
    SetProperties(definition, properties);
    RegisterOrAbort(runtime, definition);
}

}  // namespace host
