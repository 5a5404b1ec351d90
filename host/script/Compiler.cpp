// Routines, first values and the program as functions: registers, scopes and constants.
#include "host/script/Compiler.h"

#include <algorithm>
#include <limits>

#include "host/messages/ParserMessages.h"
#include "host/script/FunctionCompiler.h"

namespace script {

namespace {

constexpr int kVariantKind = -1;

// Registers are shared only among values of one kind.
int RegisterKindOf(Type type) {
    if (type.array) return static_cast<int>(host::Kind::Array);
    if (type.base == Base::Variant || type.base == Base::Nil) return kVariantKind;
    return static_cast<int>(KindOf(type.base));
}

}  // namespace

std::size_t FirstField(const ClassSymbol& symbol) {
    return static_cast<std::size_t>(symbol.made->dataOffset()) / sizeof(host::Value);
}

bool HoldsReference(Type type) { return TakesNil(type) || type.base == Base::String; }

std::uint16_t FunctionCompiler::Allocate(Type type) {
    const int kind = RegisterKindOf(type);
    std::vector<std::uint16_t>& free = free_[kind];
    std::uint16_t index = 0;
    if (!free.empty()) {
        index = free.back();
        free.pop_back();
    } else {
        if (function_.prototype.size() >= kMostRegisters) throw FunctionTooLarge();
        index = static_cast<std::uint16_t>(function_.prototype.size());
        function_.prototype.push_back(FirstValueOf(type));
        kinds_.push_back(kind);
        if (HoldsReference(type)) function_.references.push_back(index);
    }
    if (HoldsReference(type)) log_.push_back(index);
    return index;
}

void FunctionCompiler::Release(std::uint16_t index) { free_[kinds_[index]].push_back(index); }

bool FunctionCompiler::IsReference(std::uint16_t index) const {
    const int kind = kinds_[index];
    return kind == kVariantKind || kind == static_cast<int>(host::Kind::String) ||
           kind == static_cast<int>(host::Kind::Array) || kind == static_cast<int>(host::Kind::Object);
}

// A temporary that holds a reference gives it up at once, so that objects go when they should.
void FunctionCompiler::Free(Operand operand) {
    if (!operand.temporary) return;
    if (IsReference(operand.index)) Emit(Op::Clear, operand.index);
    Release(operand.index);
}

Operand FunctionCompiler::Constant(Type type, host::Value value) {
    const int kind = RegisterKindOf(type);
    const auto key = std::make_pair(kind, value.bits());
    const auto found = constants_.find(key);
    if (found != constants_.end()) return {found->second, false};
    if (function_.prototype.size() >= kMostRegisters) throw FunctionTooLarge();
    const auto index = static_cast<std::uint16_t>(function_.prototype.size());
    function_.prototype.push_back(std::move(value));
    kinds_.push_back(kind);
    constants_[key] = index;
    return {index, false};
}

// The first texts of a function are constants too; more would make its frames large. False for one more.
bool FunctionCompiler::TextConstant(const std::string& text, Operand& constant) {
    constexpr std::size_t kMostTexts = 32;
    const auto known = textConstants_.find(text);
    if (known == textConstants_.end() && textConstants_.size() == kMostTexts) return false;
    constant = known == textConstants_.end() ? Constant(kStringType, host::Value(text)) : known->second;
    textConstants_.emplace(text, constant);
    return true;
}

std::size_t FunctionCompiler::Emit(Op op, std::uint16_t a, std::uint16_t b, std::uint16_t c) {
    function_.code.push_back({op, a, b, c});
    function_.positions.push_back(at_);
    return function_.code.size() - 1;
}

std::size_t FunctionCompiler::EmitNumber(Op op, std::uint16_t a, std::size_t number) {
    return Emit(op, a, static_cast<std::uint16_t>(number & 0xFFFF), static_cast<std::uint16_t>(number >> 16));
}

void FunctionCompiler::LandAt(const JumpList& list, std::size_t target) {
    for (const std::size_t at : list) {
        function_.code[at].b = static_cast<std::uint16_t>(target & 0xFFFF);
        function_.code[at].c = static_cast<std::uint16_t>(target >> 16);
    }
}

std::uint16_t FunctionCompiler::TypeIndex(Type type) {
    for (std::size_t i = 0; i < function_.types.size(); ++i)
        if (function_.types[i].type == type) return static_cast<std::uint16_t>(i);
    if (function_.types.size() >= kMostRegisters) throw FunctionTooLarge();
    function_.types.push_back({type, ToHost(type), nullptr});
    return static_cast<std::uint16_t>(function_.types.size() - 1);
}

std::uint16_t FunctionCompiler::DeclareVariable(Variable& variable) {
    variable.index = Allocate(variable.type);
    scopes_.back().push_back(variable.index);
    return variable.index;
}

void FunctionCompiler::CloseScope() {
    ClearScopes(scopes_.size() - 1);
    for (const std::uint16_t index : scopes_.back()) Release(index);
    scopes_.pop_back();
}

// Variables whose scopes are left give up what they hold.
void FunctionCompiler::ClearScopes(std::size_t downTo) {
    for (std::size_t depth = scopes_.size(); depth > downTo; --depth) {
        for (const std::uint16_t index : scopes_[depth - 1])
            if (IsReference(index)) Emit(Op::Clear, index);
    }
}

void FunctionCompiler::Finish() {
    EmitReturnNothing();
    function_.ready = true;
}

void FunctionCompiler::CompileMain(Program& program) {
    function_.name = "the program";
    for (Variable* global : symbols_.globals) global->index = Allocate(global->type);
    OpenScope();
    // Shared properties have their values before the first statement.
    for (ClassSymbol* symbol : symbols_.scriptClasses) {
        for (FieldSymbol* field : symbol->ownFields) {
            if (!field->shared || field->declaration->constant) continue;
            at_ = field->declaration->declarator.at;
            CompileFirstValue(field->declaration->declarator, field->type, field->shared->index);
        }
    }
    CompileStatements(program.body);
    Finish();
}

void FunctionCompiler::CompileStep(Program& program, const std::vector<ClassSymbol*>& classes) {
    function_.name = "the program";
    OpenScope();
    for (ClassSymbol* symbol : classes)
        for (FieldSymbol* field : symbol->ownFields) {
            if (!field->shared || field->declaration->constant) continue;
            at_ = field->declaration->declarator.at;
            CompileGlobal(field->declaration->declarator, *field->shared);
        }
    CompileStatements(program.body);
    Finish();
}

void FunctionCompiler::CompileRoutine(RoutineSymbol& routine) {
    function_.routine = &routine;
    function_.name = routine.owner ? routine.owner->name + "." + routine.signature.name : routine.signature.name;
    OpenScope();
    if (routine.HasReceiver()) {
        self_ = Allocate({Base::Object, false, routine.owner});
        function_.parameters.push_back(self_);
    }
    for (Variable* parameter : routine.parameterVariables) {
        const bool byRef = parameter->storage == Storage::ByRef;
        parameter->index = Allocate(byRef ? kVariantType : parameter->type);
        function_.parameters.push_back(parameter->index);
    }
    CompileStatements(routine.declaration->body);
    // A function that ends without Return gives its type's first value.
    if (routine.signature.result != kNoType) EmitDefaultReturn();
    Finish();
}

void FunctionCompiler::EmitDefaultReturn() {
    const std::uint16_t result = Allocate(function_.routine->signature.result);
    Emit(Op::Clear, result);
    Emit(Op::Return, result);
    Release(result);
}

void FunctionCompiler::CompileInitializer(ClassSymbol& symbol) {
    function_.name = symbol.name;
    OpenScope();
    const Type type{Base::Object, false, &symbol};
    self_ = Allocate(type);
    function_.parameters.push_back(self_);
    for (FieldSymbol* field : symbol.ownFields) {
        Declarator& declarator = field->declaration->declarator;
        if (field->shared || (!declarator.value && !field->type.array)) continue;
        at_ = declarator.at;
        const Operand value = Temporary(field->type);
        CompileFirstValue(declarator, field->type, value.index);
        Emit(HoldsReference(field->type) ? Op::StoreField : Op::StoreFieldBits, self_, value.index,
             FieldOffset(symbol, field->slot));
        Free(value);
    }
    Finish();
}

namespace {

// Classes whose fields need more than zeros.
bool NeedsInitializer(const ClassSymbol& symbol) {
    return std::any_of(symbol.ownFields.begin(), symbol.ownFields.end(), [](const FieldSymbol* field) {
        return !field->shared && (field->declaration->declarator.value || field->type.array);
    });
}

// A class whose fields can't all be told apart by an instruction's number.
bool HasTooManyFields(const ClassSymbol& symbol) {
    constexpr std::size_t kMost = std::numeric_limits<std::uint16_t>::max();
    return FirstField(symbol) + symbol.made->slotDefaults().size() > kMost;
}

void RefuseLargeClasses(const std::vector<ClassSymbol*>& classes, Diagnostics& diagnostics) {
    for (const ClassSymbol* symbol : classes)
        if (HasTooManyFields(*symbol))
            diagnostics.Add(symbol->declaration->at, kSourceSays.tooManyProperties(symbol->name));
}

template <class Body>
void CompileOne(Position at, const std::string& name, Diagnostics& diagnostics, const Body& body) {
    try {
        body();
    } catch (const FunctionTooLarge&) {
        diagnostics.Add(at, kSourceSays.tooManyValues(name));
    }
}

// The routines and first values that are not compiled yet. Functions that call each other must all
// be there before the first is compiled.
class Pending {
  public:
    Pending(Symbols& symbols, const std::vector<ClassSymbol*>& classes, Code& code) : symbols_(symbols) {
        for (RoutineSymbol& routine : symbols.AllRoutines())
            if (!routine.code) {
                routine.code = &code.functions.emplace_back();
                routines_.push_back(&routine);
            }
        for (ClassSymbol* symbol : classes)
            if (NeedsInitializer(*symbol)) {
                symbol->initializer = &code.functions.emplace_back();
                classes_.push_back(symbol);
            }
    }

