// Routines, classes and their members.
#include <algorithm>
#include <utility>

#include "host/calls/ParameterList.h"
#include "host/objects/Type.h"
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

// Words that begin the declaration of a type, and what ends it.
struct TypeWord {
    std::string_view word;
    ClassForm form;
    bool reserved;  // else it may be a name as well
};

constexpr TypeWord kTypeWords[] = {
    {"class", ClassForm::Class, true},          {"module", ClassForm::Module, false},
    {"interface", ClassForm::Interface, false}, {"enum", ClassForm::Enum, false},
    {"delegate", ClassForm::Delegate, false},
};

}  // namespace

bool Parser::AtModifier(std::size_t ahead) const {
    return AtWord("private", ahead) || AtWord("public", ahead) || AtWord("protected", ahead) ||
           (AtWord("global", ahead) && Peek(ahead + 1).kind == TokenKind::Identifier && !AtWord("as", ahead + 1));
}

bool Parser::AtTypeDeclaration(std::size_t ahead) const {
    return std::any_of(std::begin(kTypeWords), std::end(kTypeWords), [&](const TypeWord& row) {
        if (!AtWord(row.word, ahead)) return false;
        if (row.reserved) return true;
        const bool named = AtName(ahead + 1) || AtWord("sub", ahead + 1) || AtWord("function", ahead + 1);
        const bool alone = AtLineEnd(ahead + 2) || AtWord("as", ahead + 2) || AtWord("inherits", ahead + 2) ||
                           row.form == ClassForm::Delegate;
        return named && alone && !DeclaresRoutine(row.word);
    });
}

bool Parser::AtDeclaration() const {
    const std::size_t ahead = AtModifier() ? 1 : 0;
    if (AtWord("sub", ahead) || AtWord("function", ahead) || AtTypeDeclaration(ahead)) return true;
    return ahead == 0 && AtWord("event") && AtName(1);
}

Parser::Modifiers Parser::TakeModifiers() {
    Modifiers modifiers;
    for (;;) {
        modifiers.isPrivate |= AtWord("private");
        modifiers.isProtected |= AtWord("protected");
        const bool shared = AtWord("shared");
        modifiers.shared |= shared;
        if (!shared && !AtModifier()) return modifiers;
        Advance();
    }
}

void Parser::ParseDeclaration() {
    TakeModifiers();
    if (AtTypeDeclaration()) {
        ParseTypeDeclaration({});
    } else if (AtWord("event")) {
        Fail(kParserSays.eventOutside());
    } else {
        program_->routines.push_back(ParseRoutine());
    }
}

namespace {

// Counts one level for as long as it lives, however that is left.
class Deeper {
  public:
    explicit Deeper(int& depth) : depth_(++depth) {}
    ~Deeper() { --depth_; }
    Deeper(const Deeper&) = delete;
    Deeper& operator=(const Deeper&) = delete;

  private:
    int& depth_;
};

}  // namespace

// A class, module, interface, enumeration or delegate, perhaps inside a module or class.
void Parser::ParseTypeDeclaration(const std::string& enclosing) {
    const auto* row = std::find_if(std::begin(kTypeWords), std::end(kTypeWords),
                                   [this](const TypeWord& candidate) { return AtWord(candidate.word); });
    if (declarationDepth_ >= kDeepestBlock) Fail(kParserSays.declarationsTooDeep());
    const Deeper deeper(declarationDepth_);
    ClassDeclaration declaration;
    declaration.form = row->form;
    declaration.enclosing = enclosing;
    switch (row->form) {
        case ClassForm::Class:
            ParseClass(declaration);
            break;
        case ClassForm::Module:
            if (!enclosing.empty()) diagnostics_.Add(Here(), kParserSays.moduleInside());
            ParseModule(declaration);
            break;
        case ClassForm::Interface:
            ParseInterface(declaration);
            break;
        case ClassForm::Enum:
            ParseEnum(declaration);
            break;
        case ClassForm::Delegate:
            ParseDelegate(declaration);
            break;
    }
    program_->classes.push_back(std::move(declaration));
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
    void ReadClosing() {
        while (parser_.TakeSymbol(",")) ++dimensions_;
        parser_.ExpectSymbol(")", "an array parameter's name");
    }
    void ReadAs() { parser_.ExpectWord("as", "the parameter's name; a parameter needs a type (x As Integer)"); }
    void ReadParameterType(Parameter& parameter, bool array) {
        parameter.type = parser_.ParseTypeName();
        parameter.type.array |= array;
        if (array) parameter.type.dimensions = dimensions_;
    }
    void ReadDefault(Parameter& parameter) { parameter.defaultValue = parser_.ParseExpression(); }

  private:
    Parser& parser_;
    int dimensions_ = 1;
};

