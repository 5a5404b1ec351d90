// Text from and to files. What is read is UTF-8 text when it is sound as such, else bytes without
// an encoding; what is written are the string's bytes.
#include <memory>

#include "host/framework/FileStream.h"
#include "host/framework/FolderItem.h"
#include "host/framework/Streams.h"
#include "host/framework/Support.h"
#include "host/framework/TextEncoding.h"

namespace host {

namespace {

struct StreamData {
    FileStream* stream;  // null in an instance that a script made by itself
};

sdk::ClassDefinition inputClass{.name = "TextInputStream", .instanceDataSize = sizeof(StreamData)};
sdk::ClassDefinition outputClass{.name = "TextOutputStream", .instanceDataSize = sizeof(StreamData)};

template <sdk::ClassDefinition& Definition>
void Destroy(sdk::Object* object) {
    delete DataOf<StreamData>(object, Definition).stream;
}

template <sdk::ClassDefinition& Definition>
FileStream& StreamOf(sdk::Object* object) {
    FileStream* stream = DataOf<StreamData>(object, Definition).stream;
    if (!stream) Fail(kFilesRaise.noFile());
    return *stream;
}

template <sdk::ClassDefinition& Definition>
Ref<Object> NewStream(const std::string& path, FileStream::Mode mode) {
    auto stream = std::make_unique<FileStream>(path, mode);
    Ref<Object> object = NewInstanceOf(Definition);
    DataOf<StreamData>(object.get(), Definition).stream = stream.release();
    return object;
}

template <sdk::ClassDefinition& Definition, FileStream::Mode Mode>
sdk::Object* OpenStream(sdk::Object* file) {
    return NewStream<Definition>(PathOf(file), Mode).Detach();
}

template <sdk::ClassDefinition& Definition>
void Close(sdk::Object* object) {
    StreamOf<Definition>(object).Close();
}

// --- Input ----------------------------------------------------------------------------------

FileStream& Input(sdk::Object* object) { return StreamOf<inputClass>(object); }

// Empty at the end of the file.
sdk::String* ReadLine(sdk::Object* object) {
    std::string line;
    Input(object).ReadLine(line);
    return TextOrBytes(line);
}

sdk::String* ReadAll(sdk::Object* object) { return TextOrBytes(Input(object).ReadAll()); }

// So many bytes, fewer at the end; none for a count below 1.
sdk::String* Read(sdk::Object* object, std::int32_t count) { return TextOrBytes(Input(object).Read(count)); }

// The same as text of an encoding.
sdk::String* ReadLineAs(sdk::Object* object, sdk::Object* encoding) {
    return DefineAs(Ref<String>::Adopt(FromPlugin(ReadLine(object))), encoding).Detach();
}

sdk::String* ReadAllAs(sdk::Object* object, sdk::Object* encoding) {
    return DefineAs(Ref<String>::Adopt(FromPlugin(ReadAll(object))), encoding).Detach();
}

bool AtEnd(sdk::Object* object) { return Input(object).AtEnd(); }

// --- Output ---------------------------------------------------------------------------------

FileStream& Output(sdk::Object* object) { return StreamOf<outputClass>(object); }

void Write(sdk::Object* object, sdk::String* text) { Output(object).Write(Bytes(text)); }

void WriteLine(sdk::Object* object, sdk::String* text) {
    Output(object).Write(Bytes(text));
    Output(object).Write("\n");
}

void EndLine(sdk::Object* object) { Output(object).Write("\n"); }

void Flush(sdk::Object* object) { Output(object).Length(); }

void RegisterInput(Runtime& runtime) {
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"ReadLine as string", Guarded<&ReadLine>>(sdk::kMemberPortable),
        sdk::Method<"ReadLine(encoding as TextEncoding) as string", Guarded<&ReadLineAs>>(sdk::kMemberPortable),
        sdk::Method<"ReadAll as string", Guarded<&ReadAll>>(sdk::kMemberPortable),
        sdk::Method<"ReadAll(encoding as TextEncoding) as string", Guarded<&ReadAllAs>>(sdk::kMemberPortable),
        sdk::Method<"Read(count as integer) as string", Guarded<&Read>>(sdk::kMemberPortable),
        sdk::Method<"EOF as boolean", Guarded<&AtEnd>>(sdk::kMemberPortable),
        sdk::Method<"Close", Guarded<&Close<inputClass>>>(sdk::kMemberPortable),
    };
    static const sdk::MethodRecord sharedMethods[] = {
        sdk::SharedMethod<"Open(file as FolderItem) as TextInputStream",
                          Guarded<&OpenStream<inputClass, FileStream::Mode::Read>>>(sdk::kMemberPortable),
    };
    inputClass.destructor = &Destroy<inputClass>;
    SetMethods(inputClass, methods);
    SetSharedMethods(inputClass, sharedMethods);
    RegisterOrAbort(runtime, inputClass);
}

}  // namespace

Ref<Object> OpenTextInput(const std::string& path) { return NewStream<inputClass>(path, FileStream::Mode::Read); }

Ref<Object> OpenTextOutput(const std::string& path, FileStream::Mode mode) {
    return NewStream<outputClass>(path, mode);
}

sdk::String* TextOrBytes(const std::string& bytes) {
    const bool sound = SoundUtf8(bytes) == bytes;
    return GiveString(bytes, sound ? sdk::Encoding::Utf8 : sdk::Encoding::None);
}

void RegisterTextStreams(Runtime& runtime) {
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"Write(text as string)", Guarded<&Write>>(sdk::kMemberPortable),
        sdk::Method<"WriteLine(text as string)", Guarded<&WriteLine>>(sdk::kMemberPortable),
        sdk::Method<"WriteLine", Guarded<&EndLine>>(sdk::kMemberPortable),
        sdk::Method<"Flush", Guarded<&Flush>>(sdk::kMemberPortable),
        sdk::Method<"Close", Guarded<&Close<outputClass>>>(sdk::kMemberPortable),
    };
    static const sdk::MethodRecord sharedMethods[] = {
        sdk::SharedMethod<"Create(file as FolderItem) as TextOutputStream",
                          Guarded<&OpenStream<outputClass, FileStream::Mode::Create>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Append(file as FolderItem) as TextOutputStream",
                          Guarded<&OpenStream<outputClass, FileStream::Mode::Append>>>(sdk::kMemberPortable),
    };
    RegisterInput(runtime);
    outputClass.destructor = &Destroy<outputClass>;
    SetMethods(outputClass, methods);
    SetSharedMethods(outputClass, sharedMethods);
    RegisterOrAbort(runtime, outputClass);
}

}  // namespace host
