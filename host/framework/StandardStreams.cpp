// The streams that the program was started with. What standard input gives is UTF-8 text when it is
// sound as such, else bytes without an encoding.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "host/framework/FileStream.h"
#include "host/framework/Output.h"
#include "host/framework/Streams.h"
#include "host/framework/Support.h"

namespace host {

namespace {

struct OutputData {
    bool isError;
};

sdk::ClassDefinition inputClass{.name = "StandardInputStream"};
sdk::ClassDefinition outputClass{.name = "StandardOutputStream", .instanceDataSize = sizeof(OutputData)};

// --- Input: one buffer, however many objects stand for it --------------------------------------

FileStream& Input() {
    static FileStream stream("standard input", stdin);
    std::fflush(stdout);  // a question comes before its answer
    return stream;
}

// Empty at the end.
sdk::String* ReadLine(sdk::Object*) {
    std::string line;
    Input().ReadLine(line);
    return TextOrBytes(line);
}

sdk::String* ReadAll(sdk::Object*) { return TextOrBytes(Input().ReadAll()); }
sdk::String* Read(sdk::Object*, std::int32_t count) { return TextOrBytes(Input().Read(count)); }
bool AtEnd(sdk::Object*) { return Input().AtEnd(); }

// --- Output ---------------------------------------------------------------------------------

bool IsError(sdk::Object* stream) { return DataOf<OutputData>(stream, outputClass).isError; }

// What was printed before comes first on a terminal too.
void WriteError(std::string_view text) {
    std::fflush(stdout);
    if (text.empty() || std::fwrite(text.data(), 1, text.size(), stderr) == text.size()) return;
    const int number = errno;
    Fail(kFilesRaise.cannotWrite("standard error", std::strerror(number)), number);
}

void WriteText(sdk::Object* stream, std::string_view text) { IsError(stream) ? WriteError(text) : WriteOutput(text); }

void Write(sdk::Object* stream, sdk::String* text) { WriteText(stream, Bytes(text)); }
void WriteLine(sdk::Object* stream, sdk::String* text) { WriteText(stream, std::string(Bytes(text)) + '\n'); }
void EndLine(sdk::Object* stream) { WriteText(stream, "\n"); }
void Flush(sdk::Object* stream) { std::fflush(IsError(stream) ? stderr : stdout); }

// --- Functions ------------------------------------------------------------------------------

sdk::Object* NewOutput(bool isError) {
    Ref<Object> stream = NewInstanceOf(outputClass);
    DataOf<OutputData>(stream.get(), outputClass).isError = isError;
    return stream.Detach();
}

sdk::Object* StdOut() { return NewOutput(false); }
sdk::Object* StdErr() { return NewOutput(true); }
sdk::Object* StdIn() { return NewInstanceOf(inputClass).Detach(); }
sdk::String* InputLine() { return ReadLine(nullptr); }

void RegisterInput(Runtime& runtime) {
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"ReadLine as string", Guarded<&ReadLine>>(sdk::kMemberPortable),
        sdk::Method<"ReadAll as string", Guarded<&ReadAll>>(sdk::kMemberPortable),
        sdk::Method<"Read(count as integer) as string", Guarded<&Read>>(sdk::kMemberPortable),
        sdk::Method<"EOF as boolean", Guarded<&AtEnd>>(sdk::kMemberPortable),
    };
    SetMethods(inputClass, methods);
    RegisterOrAbort(runtime, inputClass);
}

void RegisterOutput(Runtime& runtime) {
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"Write(text as string)", Guarded<&Write>>(sdk::kMemberPortable),
        sdk::Method<"WriteLine(text as string)", Guarded<&WriteLine>>(sdk::kMemberPortable),
        sdk::Method<"WriteLine", Guarded<&EndLine>>(sdk::kMemberPortable),
        sdk::Method<"Flush", Guarded<&Flush>>(sdk::kMemberPortable),
    };
    SetMethods(outputClass, methods);
    RegisterOrAbort(runtime, outputClass);
}

}  // namespace

void RegisterStandardStreams(Runtime& runtime) {
    static const sdk::MethodRecord functions[] = {
        sdk::SharedMethod<"StdOut as StandardOutputStream", Guarded<&StdOut>>(sdk::kMemberPortable),
        sdk::SharedMethod<"StdErr as StandardOutputStream", Guarded<&StdErr>>(sdk::kMemberPortable),
        sdk::SharedMethod<"StdIn as StandardInputStream", Guarded<&StdIn>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Input as string", Guarded<&InputLine>>(sdk::kMemberPortable),
    };
    RegisterInput(runtime);
    RegisterOutput(runtime);
    runtime.RegisterFunctions(functions);
}

}  // namespace host