Parameter Parser::ParseParameter() {
    Parameter parameter;
    ParameterGrammar grammar(*this);
    host::ReadParameter(grammar, parameter);
    if (parameter.paramArray && parameter.optional) FailAt(parameter.at, kParserSays.paramArrayDefault());
    if (parameter.byRef && (parameter.optional || parameter.paramArray))
        FailAt(parameter.at, kParserSays.byRefOptional());
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
        if (routine.kind == RoutineKind::Sub) Fail(kParserSays.subGivesNoValue());
        routine.result = ParseTypeName();
    } else if (routine.kind == RoutineKind::Function) {
        Fail(kParserSays.functionNeedsType(Found()));
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
    ParseExceptionBlocks(routine.body);
    ExpectEnd(WordOf(routine.kind), opened);
    return routine;
}

// "Sub Name(parameters)" or "Function Name(parameters) As Type" alone.
RoutineDeclaration Parser::ParseSignature() {
    if (!AtWord("sub") && !AtWord("function")) Fail(kParserSays.expectedRoutine(Found()));
    RoutineDeclaration routine;
    routine.kind = AtWord("function") ? RoutineKind::Function : RoutineKind::Sub;
    ParseRoutineHead(routine);
    return routine;
}

// Whether an Event's line begins a handler: an End Event comes before any other member.
bool Parser::IsHandler() const {
    for (std::size_t i = at_ + 1; i + 1 < tokens_.size(); ++i) {
        if (tokens_[i - 1].kind != TokenKind::NewLine) continue;
        if (tokens_[i].Is("end") && tokens_[i + 1].Is("event")) return true;
        const bool ends = tokens_[i].Is("end") &&
                          (tokens_[i + 1].Is("class") || tokens_[i + 1].Is("sub") || tokens_[i + 1].Is("function"));
        if (ends || tokens_[i].Is("sub") || tokens_[i].Is("function") || tokens_[i].Is("event")) return false;
    }
    return false;
}

// A handler of an inherited event, or the declaration of an own one, which has a line only.
RoutineDeclaration Parser::ParseEvent() {
    RoutineDeclaration routine;
    if (IsHandler()) {
        routine = ParseRoutine();
    } else {
        routine.kind = RoutineKind::Event;
        routine.declaresEvent = true;
        ParseRoutineHead(routine);
    }
    return routine;
}

bool Parser::AtAccessor() const {
    if (Peek().kind != TokenKind::NewLine) return false;
    return (AtWord("get", 1) && AtLineEnd(2)) || (AtWord("set", 1) && (AtLineEnd(2) || AtSymbol("(", 2)));
}

