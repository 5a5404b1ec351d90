// Draws statement by statement, with the arguments that checks use and wilder ones.
#include "host/check/Program.h"

#include <algorithm>

#include "host/calls/Declaration.h"
#include "host/calls/Runtime.h"

namespace host::check {

namespace {

constexpr int kVariables = 4;        // of each class
constexpr int kWildOf = 12;          // constructions, of which one gets any numbers, also huge ones
constexpr int kHandlerDepth = 3;     // handlers within handlers
constexpr int kHandlerBudget = 100;  // of all calls of handlers: a handler may be called by what it calls
constexpr std::int32_t kSizes = 24;  // of usual pictures, below this

bool IsConstructor(const Method& method) { return SameName(method.declaration.name, "Constructor"); }

// Lines in a scope of their own, whose exceptions end with it.
std::string Guarded(const std::string& lines) {
    return "Try\n" + lines + "Catch problem As RuntimeException\nEnd Try\n";
}

class ProgramMaker {
  public:
    ProgramMaker(const Supply& supply, Random random) : supply_(supply), random_(std::move(random)) {}

    RandomProgram Make(int statementCount) {
        RandomProgram program;
        for (const Class* type : supply_.classes) program.head += BareClass(*type) + HandlingClass(*type);
        program.head +=
            "Class FiringTimer\n  Inherits Timer\n  Event Action()\n" + HandlerBody() + "  End Event\nEnd Class\n";
        program.head += "Dim depth As Integer\nDim budget As Integer = " + std::to_string(kHandlerBudget) +
                        "\nDim clock As New FiringTimer\n";
        for (const Class* type : supply_.classes)
            for (int i = 0; i < kVariables; ++i)
                program.head += "Dim " + VariableOf(*type, i) + " As " + type->name() + "\n";
        for (const Class* type : supply_.classes)
            for (int i = 0; i < kVariables; ++i)
                program.statements.push_back(Guarded(Construction(*type, VariableOf(*type, i))));
        while (static_cast<int>(program.statements.size()) < statementCount)
            program.statements.push_back(Guarded(Statement()));
        program.tail = Tail();
        return program;
    }

  private:
    std::size_t Below(std::size_t count) { return random_() % count; }
    bool OneOf(std::size_t count) { return Below(count) == 0; }

    template <class Container>
    const auto& AnyOf(const Container& container) {
        return container[Below(container.size())];
    }

    std::string VariableOf(const Class& type, int number) const { return "the" + type.name() + std::to_string(number); }
    std::string AnyVariable(const Class& type) { return VariableOf(type, static_cast<int>(Below(kVariables))); }

    // --- Classes ---------------------------------------------------------------------------------

    // Whose constructor does not call the plug-in's.
    static std::string BareClass(const Class& type) {
        return "Class Bare" + type.name() + "\n  Inherits " + type.name() +
               "\n  Sub Constructor()\n  End Sub\nEnd Class\n";
    }

    std::string HandlingClass(const Class& type) {
        if (type.events().empty()) return "";
        std::string text = "Class Handling" + type.name() + "\n  Inherits " + type.name() + "\n";
        for (const Event& event : type.events()) {
            text += "  Event " + DeclarationText(event.declaration) + "\n" + HandlerBody();
            if (event.declaration.result.kind != Kind::None)
                text += "    Return " + Result(event.declaration.result) + "\n";
            text += "  End Event\n";
        }
        return text + "End Class\n";
    }

    std::string HandlerBody() {
        return "    If depth < " + std::to_string(kHandlerDepth) +
               " And budget > 0 Then\n    depth = depth + 1\n    budget = budget - 1\n" + Guarded(Statement()) +
               "    depth = depth - 1\n    End If\n";
    }

    std::string Result(const Type& type) {
        const Class* own = OwnClass(type);
        if (!own) return Literal(DefaultOf(type)).text;
        if (OneOf(4)) return "nil";
        return OneOf(2) ? AnyVariable(*own) : NewText(*own);
    }

