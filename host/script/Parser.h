// The parser's insides, shared by its files: expressions, statements, declarations, mistakes.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/calls/Lexer.h"
#include "host/messages/ParserMessages.h"
#include "host/script/Ast.h"
#include "host/script/Diagnostics.h"

namespace script {

using host::Token;
using host::TokenKind;

// Thrown where a line can't be understood any further, after the error was told.
struct ParseFailure {};

class Parser {
  public:
    Parser(const Source& source, Diagnostics& diagnostics);

    void ParseProgram(Program& program);

  private:
    // --- Tokens (Parser.cpp)
    const Token& Peek(std::size_t ahead = 0) const;
    Position Here() const;
    bool AtWord(std::string_view word, std::size_t ahead = 0) const;
    bool AtSymbol(std::string_view symbol, std::size_t ahead = 0) const;
    bool AtName(std::size_t ahead = 0) const;  // a name that is no reserved word
    bool AtLineEnd(std::size_t ahead = 0) const;
    bool AtFileEnd() const;
    void Advance() {
        if (!AtFileEnd()) ++at_;
    }
    bool TakeWord(std::string_view word);
    bool TakeSymbol(std::string_view symbol);
    void ExpectWord(std::string_view word, std::string_view after);
    void ExpectSymbol(std::string_view symbol, std::string_view after);
    std::string ExpectName(std::string_view what);
    std::string ExpectMemberName();
    void ExpectLineEnd(std::string_view after);
    void SkipLine();
    std::string Found() const;  // the token as a message calls it
    [[noreturn]] void Fail(const host::Said& message);
    [[noreturn]] void FailAt(Position at, const host::Said& message);

    // --- Expressions (ParserExpressions.cpp)
    ExpressionPtr ParseExpression() { return ParseBinary(0); }
    ExpressionPtr ParseBinary(int lowest);
    ExpressionPtr ParseUnary();
    ExpressionPtr ParsePower();
    ExpressionPtr ParsePostfix();
    ExpressionPtr ParsePrimary();
    ExpressionPtr ParseNew();
    ExpressionPtr ParseCast();
    ExpressionPtr ParseAddressOf();
    ExpressionPtr ParseLiteral();
    ExpressionPtr ParseNameOrConstant();
    std::vector<ExpressionPtr> ParseArguments();  // from "(" to ")"
    std::vector<ExpressionPtr> ParseBareArguments();
    ExpressionPtr Finish(ExpressionPtr expression);  // depth, and its limit
    bool StartsExpression() const;
    TypeName ParseTypeName();
    TypeName ParseClassName(bool qualified = false);
    bool TakeArrayBrackets(TypeName& type);

    // The first line of a block. If it can't be understood the block is read all the same, so that
    // its end is not taken for a mistake of its own.
    template <class Head>
    void ParseHead(std::string_view what, const Head& head) {
        try {
            head();
            ExpectLineEnd(what);
        } catch (const ParseFailure&) {
            expressionDepth_ = 0;
            SkipLine();
        }
    }

    // --- Statements (ParserStatements.cpp)
    Block ParseBlock();
    bool AtBlockEnd() const;
    void ParseLineOfStatements(Block& block);
    StatementPtr ParseStatement();
    StatementPtr ParseDim(bool isStatic);
    Declarator ParseDeclaratorName();
    void ParseDeclaratorType(std::vector<Declarator>& group);
    std::vector<Declarator> ParseDeclarators();
    StatementPtr ParseConst();
    StatementPtr ParseIf();
    bool IsOneLineIf() const;
    void ParseIfBranches(Statement& statement);
    void ParseOneLineIf(Statement& statement);
    Block ParseRestOfLine();
    StatementPtr ParseSelect();
    void ParseCaseHead(Statement& statement);
    CaseTest ParseCaseTest();
    StatementPtr ParseFor();
    void ParseForRange(Statement& statement);
    void ParseForEachRange(Statement& statement);
    void CheckNextName(const Statement& loop);
    void ExpectLoopEnd(std::string_view word, std::string_view loop, Position opened);
    void ParseLoopVariable(Statement& statement);
    StatementPtr ParseWhile();
    StatementPtr ParseDo();
    StatementPtr ParseJump(Action action);
    StatementPtr ParseReturn();
    StatementPtr ParseTry();
    Catch ParseCatch();
    StatementPtr ParseRaise();
    StatementPtr ParseReDim();
    StatementPtr ParseGoTo();
    StatementPtr ParseLabel();
    StatementPtr ParseRaiseEvent();
    StatementPtr ParseHandlerChange();
    bool AtLabel() const;
    bool AtExceptionBlock() const;
    void ParseExceptionBlocks(Block& body);
    StatementPtr ParseAssignmentOrCall();
    ExpressionPtr ParseCallee();
    void ExpectEnd(std::string_view word, Position opened);
    StatementPtr Make(Action action) const;
    static std::string OpenedAt(std::string_view what, Position at);

    // --- Mistakes (ParserMistakes.cpp)
    void CollectRoutineNames();
    bool HasToldEnough() const;
    bool DeclaresRoutine(std::string_view name) const;
    bool LineHasWord(std::string_view word) const;
    void RefuseForeign();
    void SkipForeignBlock(std::string_view word);
    void CorrectKeyword();
    void SplitEnds();
    bool ReportMistyped(std::string_view word, std::int32_t first);
    [[noreturn]] void FailWithoutBeginning();

    // --- Declarations (ParserDeclarations.cpp)
    // What words before a declaration say.
    struct Modifiers {
        bool isPrivate = false;
        bool isProtected = false;
        bool shared = false;
    };

    bool AtModifier(std::size_t ahead = 0) const;
    bool AtDeclaration() const;
    bool AtTypeDeclaration(std::size_t ahead = 0) const;
    Modifiers TakeModifiers();
    void ParseDeclaration();
    void ParseTypeDeclaration(const std::string& enclosing);
    RoutineDeclaration ParseRoutine();
    RoutineDeclaration ParseSignature();
    RoutineDeclaration ParseEvent();
    bool IsHandler() const;
    void ParseRoutineHead(RoutineDeclaration& routine);
    void ParseParameters(RoutineDeclaration& routine);
    class ParameterGrammar;
    Parameter ParseParameter();
    void ParseClass(ClassDeclaration& declaration);
    void ParseModule(ClassDeclaration& declaration);
    void ParseInterface(ClassDeclaration& declaration);
    void ParseEnum(ClassDeclaration& declaration);
    void ParseDelegate(ClassDeclaration& declaration);
    void ParseBases(ClassDeclaration& declaration);
    void ParseMembers(ClassDeclaration& declaration, std::string_view word, void (Parser::*parse)(ClassDeclaration&));
    void ParseClassMember(ClassDeclaration& declaration);
    void ParseInterfaceMember(ClassDeclaration& declaration);
    void ParseEnumMember(ClassDeclaration& declaration);
    void ParseFields(ClassDeclaration& declaration, Modifiers modifiers, bool constant);
    bool AtAccessor() const;
    void ParseAccessors(ClassDeclaration& declaration, FieldDeclaration property);

    Diagnostics& diagnostics_;
    Program* program_ = nullptr;
    std::vector<Token> tokens_;
    std::size_t at_ = 0;
    std::set<std::string, std::less<>> routineNames_;  // in lower case
    std::set<std::string, std::less<>> moduleNames_;   // likewise
    int blockDepth_ = 0;
    int declarationDepth_ = 0;
    int expressionDepth_ = 0;
};

bool IsReserved(std::string_view word);

}  // namespace script