// "Get … End Get", "Set … End Set" and "End Property" behind a property's line.
void Parser::ParseAccessors(ClassDeclaration& declaration, FieldDeclaration property) {
    const Declarator& declarator = property.declarator;
    if (declarator.value || declarator.isNew || !declarator.sizes.empty())
        diagnostics_.Add(declarator.at, kParserSays.computedWithValue());
    while (AtAccessor()) {
        Advance();
        const Position opened = Here();
        const bool gets = AtWord("get");
        RoutineDeclaration routine;
        routine.kind = gets ? RoutineKind::Function : RoutineKind::Sub;
        routine.at = declarator.at;
        routine.name = std::string(gets ? kGetterMark : kSetterMark) + declarator.name;
        routine.shared = property.shared;
        routine.isPrivate = property.isPrivate;
        routine.needsPrefix = property.needsPrefix;
        Advance();
        if (!gets) ParseParameters(routine);
        if (gets) routine.result = declarator.type;
        if (!gets && routine.parameters.empty()) {
            Parameter& value = routine.parameters.emplace_back();
            value.name = "value";
            value.at = opened;
            value.type = declarator.type;
        }
        ExpectLineEnd(gets ? "Get" : "Set");
        routine.body = ParseBlock();
        ExpectEnd(gets ? "Get" : "Set", opened);
        declaration.routines.push_back(std::move(routine));
    }
    while (Peek().kind == TokenKind::NewLine) Advance();
    ExpectEnd("Property", declarator.at);
}

void Parser::ParseFields(ClassDeclaration& declaration, Modifiers modifiers, bool constant) {
    const bool module = declaration.form == ClassForm::Module;
    const bool property = AtWord("property");
    std::vector<Declarator> declarators;
    if (constant) {
        declarators = std::move(ParseConst()->declarators);
    } else {
        if (property || AtWord("dim") || AtWord("var")) Advance();
        declarators = ParseDeclarators();
    }
    for (Declarator& declarator : declarators) {
        FieldDeclaration field{std::move(declarator), modifiers.shared, constant,
                               modifiers.isPrivate || (modifiers.isProtected && !module), modifiers.isProtected};
        if (property && declarators.size() == 1 && AtAccessor())
            ParseAccessors(declaration, std::move(field));
        else
            declaration.fields.push_back(std::move(field));
    }
}

void Parser::ParseClassMember(ClassDeclaration& declaration) {
    const bool module = declaration.form == ClassForm::Module;
    Modifiers modifiers = TakeModifiers();
    modifiers.shared |= module;
    if (AtTypeDeclaration()) {
        ParseTypeDeclaration(declaration.name);
    } else if (AtWord("sub") || AtWord("function") || (AtWord("event") && AtName(1))) {
        if (module && AtWord("event")) Fail(kParserSays.moduleEvent());
        RoutineDeclaration routine = AtWord("event") ? ParseEvent() : ParseRoutine();
        routine.shared = modifiers.shared;
        routine.isPrivate = modifiers.isPrivate || (modifiers.isProtected && !module);
        routine.needsPrefix = modifiers.isProtected;
        // The name of its class is the older word for Constructor.
        if (!module && routine.kind == RoutineKind::Sub && host::SameName(routine.name, declaration.name))
            routine.name = "Constructor";
        if (routine.kind == RoutineKind::Event) routine.name.insert(0, kEventMark);
        declaration.routines.push_back(std::move(routine));
    } else if (AtName() || AtWord("property") || AtWord("dim") || AtWord("var") || AtWord("const")) {
        ParseFields(declaration, modifiers, AtWord("const"));
    } else {
        Fail(kParserSays.expectedClassMember(module ? "Module" : "Class", Found()));
    }
    ExpectLineEnd("the member");
}

void Parser::ParseInterfaceMember(ClassDeclaration& declaration) {
    TakeModifiers();
    RoutineDeclaration routine = ParseSignature();
    ExpectLineEnd("the method's head");
    declaration.routines.push_back(std::move(routine));
    if (!AtWord("end") || !(AtWord("sub", 1) || AtWord("function", 1))) return;
    Advance();
    Advance();
    ExpectLineEnd("the method");
}

