// A prompt: lines run as they are typed, and what they are worth is told and shown.
#include <unistd.h>

#include <cstdlib>

#include "host/calls/Call.h"
#include "host/calls/Runtime.h"
#include "host/framework/Output.h"
#include "host/framework/PictureFiles.h"
#include "host/framework/RowTransfer.h"
#include "host/script/OpenBlocks.h"
#include "host/script/Session.h"
#include "platform/ScratchFiles.h"
#include "tqx/Commands.h"
#include "tqx/LineEditor.h"
#include "tqx/Output.h"
#include "tqx/PluginFiles.h"
#include "tqx/Signals.h"

namespace tqx {

namespace {

// A whole number that a property of an object holds; -1 without such a property.
std::int64_t NumberOf(host::Object* object, std::string_view name) {
    const host::Property* const property = object->type->FindProperty(name);
    return property && property->readable() ? host::GetProperty(*property, object).ToInt64() : -1;
}

bool HasSize(host::Object* object) { return NumberOf(object, "Width") >= 0 && NumberOf(object, "Height") >= 0; }

std::string TextOf(const host::Value& value) {
    std::string text = host::Describe(value);
    host::Object* const object = value.kind() == host::Kind::Object ? value.object() : nullptr;
    if (object && HasSize(object))
        text += ", " + std::to_string(NumberOf(object, "Width")) + " × " + std::to_string(NumberOf(object, "Height"));
    return text;
}

void Save(host::Object* picture, const std::string& path) {
    const host::ImageWriteOptions options{host::ImageFileFormat::Png, std::nullopt};
    if (host::IsA(picture, host::Runtime::Get().ClassNamed("Picture")))
        host::WritePicture(picture, path, options);
    else
        host::WriteFileFrom(path, picture, options);
}

// Shows whatever can be saved as a picture; nothing for other objects.
void ShowObject(host::Object* object) {
    std::string file = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") + "/tqx-shown-XXXXXX";
    platform::ScratchName name;
    const int descriptor = platform::MakeScratchFile(file, name);
    if (descriptor < 0) return;
    close(descriptor);
    try {
        Save(object, file);
        ShowPicture(file);
    } catch (const host::ImageError&) {
    } catch (const host::Raised&) {
    }
    unlink(file.c_str());
}

void ShowValue(const host::Value& value, bool onTerminal) {
    WriteLine(TextOf(value));
    host::Object* const object = value.kind() == host::Kind::Object ? value.object() : nullptr;
    if (object && onTerminal && HasSize(object)) ShowObject(object);
}

// Reads lines as long as blocks are open. False at the end of the input.
bool ReadStep(LineEditor& editor, std::string& lines) {
    lines.clear();
    for (std::string line; lines.empty() || script::WantsMoreLines(lines);) {
        switch (editor.Read(lines.empty() ? "tqx> " : "...> ", line)) {
            case LineEditor::Outcome::End:
                return !lines.empty();
            case LineEditor::Outcome::Cancelled:
                lines.clear();
                break;
            case LineEditor::Outcome::Line:
                lines += line + '\n';
        }
    }
    return true;
}

}  // namespace

int Repl(const Settings& settings) {
    if (!LoadPlugin(settings)) return 1;
    NotePluginFiles();
    int exitCode = 0;
    {
        script::Session session([](std::string_view line) { WriteLine(line); }, &Complain, &host::WriteStandardOutput);
        LineEditor editor([&session](std::string_view line) { return session.Completions(line); });
        HandleSignals(editor.Interactive() ? InterruptEnds::Step : InterruptEnds::Script);
        if (editor.Interactive()) WriteLine("The value of a line is shown. Tab completes names, Ctrl-D leaves.");
        for (std::string lines; !EndIsAsked() && ReadStep(editor, lines);) {
            const script::StepResult result = session.Run(lines);
            if (result.hasValue) ShowValue(result.value, editor.Interactive());
            if (!result.ended) continue;
            exitCode = result.exitCode;
            break;
        }
    }
    return EndAfterSignals(exitCode);
}

}  // namespace tqx