    // --- Values ------------------------------------------------------------------------------------

    const Class* OwnClass(const Type& type) const {
        if (type.kind != Kind::Object) return nullptr;
        for (const Class* own : supply_.classes)
            if (SameName(own->name(), type.className)) return own;
        return nullptr;
    }

    Expression Argument(const Parameter& parameter, std::size_t position, const Class& owner) {
        if (const Class* own = OwnClass(parameter.type)) {
            if (OneOf(5)) return Literal(Value(nullptr));
            return {AnyVariable(*own), "", nullptr};
        }
        return Drawn(parameter, ChoicesFor(parameter, position, owner, supply_), random_);
    }

    // Of a constructor: a picture that can be had, most of the time.
    Expression Size(const Parameter& parameter, std::size_t position, const Class& owner) {
        Choices choices = ChoicesFor(parameter, position, owner, supply_);
        if (parameter.type.kind != Kind::Integer) return AnyOf(choices.usual);
        if (choices.usual.size() > 1 && !OneOf(4)) return AnyOf(choices.usual);
        return Literal(Value(static_cast<std::int32_t>(Below(kSizes))));
    }

    std::vector<Expression> Arguments(const Declaration& declaration, const Class& owner, bool constructor) {
        const bool wild = !constructor || OneOf(kWildOf);
        std::vector<Expression> arguments;
        bool describesBlock = false;
        for (const Parameter& parameter : declaration.parameters)
            describesBlock |= constructor && SameName(parameter.type.className, "MemoryBlock");
        for (std::size_t i = 0; i < declaration.parameters.size(); ++i) {
            const Parameter& parameter = declaration.parameters[i];
            if (describesBlock && SameName(parameter.type.className, "MemoryBlock"))
                arguments.push_back(NewExpression("MemoryBlock", {Literal(Value(kBlockBytes))}));
            else
                arguments.push_back(wild && !describesBlock ? Argument(parameter, i, owner)
                                                            : Size(parameter, i, owner));
        }
        return arguments;
    }

    // --- Statements --------------------------------------------------------------------------------

    std::string NewText(const Class& type) {
        const std::vector<const Method*> constructors = type.FindMethods("Constructor");
        if (constructors.empty()) return "New " + type.name();
        // One whose arguments need no lines of their own.
        const auto arguments = Arguments(constructors.front()->declaration, type, true);
        return "New " + type.name() + ListText(arguments);
    }

    std::string Construction(const Class& type) { return Construction(type, AnyVariable(type)); }

    std::string Construction(const Class& type, const std::string& target) {
        if (OneOf(20)) return target + " = New Bare" + type.name() + "\n";
        const std::string name = !type.events().empty() && !OneOf(3) ? "Handling" + type.name() : type.name();
        const std::vector<const Method*> constructors = type.FindMethods("Constructor");
        if (constructors.empty()) return target + " = New " + name + "\n";
        const auto arguments = Arguments(AnyOf(constructors)->declaration, type, true);
        return BeforeText(arguments) + target + " = New " + name + ListText(arguments) + "\n";
    }

    std::string Call(const Method& method, const Class& type, const std::string& on) {
        const auto arguments = Arguments(method.declaration, type, IsConstructor(method));
        const std::string call = on + "." + method.declaration.name + ListText(arguments);
        const Type& result = method.declaration.result;
        const Class* own = OwnClass(result);
        if (own)
            return BeforeText(arguments) + "Dim made As " + own->name() + " = " + call +
                   "\nIf Not (made Is nil) Then " + AnyVariable(*own) + " = made\n";
        if (result.kind == Kind::None) return BeforeText(arguments) + call + "\n";
        return BeforeText(arguments) + "Dim result As " + TypeText(result) + " = " + call + "\n";
    }