    void Compile(Diagnostics& diagnostics) {
        for (ClassSymbol* symbol : classes_)
            CompileOne(symbol->declaration->at, symbol->name, diagnostics,
                       [&] { FunctionCompiler(symbols_, *symbol->initializer, false).CompileInitializer(*symbol); });
        for (RoutineSymbol* routine : routines_)
            CompileOne(routine->declaration->at, routine->signature.name, diagnostics,
                       [&] { FunctionCompiler(symbols_, *routine->code, false).CompileRoutine(*routine); });
    }

  private:
    Symbols& symbols_;
    std::vector<RoutineSymbol*> routines_;
    std::vector<ClassSymbol*> classes_;
};

}  // namespace

void Compile(Program& program, Symbols& symbols, Code& code, Diagnostics& diagnostics) {
    RefuseLargeClasses(symbols.scriptClasses, diagnostics);
    if (diagnostics.HasErrors()) return;
    code.main = &code.functions.emplace_back();
    Pending pending(symbols, symbols.scriptClasses, code);
    CompileOne({1, 1}, "the program", diagnostics,
               [&] { FunctionCompiler(symbols, *code.main, true).CompileMain(program); });
    pending.Compile(diagnostics);
}

void PrepareSteps(Code& code) {
    code.globals = &code.functions.emplace_back();
    code.globals->name = "the program";
    code.globals->code.push_back({Op::ReturnNothing, 0, 0, 0});
    code.globals->positions.push_back({});
}

void CompileStep(Program& program, Symbols& symbols, const std::vector<ClassSymbol*>& before, Code& code,
                 Diagnostics& diagnostics) {
    std::vector<ClassSymbol*> classes;
    for (ClassSymbol* symbol : symbols.scriptClasses)
        if (std::find(before.begin(), before.end(), symbol) == before.end()) classes.push_back(symbol);
    RefuseLargeClasses(classes, diagnostics);
    if (diagnostics.HasErrors()) return;
    Function& globals = *code.globals;
    for (std::size_t i = globals.prototype.size(); i < symbols.globals.size(); ++i) {
        Variable& variable = *symbols.globals[i];
        variable.index = static_cast<std::uint16_t>(i);
        if (HoldsReference(variable.type)) globals.references.push_back(variable.index);
        globals.prototype.push_back(FirstValueOf(variable.type));
    }
    code.main = &code.functions.emplace_back();
    Pending pending(symbols, classes, code);
    CompileOne({1, 1}, "the program", diagnostics,
               [&] { FunctionCompiler(symbols, *code.main, false).CompileStep(program, classes); });
    pending.Compile(diagnostics);
}

void ForgetStep(Code& code, std::size_t globals) {
    code.globals->prototype.resize(std::min(globals, code.globals->prototype.size()));
    std::erase_if(code.globals->references, [&](std::uint16_t index) { return index >= globals; });
}

}  // namespace script