// "Name" or "Name = value"; without one a member is one more than that before it.
void Parser::ParseEnumMember(ClassDeclaration& declaration) {
    FieldDeclaration member;
    member.constant = true;
    Declarator& declarator = member.declarator;
    declarator.at = Here();
    declarator.name = ExpectName("a member's name");
    if (TakeSymbol("=")) {
        declarator.value = ParseExpression();
    } else {
        const auto make = [&](Node node) {
            auto expression = std::make_unique<Expression>();
            expression->node = node;
            expression->at = declarator.at;
            return expression;
        };
        declarator.value = make(Node::IntegerLiteral);
        if (!declaration.fields.empty()) {
            declarator.value->integer = 1;
            ExpressionPtr sum = make(Node::Binary);
            sum->op = Operator::Add;
            sum->operands.push_back(make(Node::Name));
            sum->operands[0]->text = declaration.fields.back().declarator.name;
            sum->operands.push_back(std::move(declarator.value));
            declarator.value = std::move(sum);
        }
    }
    declarator.type = declaration.base;
    declaration.fields.push_back(std::move(member));
    ExpectLineEnd("the member");
}

// The lines of a declaration up to its End. A mistake in one is told and the line skipped.
void Parser::ParseMembers(ClassDeclaration& declaration, std::string_view word,
                          void (Parser::*parse)(ClassDeclaration&)) {
    const Position opened = declaration.at;
    while (!(AtWord("end") && (AtWord(word, 1) || AtLineEnd(1))) && !AtFileEnd()) {
        if (Peek().kind == TokenKind::NewLine) {
            Advance();
            continue;
        }
        try {
            RefuseForeign();
            (this->*parse)(declaration);
        } catch (const ParseFailure&) {
            SkipLine();
        }
    }
    ExpectEnd(word, opened);
}

// "Inherits Base" and "Implements A, B", each on the class's line or one of its own.
void Parser::ParseBases(ClassDeclaration& declaration) {
    for (;;) {
        while (Peek().kind == TokenKind::NewLine) Advance();
        if (TakeWord("inherits")) {
            declaration.base = ParseClassName(true);
        } else if (AtWord("implements") && AtName(1)) {
            Advance();
            do declaration.interfaces.push_back(ParseClassName(true));
            while (TakeSymbol(","));
        } else {
            return;
        }
    }
}

void Parser::ParseClass(ClassDeclaration& declaration) {
    Advance();
    declaration.at = Here();
    declaration.name = ExpectName("the class's name");
    ParseBases(declaration);
    ParseMembers(declaration, "Class", &Parser::ParseClassMember);
}

void Parser::ParseModule(ClassDeclaration& declaration) {
    Advance();
    declaration.at = Here();
    declaration.name = ExpectName("the module's name");
    ExpectLineEnd("the module's name");
    ParseMembers(declaration, "Module", &Parser::ParseClassMember);
}

void Parser::ParseInterface(ClassDeclaration& declaration) {
    Advance();
    declaration.at = Here();
    declaration.name = ExpectName("the interface's name");
    ParseBases(declaration);
    ParseMembers(declaration, "Interface", &Parser::ParseInterfaceMember);
}

void Parser::ParseEnum(ClassDeclaration& declaration) {
    Advance();
    declaration.at = Here();
    declaration.name = ExpectName("the enumeration's name");
    declaration.base.name = "Integer";
    if (TakeWord("as")) declaration.base = ParseTypeName();
    ExpectLineEnd("the enumeration's name");
    ParseMembers(declaration, "Enum", &Parser::ParseEnumMember);
}

void Parser::ParseDelegate(ClassDeclaration& declaration) {
    Advance();
    RoutineDeclaration routine = ParseSignature();
    declaration.at = routine.at;
    declaration.name = std::exchange(routine.name, "Invoke");
    declaration.routines.push_back(std::move(routine));
}

void Parser::ParseProgram(Program& program) {
    program_ = &program;
    while (!AtFileEnd()) {
        try {
            CorrectKeyword();
            if (AtDeclaration()) {
                ParseDeclaration();
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