    std::string Assignment(const Method& method, const Class& type) {
        auto arguments = Arguments(method.declaration, type, false);
        const Expression value = Argument({{}, "value", method.declaration.result, {}}, arguments.size(), type);
        return BeforeText(arguments) + value.before + AnyVariable(type) + "." + method.declaration.name +
               ListText(arguments) + " = " + value.text + "\n";
    }

    std::string PropertyUse(const Class& type) {
        const Property& property = AnyOf(type.properties());
        const std::string place = AnyVariable(type) + "." + property.name;
        if (!property.writable() || OneOf(3)) return "Dim result As " + TypeText(property.type) + " = " + place + "\n";
        // Objects that hold each other would be left alive by the program, not by the plug-in.
        const Class* own = OwnClass(property.type);
        const bool circles = own && (own->InheritsFrom(type) || type.InheritsFrom(*own));
        const Expression value =
            circles ? Literal(Value(nullptr)) : Argument({{}, "value", property.type, {}}, 0, type);
        return value.before + place + " = " + value.text + "\n";
    }

    std::string MethodUse(const Class& type) {
        const Method& method = AnyOf(type.methods());
        if (method.assignable() && OneOf(2)) return Assignment(method, type);
        return Call(method, type, AnyVariable(type));
    }

    std::string Tail() const {
        std::string text;
        for (const Class* type : supply_.classes)
            for (const Method& method : type->sharedMethods()) {
                const auto& parameters = method.declaration.parameters;
                const bool keeps =
                    !parameters.empty() && std::all_of(parameters.begin(), parameters.end(),
                                                       [&](const Parameter& one) { return OwnClass(one.type); });
                const std::vector<Expression> nils(parameters.size(), Literal(Value(nullptr)));
                if (keeps) text += Guarded(type->name() + "." + method.declaration.name + ListText(nils) + "\n");
            }
        return text;
    }

    // A timer that fires while something yields.
    std::string ClockUse() {
        return OneOf(3) ? "clock.Mode = 0\n" : "clock.Period = 1\nclock.Mode = " + std::to_string(1 + Below(2)) + "\n";
    }

    std::string Statement() {
        const Class& type = *AnyOf(supply_.classes);
        if (OneOf(6)) return Construction(type);
        if (OneOf(40)) return AnyVariable(type) + " = nil\n";
        if (OneOf(60)) return ClockUse();
        if (!type.sharedMethods().empty() && OneOf(12)) return Call(AnyOf(type.sharedMethods()), type, type.name());
        if (!type.properties().empty() && OneOf(6)) return PropertyUse(type);
        return type.methods().empty() ? Construction(type) : MethodUse(type);
    }

    static constexpr std::int32_t kBlockBytes = 1 << 16;  // more than the largest of kSizes takes

    const Supply& supply_;
    Random random_;
};

}  // namespace

std::string RandomProgram::Text() const {
    std::string text = head;
    for (const std::string& statement : statements) text += statement;
    return text + tail;
}

RandomProgram MakeProgram(const Supply& supply, std::uint64_t seed, std::uint64_t number, int statementCount) {
    std::seed_seq mixed{seed, seed >> 32, number, number >> 32};
    return ProgramMaker(supply, Random(mixed)).Make(statementCount);
}

RandomProgram Shrunk(RandomProgram program, const std::function<bool(const RandomProgram&)>& fails) {
    for (std::size_t length = program.statements.size(); length > 0;
         length = std::min(length / 2, program.statements.size()))
        for (std::size_t first = 0; first < program.statements.size();) {
            RandomProgram less = program;
            const auto from = less.statements.begin() + static_cast<std::ptrdiff_t>(first);
            less.statements.erase(
                from, from + static_cast<std::ptrdiff_t>(std::min(length, program.statements.size() - first)));
            if (fails(less))
                program = std::move(less);
            else
                first += length;
        }
    return program;
}

}  // namespace host::check
