// Instructions that may raise: conversions, texts, variants, new objects.
#include "host/calls/Call.h"
#include "host/messages/RunningMessages.h"
#include "host/script/Machine.h"
#include "host/script/MachineAccess.h"
#include "host/script/Values.h"

namespace script {

using host::Value;

void ThrowNoObject() { Throw(host::kScriptRaises.propertyOfNil()); }

host::Ref<host::Object> Machine::Raising(const Value& exception) {
    if (!exception.object()) Throw(host::kScriptRaises.nilRaised());
    raising_ = true;
    return host::Ref<host::Object>::Share(exception.object());
}

// Most often the text is still what it was: with that given up nobody else holds it.
void GrowText(Value& text, Value* before, const Value& more) {
    if (before && before->string() != text.string()) {
        text = ConcatenateTexts(*before, more);
        return;
    }
    if (before) *before = Value(host::Ref<host::String>());
    AppendText(text, more);
}

void Machine::Perform(Instruction instruction, const Function& function, Value* r, const Instruction* next) {
    Value* a = &r[instruction.a];
    switch (instruction.op) {
        case Op::ConvertValue: {
            Value converted = ConvertValue(r[instruction.b], function.types[instruction.c]);
            CheckRaised();
            *a = std::move(converted);
            return;
        }
        case Op::Cast:
            *a = CastObject(r[instruction.b], function.types[instruction.c]);
            return;
        case Op::TextOf:
            *a = Value(TextOfValue(r[instruction.b]));
            return;
        case Op::IsA:
            a->bits() = IsInstance(r[instruction.b], function.types[instruction.c]);
            return;
        case Op::CallSetter:
            return CallSetter(instruction, function, r);
        case Op::SetProperty:
            return SetProperty(instruction, function, r);
        case Op::NewObject:
            return NewObject(instruction, function, r);
        case Op::Handle:
            return AddHandler(instruction, function, r);
        case Op::MakeArray:
            return MakeArray(instruction, function, r);
        case Op::Concatenate:
            *a = ConcatenateTexts(r[instruction.b], r[instruction.c]);
            return;
        case Op::GrowField:
            return GrowText(FieldOf(*a, instruction.c), BeforeIn(r, next->a), r[instruction.b]);
        case Op::ColorPart:
            a->bits() = r[instruction.b].bits() >> instruction.c & 0xFF;
            return;
        case Op::VariantOperation:
            *a = VariantArithmetic(static_cast<Operator>(next->a), r[instruction.b], r[instruction.c]);
            return;
        case Op::VariantCompare:
            a->bits() = VariantComparison(static_cast<Operator>(next->a), r[instruction.b], r[instruction.c]);
            return;
        case Op::Print:
            return Print(a->text());
        case Op::Quit:
            throw Terminated{static_cast<int>(a->bits())};
        default:
            return PerformArray(instruction, function, r);
    }
}

}  // namespace script
