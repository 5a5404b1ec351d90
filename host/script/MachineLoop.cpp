// The instruction loop. Numbers, jumps and calls are worked on here; whatever may raise for other
// reasons is done by Perform.
#include <algorithm>
#include <cmath>

#include "host/messages/RunningMessages.h"
#include "host/script/Arithmetic.h"
#include "host/script/Machine.h"
#include "host/script/MachineAccess.h"
#include "host/script/Place.h"
#include "host/script/Values.h"

namespace script {

namespace {

using host::Value;

std::int32_t Narrow(const Value& value) { return static_cast<std::int32_t>(value.bits()); }
std::uint32_t Unsigned(const Value& value) { return static_cast<std::uint32_t>(value.bits()); }

std::uint64_t Wide(const Value& value) { return static_cast<std::uint64_t>(value.bits()); }

[[noreturn]] void ThrowDivision() { Throw(host::kScriptRaises.division()); }

std::int64_t NonZero(std::int64_t divisor) {
    if (divisor == 0) ThrowDivision();
    return divisor;
}

// One step of a loop's variable; false, with the variable as it was, when it would leave its type.
bool Step(Value& variable, std::int64_t step, std::int64_t lowest, std::int64_t highest) {
    std::int64_t next = 0;
    if (__builtin_add_overflow(variable.bits(), step, &next) || next < lowest || next > highest) return false;
    variable.bits() = next;
    return true;
}

bool StepIn(Value& variable, const Value& step, host::Kind kind) {
    return Step(variable, step.bits(), host::LowestOf(kind), static_cast<std::int64_t>(host::HighestOf(kind)));
}

// The same for a UInt64, up or down.
bool StepWide(Value& variable, std::int64_t step) {
    const std::uint64_t next = Wide(variable) + static_cast<std::uint64_t>(step);
    if (step < 0 ? next >= Wide(variable) : next < Wide(variable)) return false;
    variable.bits() = static_cast<std::int64_t>(next);
    return true;
}

}  // namespace

// After whatever may have let go of an object: an exception out of its destructor takes effect here.
inline void Machine::HeedDestructors() {
    if (AttentionWanted()) CheckAttention();
}

// Longer than anything else here: one line an instruction.
// clang-format off
void Machine::Loop(std::size_t floor) {
    Frame* frame = &frames_.back();
    const Instruction* pc = frame->next;
    Value* r = frame->registers;
    for (;;) {
        const Instruction i = *pc++;
        frame->next = pc;
        switch (i.op) {
            case Op::MoveBits: r[i.a].bits() = r[i.b].bits(); break;
            case Op::Move: r[i.a] = r[i.b]; HeedDestructors(); break;
            case Op::LoadText: r[i.a] = frame->function->texts[i.Number()]; break;
            case Op::Clear: r[i.a] = frame->function->prototype[i.a]; HeedDestructors(); break;
            case Op::LoadGlobalBits: r[i.a].bits() = globals_[i.Number()].bits(); break;
            case Op::LoadGlobal: r[i.a] = globals_[i.Number()]; HeedDestructors(); break;
            case Op::StoreGlobalBits: globals_[i.Number()].bits() = r[i.a].bits(); break;
            case Op::StoreGlobal: globals_[i.Number()] = r[i.a]; HeedDestructors(); break;
            case Op::LoadRef:
                if (const Value* variable = VariableBehind(r[i.b]))
                    r[i.a] = *variable;
                else
                    LoadPlace(r[i.b], r[i.a]);
                HeedDestructors();
                break;
            case Op::StoreRef:
                if (Value* variable = VariableBehind(r[i.a]))
                    *variable = r[i.b];
                else
                    StorePlace(r[i.a], r[i.b]);
                HeedDestructors();
                break;
            case Op::RefLocal: r[i.a] = ReferenceTo(r[i.b]); break;
            case Op::RefGlobal: r[i.a] = ReferenceTo(globals_[i.Number()]); break;
            case Op::RefField: FieldOf(r[i.b], i.c); r[i.a] = ReferenceToField(r[i.b], i.c); break;
            case Op::RefElement:
                ElementOf(r[i.b], r[i.c].bits());
                r[i.a] = ReferenceToElement(r[i.b], r[i.c].bits());
                break;
            case Op::RefProperty: MakePropertyReference(i, *frame->function, r); break;
            case Op::LoadFieldBits: r[i.a].bits() = FieldOf(r[i.b], i.c).bits(); break;
            case Op::LoadField: r[i.a] = Value(FieldOf(r[i.b], i.c)); HeedDestructors(); break;
            case Op::StoreFieldBits: FieldOf(r[i.a], i.c).bits() = r[i.b].bits(); break;
            case Op::StoreField: { std::exchange(FieldOf(r[i.a], i.c), r[i.b]); HeedDestructors(); break; }
            case Op::LoadElementBits: r[i.a].bits() = ElementOf(r[i.b], r[i.c].bits()).bits(); break;
            case Op::LoadElement: r[i.a] = Value(ElementOf(r[i.b], r[i.c].bits())); HeedDestructors(); break;
            case Op::StoreElementBits: ElementOf(r[i.a], r[i.b].bits()).bits() = r[i.c].bits(); break;
            case Op::StoreElement: { std::exchange(ElementOf(r[i.a], r[i.b].bits()), r[i.c]); HeedDestructors(); break; }

            case Op::AddI: r[i.a].bits() = WrapAdd(Narrow(r[i.b]), Narrow(r[i.c])); break;
            case Op::SubtractI: r[i.a].bits() = WrapSubtract(Narrow(r[i.b]), Narrow(r[i.c])); break;
            case Op::MultiplyI: r[i.a].bits() = WrapMultiply(Narrow(r[i.b]), Narrow(r[i.c])); break;
            case Op::DivideI:
                r[i.a].bits() = WrapDivide(Narrow(r[i.b]), static_cast<std::int32_t>(NonZero(r[i.c].bits())));
                break;
            case Op::ModuloI:
                r[i.a].bits() = WrapModulo(Narrow(r[i.b]), static_cast<std::int32_t>(NonZero(r[i.c].bits())));
                break;
            case Op::AddL: r[i.a].bits() = WrapAdd(r[i.b].bits(), r[i.c].bits()); break;
            case Op::SubtractL: r[i.a].bits() = WrapSubtract(r[i.b].bits(), r[i.c].bits()); break;
            case Op::MultiplyL: r[i.a].bits() = WrapMultiply(r[i.b].bits(), r[i.c].bits()); break;
            case Op::DivideL: r[i.a].bits() = WrapDivide(r[i.b].bits(), NonZero(r[i.c].bits())); break;
            case Op::ModuloL: r[i.a].bits() = WrapModulo(r[i.b].bits(), NonZero(r[i.c].bits())); break;
            case Op::AddU: r[i.a].bits() = WrapAdd(Unsigned(r[i.b]), Unsigned(r[i.c])); break;
            case Op::SubtractU: r[i.a].bits() = WrapSubtract(Unsigned(r[i.b]), Unsigned(r[i.c])); break;
            case Op::MultiplyU: r[i.a].bits() = WrapMultiply(Unsigned(r[i.b]), Unsigned(r[i.c])); break;
            case Op::DivideU: r[i.a].bits() = r[i.b].bits() / NonZero(r[i.c].bits()); break;
            case Op::ModuloU: r[i.a].bits() = r[i.b].bits() % NonZero(r[i.c].bits()); break;
            case Op::DivideW: r[i.a].bits() = static_cast<std::int64_t>(Wide(r[i.b]) / static_cast<std::uint64_t>(NonZero(r[i.c].bits()))); break;
            case Op::ModuloW: r[i.a].bits() = static_cast<std::int64_t>(Wide(r[i.b]) % static_cast<std::uint64_t>(NonZero(r[i.c].bits()))); break;
            case Op::AddD: r[i.a].real() = r[i.b].real() + r[i.c].real(); break;
            case Op::SubtractD: r[i.a].real() = r[i.b].real() - r[i.c].real(); break;
            case Op::MultiplyD: r[i.a].real() = r[i.b].real() * r[i.c].real(); break;
            case Op::DivideD: r[i.a].real() = Quotient(r[i.b].real(), r[i.c].real()); break;
            case Op::PowerD: r[i.a].real() = std::pow(r[i.b].real(), r[i.c].real()); break;
            case Op::And: r[i.a].bits() = r[i.b].bits() & r[i.c].bits(); break;
            case Op::Or: r[i.a].bits() = r[i.b].bits() | r[i.c].bits(); break;
            case Op::Xor: r[i.a].bits() = r[i.b].bits() ^ r[i.c].bits(); break;
            case Op::NegateI: r[i.a].bits() = WrapNegate(Narrow(r[i.b])); break;
            case Op::NegateL: r[i.a].bits() = WrapNegate(r[i.b].bits()); break;
            case Op::NegateD: r[i.a].real() = -r[i.b].real(); break;
            case Op::NotWhole: r[i.a].bits() = host::WrapTo(~r[i.b].bits(), static_cast<host::Kind>(i.c)); break;
            case Op::NotBoolean: r[i.a].bits() = r[i.b].bits() == 0; break;

            case Op::EqualI: r[i.a].bits() = r[i.b].bits() == r[i.c].bits(); break;
            case Op::NotEqualI: r[i.a].bits() = r[i.b].bits() != r[i.c].bits(); break;
            case Op::LessI: r[i.a].bits() = r[i.b].bits() < r[i.c].bits(); break;
            case Op::LessOrEqualI: r[i.a].bits() = r[i.b].bits() <= r[i.c].bits(); break;
            case Op::LessW: r[i.a].bits() = Wide(r[i.b]) < Wide(r[i.c]); break;
            case Op::LessOrEqualW: r[i.a].bits() = Wide(r[i.b]) <= Wide(r[i.c]); break;
            case Op::EqualD: r[i.a].bits() = r[i.b].real() == r[i.c].real(); break;
            case Op::NotEqualD: r[i.a].bits() = r[i.b].real() != r[i.c].real(); break;
            case Op::LessD: r[i.a].bits() = r[i.b].real() < r[i.c].real(); break;
            case Op::LessOrEqualD: r[i.a].bits() = r[i.b].real() <= r[i.c].real(); break;
            case Op::EqualText: r[i.a].bits() = EqualTexts(r[i.b], r[i.c]); break;
            case Op::NotEqualText: r[i.a].bits() = !EqualTexts(r[i.b], r[i.c]); break;
            case Op::LessText: r[i.a].bits() = CompareTexts(r[i.b], r[i.c]) < 0; break;
            case Op::LessOrEqualText: r[i.a].bits() = CompareTexts(r[i.b], r[i.c]) <= 0; break;
            case Op::Same: r[i.a].bits() = r[i.b].bits() == r[i.c].bits(); break;
            case Op::NotSame: r[i.a].bits() = r[i.b].bits() != r[i.c].bits(); break;

            case Op::ToByte: r[i.a].bits() = static_cast<std::uint8_t>(r[i.b].bits()); break;
            case Op::ToInteger: r[i.a].bits() = Narrow(r[i.b]); break;
            case Op::ToWhole: r[i.a].bits() = host::WrapTo(r[i.b].bits(), static_cast<host::Kind>(i.c)); break;
            case Op::WholeToDouble: r[i.a].real() = static_cast<double>(r[i.b].bits()); break;
            case Op::WholeToSingle: r[i.a].real() = static_cast<float>(r[i.b].bits()); break;
            case Op::WideToDouble: r[i.a].real() = static_cast<double>(Wide(r[i.b])); break;
            case Op::WideToSingle: r[i.a].real() = static_cast<float>(Wide(r[i.b])); break;
            case Op::DoubleToInteger: r[i.a].bits() = host::TruncateToInt32(r[i.b].real()); break;
            case Op::DoubleToByte: r[i.a].bits() = std::clamp(host::TruncateToInt32(r[i.b].real()), 0, 255); break;
            case Op::DoubleToWhole: r[i.a].bits() = host::CutTo(r[i.b].real(), static_cast<host::Kind>(i.c)); break;
            case Op::DoubleToSingle: r[i.a].real() = static_cast<float>(r[i.b].real()); break;

            case Op::Jump: pc = frame->function->code.data() + i.Number(); break;
            case Op::Loop:
                HeedDestructors();
                pc = frame->function->code.data() + i.Number();
                break;
            case Op::JumpIf: if (r[i.a].bits()) pc = frame->function->code.data() + i.Number(); break;
            case Op::JumpUnless: if (!r[i.a].bits()) pc = frame->function->code.data() + i.Number(); break;
            case Op::TestEqualI: pc += r[i.a].bits() == r[i.b].bits(); break;
            case Op::TestNotEqualI: pc += r[i.a].bits() != r[i.b].bits(); break;
            case Op::TestLessI: pc += r[i.a].bits() < r[i.b].bits(); break;
            case Op::TestLessOrEqualI: pc += r[i.a].bits() <= r[i.b].bits(); break;
            case Op::TestEqualD: pc += r[i.a].real() == r[i.b].real(); break;
            case Op::TestNotEqualD: pc += r[i.a].real() != r[i.b].real(); break;
            case Op::TestLessD: pc += r[i.a].real() < r[i.b].real(); break;
            case Op::TestLessOrEqualD: pc += r[i.a].real() <= r[i.b].real(); break;
            case Op::TestForI:
                pc += r[i.c].bits() < 0 ? r[i.a].bits() >= r[i.b].bits() : r[i.a].bits() <= r[i.b].bits();
                break;
            case Op::TestLessOrEqualW: pc += Wide(r[i.a]) <= Wide(r[i.b]); break;
            case Op::TestForW:
                pc += r[i.c].bits() < 0 ? Wide(r[i.a]) >= Wide(r[i.b]) : Wide(r[i.a]) <= Wide(r[i.b]);
                break;
            case Op::TestForD:
                pc += r[i.c].real() < 0 ? r[i.a].real() >= r[i.b].real() : r[i.a].real() <= r[i.b].real();
                break;
            case Op::StepI: pc += StepIn(r[i.a], r[i.b], host::Kind::Integer); break;
            case Op::StepL: pc += StepIn(r[i.a], r[i.b], host::Kind::Int64); break;
            case Op::StepW: pc += StepWide(r[i.a], r[i.b].bits()); break;
            case Op::StepWhole: pc += StepIn(r[i.a], r[i.b], static_cast<host::Kind>(i.c)); break;
            case Op::StepSingle: r[i.a].real() = static_cast<float>(r[i.a].real() + r[i.b].real()); ++pc; break;
            case Op::StepD: r[i.a].real() += r[i.b].real(); ++pc; break;

            case Op::Call:
            case Op::CallVirtual: {
                HeedDestructors();
                EnterCall(i, *frame->function, r);
                frame = &frames_.back();
                pc = frame->next;
                r = frame->registers;
                break;
            }
            case Op::CallDelegate:
                HeedDestructors();
                EnterDelegate(i, *frame->function, r);
                frame = &frames_.back();
                pc = frame->next;
                r = frame->registers;
                break;
            case Op::Return:
                if (frame->result) *frame->result = r[i.a];
                [[fallthrough]];
            case Op::ReturnNothing:
                PopFrame();
                if (frames_.size() == floor) return;
                frame = &frames_.back();
                pc = frame->next;
                r = frame->registers;
                HeedDestructors();
                break;
            case Op::Raise:
                // To a handler of this run it is a jump; only further out it travels as a C++ exception.
                if (!Unwind(floor, Raising(r[i.a]))) throw host::Raised{failure_.exception};
                frame = &frames_.back();
                pc = frame->next;
                r = frame->registers;
                break;
            case Op::CallQuick: {
                const CallSite& site = frame->function->sites[i.Number()];
                if (!CallQuick(site, r, i.a)) CallNative(i, *frame->function, r);
                HeedDestructors();
                break;
            }
            case Op::CallNative: CallNative(i, *frame->function, r); HeedDestructors(); break;
            case Op::GetProperty: GetProperty(i, *frame->function, r); HeedDestructors(); break;
            case Op::Grow: GrowText(r[i.a], BeforeIn(r, i.b), r[i.c]); break;
            case Op::GrowGlobal: GrowText(globals_[i.a], BeforeIn(r, i.b), r[i.c]); break;
            case Op::End:
                return;
            default:
                Perform(i, *frame->function, r, pc);
                pc += i.op == Op::VariantOperation || i.op == Op::VariantCompare || i.op == Op::GrowField;
                HeedDestructors();
                break;
        }
    }
}
// clang-format on

}  // namespace script
