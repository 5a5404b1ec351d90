// Routines, classes and their members.
#include "host/calls/ParameterList.h"
#include "host/script/Parser.h"

namespace script {

namespace {

std::string_view WordOf(RoutineKind kind) {
    switch (kind) {
        case RoutineKind::Sub:
            return "Sub";
        case RoutineKind::Function:
            return "Function";
        default:
            return "Event";
    }
}

}  // namespace

bool Parser::AtDeclaration() const {
    if (AtWord("private") || AtWord("public") || AtWord("protected"))
        return AtWord("sub", 1) || AtWord("function", 1) || AtWord("class", 1);
    return AtWord("sub") || AtWord("function") || AtWord("class") || (AtWord("event") && AtName(1));
}

void Parser::ParseDeclaration(Program& program) {
    if (AtWord("private") || AtWord("public") || AtWord("protected")) Advance();
    if (AtWord("class")) {
        program.classes.push_back(ParseClass());
    } else if (AtWord("event")) {
        Fail("an Event is handled inside a Class");
    } else {
        program.routines.push_back(ParseRoutine());
    }
}

// A script's part of the grammar of a parameter.
class Parser::ParameterGrammar {
  public:
    explicit ParameterGrammar(Parser& parser) : parser_(parser) {}

    bool AtParameterWord(std::string_view word) const {
        const bool named = parser_.Peek(1).kind == TokenKind::Identifier && !parser_.AtWord("as", 1);
        return named && parser_.AtWord(word);
    }
    void Step() { parser_.Advance(); }
    bool Skip(std::string_view sign) { return parser_.TakeSymbol(sign); }
    void ReadName(Parameter& parameter) {
        parameter.at = parser_.Here();
        parameter.name = parser_.ExpectName("a parameter's name");
    }
    void ReadClosing() { parser_.ExpectSymbol(")", "an array parameter's name"); }
    void ReadAs() { parser_.ExpectWord("as", "the parameter's name; a parameter needs a type (x As Integer)"); }
    void ReadParameterType(Parameter& parameter, bool array) {
        parameter.type = parser_.ParseTypeName();
        parameter.type.array |= array;
    }
    void ReadDefault(Parameter& parameter) { parameter.defaultValue = parser_.ParseExpression(); }

  private:
    Parser& parser_;
};

Parameter Parser::ParseParameter() {
    for (const std::string_view foreign : {"Extends", "Assigns"})
        if (AtWord(foreign) && AtName(1)) Fail(std::string(foreign) + " is not part of this language");
    Parameter parameter;
    ParameterGrammar grammar(*this);
    host::ReadParameter(grammar, parameter);
    if (parameter.paramArray && parameter.optional)
        FailAt(parameter.at, "a ParamArray has no default: where nothing is left for it, it is empty");
    if (parameter.byRef && (parameter.optional || parameter.paramArray))
        FailAt(parameter.at, "a ByRef parameter can't be optional: it needs a variable of the caller's");
    return parameter;
}

void Parser::ParseParameters(RoutineDeclaration& routine) {
    if (!TakeSymbol("(")) return;
    if (TakeSymbol(")")) return;
    do routine.parameters.push_back(ParseParameter());
    while (TakeSymbol(","));
    ExpectSymbol(")", "the parameters");
}

void Parser::ParseRoutineHead(RoutineDeclaration& routine) {
    Advance();
    routine.at = Here();
    routine.name = ExpectName("the routine's name");
    ParseParameters(routine);
    if (TakeWord("as")) {
        if (routine.kind == RoutineKind::Sub) Fail("a Sub gives no value; write Function for one that does");
        routine.result = ParseTypeName();
    } else if (routine.kind == RoutineKind::Function) {
        Fail("expected As and the type of the Function's value, found " + Found());
    }
}

// From "Sub", "Function" or "Event" to its End.
RoutineDeclaration Parser::ParseRoutine() {
    RoutineDeclaration routine;
    const Position opened = Here();
    routine.kind =
        AtWord("function") ? RoutineKind::Function : (AtWord("event") ? RoutineKind::Event : RoutineKind::Sub);
    ParseHead("the routine's head", [&] { ParseRoutineHead(routine); });
    routine.body = ParseBlock();
    ExpectEnd(WordOf(routine.kind), opened);
    return routine;
}

void Parser::ParseFields(ClassDeclaration& declaration, bool shared, bool constant, bool isPrivate) {
    std::vector<Declarator> declarators;
    if (constant) {
        declarators = std::move(ParseConst()->declarators);
    } else {
        if (AtWord("property") || AtWord("dim") || AtWord("var")) Advance();
        declarators = ParseDeclarators();
    }
    for (Declarator& declarator : declarators)
        declaration.fields.push_back({std::move(declarator), shared, constant, isPrivate});
}

void Parser::ParseClassMember(ClassDeclaration& declaration) {
    bool isPrivate = false;
    bool shared = false;
    for (;;) {
        if (AtWord("private") || AtWord("protected")) {
            isPrivate = true;
            Advance();
        } else if (TakeWord("shared")) {
            shared = true;
        } else if (!TakeWord("public")) {
            break;
        }
    }
    if (AtWord("sub") || AtWord("function") || (AtWord("event") && AtName(1))) {
        RoutineDeclaration routine = ParseRoutine();
        routine.shared = shared;
        routine.isPrivate = isPrivate;
        declaration.routines.push_back(std::move(routine));
    } else if (AtName() || AtWord("property") || AtWord("dim") || AtWord("var") || AtWord("const")) {
        ParseFields(declaration, shared, AtWord("const"), isPrivate);
    } else {
        Fail("expected a property, Sub, Function, Event or End Class, found " + Found());
    }
    ExpectLineEnd("the member");
}

ClassDeclaration Parser::ParseClass() {
    ClassDeclaration declaration;
    const Position opened = Here();
    Advance();
    declaration.at = Here();
    declaration.name = ExpectName("the class's name");
    while (Peek().kind == TokenKind::NewLine) Advance();
    if (TakeWord("inherits")) {
        declaration.baseAt = Here();
        declaration.base = ExpectName("the name of the class it inherits");
        ExpectLineEnd("the class's head");
    }
    while (!(AtWord("end") && (AtWord("class", 1) || AtLineEnd(1))) && !AtFileEnd()) {
        if (Peek().kind == TokenKind::NewLine) {
            Advance();
            continue;
        }
        try {
            RefuseForeign();
            ParseClassMember(declaration);
        } catch (const ParseFailure&) {
            SkipLine();
        }
    }
    ExpectEnd("Class", opened);
    return declaration;
}

void Parser::ParseProgram(Program& program) {
    while (!AtFileEnd()) {
        try {
            CorrectKeyword();
            if (AtDeclaration()) {
                ParseDeclaration(program);
                ExpectLineEnd("the declaration");
            } else if (AtBlockEnd()) {
                FailWithoutBeginning();
            } else {
                ParseLineOfStatements(program.body);
            }
        } catch (const ParseFailure&) {
            blockDepth_ = 0;
            expressionDepth_ = 0;
            SkipLine();
        }
    }
}

}  // namespace script
