// Every row of the tables of the language is reached by a script: by those below tests/scripts, or by
// one that stands here.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "host/messages/CheckerMessages.h"
#include "host/messages/LexerMessages.h"
#include "host/messages/ParserMessages.h"
#include "host/script/Check.h"
#include "host/script/Parse.h"
#include "tests/support/Places.h"
#include "tests/support/PluginFixture.h"

namespace {

namespace fs = std::filesystem;

// What the parser and the checker say.
std::vector<std::string> ToldOf(const std::string& text) {
    const script::Source source{"script", text};
    script::Diagnostics diagnostics(source);
    const auto program = script::Parse(source, diagnostics);
    script::Symbols symbols;
    if (!diagnostics.HasErrors()) script::Check(*program, symbols, diagnostics);
    std::vector<std::string> told;
    for (const script::Diagnostic& diagnostic : diagnostics.List()) told.push_back(diagnostic.message);
    return told;
}

// clang-format off
// clang-format off
constexpr const char* kMore[] = {
    "Print 1 ? 2",
    "Print &hFFFFFFFFFFFFFFFFF",
    "Print 12ab",
    "Print &zFF",
    "Print &cFF",
    "Print &b12",
    "Print \"a",
    "Print 1 @ 2",
    "Print 1 == 2",
    "Sub S()\nEnd Sub\nPrint AddressOf S + 1",
    "Dim a() As Integer = Array(AddressOf S)\nSub S()\nEnd Sub",
    "Dim a() As Integer = Array()",
    "Print 1 Is 2",
    "Print 1 IsA Picture",
    "Dim p As Picture\nPrint p IsA Integer",
    "Print 1, 2",
    "Quit(1, 2)",
    "Dim i As Integer\nReDim i(3)",
    "Class C\nSub S()\nSuper.S\nEnd Sub\nEnd Class",
    "Class B\nEnd Class\nClass C\nInherits B\nSub S()\nPrint Super\nEnd Sub\nEnd Class",
    "Dim i As Integer\nPrint Ubound(i)",
    "Print Ubound(1, 2, 3)",
    "Class C\nSub Destructor(i As Integer)\nEnd Sub\nEnd Class",
    "Class C\nFunction Constructor() As Integer\nEnd Function\nEnd Class",
    "Sub S(ParamArray a As Integer = 3)\nEnd Sub",
    "Sub S(ByRef a As Integer = 3)\nEnd Sub",
    "Sub S() As Integer\nEnd Sub",
    "Print Integer(1, 2)",
    "Function F() As Integer\nEnd Function\nSub S(a As Integer = F())\nEnd Sub",
    "Dim s As String\nFor s = 1 To 3\nNext",
    "For 3 = 1 To 3\nNext",
    "For Each x As Integer In 3\nNext",
    "Dim g(2, 2) As Integer\nFor Each x As Integer In g\nNext",
    "1 + 2",
    "Dim x As Integer\nx.Foo",
    "Sub S()\nEnd Sub\nDim x As Integer = S()",
    "Sub S()\nEnd Sub\nPrint S()",
    "Sub S()\nEnd Sub\nSelect Case AddressOf S\nCase 1\nEnd Select",
    "Sub S()\nEnd Sub\nPrint AddressOf S",
    "Dim a(3) As Integer\nDim b() As Integer = Array(a, a)",
    "Dim a(3) As Integer\nPrint a(1, 2)",
    "Dim a(3, 3) As Integer\nPrint a(1)",
    "Dim x As Integer\nPrint x(1)",
    "Select Case 1\nCase Is 3\nEnd Select",
    "Class C\nPrint 1\nEnd Class",
    "Dim C As\n",
    "Print (1",
    "Dim If As Integer",
    "Print \"a\".",
    "Print 1 2",
    "Event E()\nEnd Event",
    "Class C\nModule M\nEnd Module\nEnd Class",
    "Function F()\nEnd Function",
    "Class C\nPrivate Print 1\nEnd Class",
    "Class C\nShared x\nEnd Class",
    "Class C\nProperty N As Integer = 3\nGet\nReturn 1\nEnd Get\nEnd Property\nEnd Class",
    "Module M\nEvent E()\nEnd Module",
    "Print 1 +",
    "Try\nPrint 1\nEnd Try",
    "RaiseEvent 3",
    "Declare Sub S Lib \"x\" ()",
    "Pirnt 1\nFro i As Integer = 1 To 3\nNext",
    "If True Then\nEndIf",
    "Exception e As RuntimeException",
    "Sub S()\nIf True Then\nException e As RuntimeException\nEnd If\nEnd Sub",
    "Next",
    "If True Then\nWhile True\nEnd If\nWend",
    "Dim x As New Picture(1, 1, 32) = Nil",
    "For i As Integer = 1 To 3\nFor j As Integer = 1 To 3\nNext i\nNext j",
    "ReDim 3",
    ")",
    "For i As Integer = 1 To 3\nLoop",
    "Class Picture\nEnd Class\nClass A\nEnd Class\nClass A\nEnd Class",
    "Class A\nInherits Nowhere\nEnd Class",
    "Interface I\nEnd Interface\nClass A\nInherits I\nEnd Class",
    "Module M\nEnd Module\nClass A\nInherits M\nEnd Class",
    "Class A\nInherits A\nEnd Class",
    "Class B\nEnd Class\nClass A\nImplements B\nEnd Class",
    "Interface I\nEnd Interface\nInterface J\nImplements I\nEnd Interface",
    "Interface I\nSub S()\nEnd Interface\nClass A\nImplements I\nEnd Class",
    "Class A\nProperty N As Integer\nProperty N As Integer\nEnd Class",
    "Sub S()\nEnd Sub\nSub S()\nEnd Sub",
    "Sub S(ParamArray a As Integer, b As Integer)\nEnd Sub",
    "Sub S(a As Integer, Extends b As Integer)\nEnd Sub",
    "Class C\nSub S(Extends b As Integer)\nEnd Sub\nEnd Class",
    "Sub S(Assigns a As Integer, b As Integer)\nEnd Sub",
    "Sub S(a As Integer = 3, b As Integer)\nEnd Sub",
    "Class B\nFunction F() As Integer\nEnd Function\nEnd Class\nClass C\nInherits B\nFunction F() As String\nEnd Function\nEnd Class",
    "Class C\nInherits Timer\nEvent Nothing()\nEnd Event\nEnd Class",
    "Class C\nInherits Timer\nEvent Action(i As Integer)\nEnd Event\nEnd Class",
    "Dim x As Integer = 3\nConst k As Integer = x",
    "Sub Picture()\nEnd Sub",
    "Dim x As Integer\nDim x As Integer",
    "GoTo away",
    "here:\nhere:",
    "Print nowhere",
    "Dim p As Picture\nPrint p.Nowhere",
    "Class C\nPrivate Sub S()\nEnd Sub\nPrivate Property N As Integer\nEnd Class\nDim c As C\nc.S\nPrint c.N",
    "Dim d As Integer = AddressOf Nowhere",
    "AddHandler 3, AddressOf S\nSub S()\nEnd Sub",
    "Dim t As Timer\nAddHandler t.Nothing, AddressOf S\nSub S()\nEnd Sub",
    "Print Self",
    "Class C\nProperty N As Integer\nShared Sub S()\nPrint N\nEnd Sub\nSub T()\nEnd Sub\nShared Sub U()\nT\nEnd Sub\nEnd Class",
    "Class C\nProperty N As Integer\nEnd Class\nPrint C.N",
    "Class C\nConst K As Integer = 3\nEnd Class\nPrint C.K(1)",
    "Const K As Integer = 3\nPrint K(1)",
    "Sub S()\nPrint x\nDim x As Integer\nEnd Sub",
    "Class C\nSub S()\nRaiseEvent Nothing\nEnd Sub\nEnd Class",
    "Class C\nProperty N As Integer\nSet\nEnd Set\nEnd Property\nEnd Class\nDim c As C\nPrint c.N",
    "Class C\nProperty N As Integer\nGet\nReturn 1\nEnd Get\nEnd Property\nEnd Class\nDim c As C\nc.N = 3",
    "Class C\nProperty N As Integer\nSet\nEnd Set\nEnd Property\nEnd Class\nDim c As C\nc.N",
    "Class C\nFunction Operator_Subscript(i As Integer) As Integer\nEnd Function\nEnd Class\nDim c As C\nc(1) = 3",
    "Module M\nGlobal Sub S()\nEnd Sub\nEnd Module\nModule N\nGlobal Sub S()\nEnd Sub\nEnd Module\nS",
    "3 = 4",
    "Dim s As String\ns + \"a\" = \"b\"",
    "Dim x As Integer\nx",
    "Dim x As Integer\nx + 1",
    "Exit Sub",
    "Exit For",
    "Function F() As Integer\nReturn\nEnd Function",
    "Sub S()\nReturn 3\nEnd Sub",
    "Dim g(2, 2) As Integer\nReDim g(3)",
    "Dim p As Ptr",
    "Dim p As Nowhere",
    "Module M\nEnd Module\nDim m As M",
    "Dim a(1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1) As Integer",
    "Dim b As UInt8 = 300",
    "Dim i As Integer = \"a\"",
    "Sub S()\nEnd Sub\nDelegate Sub D(i As Integer)\nDim d As D = AddressOf S",
    "Print -\"a\"",
    "Print \"a\" - 1",
    "Print \"a\" + 1",
    "Dim p As Picture\nPrint p < 3",
    "Print \"a\" And True",
    "Dim i As New Integer",
    "Interface I\nEnd Interface\nDim i As New I",
    "Delegate Sub D()\nDim d As New D",
    "Class C\nEnd Class\nDim c As New C(3)",
    "Try\nPrint 1\nCatch e As Picture\nEnd Try",
    "Sub S(i As Integer)\nEnd Sub\nS(1, 2)",
    "Sub S(i As Integer)\nEnd Sub\nS(\"a\")",
    "Sub S(i As Integer)\nEnd Sub\nSub S(i As String)\nEnd Sub\nS(Nil)",
    "Sub S(i As Integer, d As Double)\nEnd Sub\nSub S(d As Double, i As Integer)\nEnd Sub\nS(1, 2)",
    "Sub S(ByRef i As Integer)\nEnd Sub\nS(3)",
    "Dim p As Picture\nSub S(ByRef i As Integer)\nEnd Sub\nS(p.Width)",
    "Dim g(2, 2) As Integer\ng.Append(1)",
    "Dim a() As Integer\na.Append",
    "Dim a() As Picture\na.Sort",
    "Dim a() As Integer\na.SortWith 3",
    "#If Nowhere Then\n#EndIf",
    "#If (True Then\n#EndIf",
    "#If\n#EndIf",
    "#If True 3 Then\n#EndIf",
    "#If True Then",
    "#Foo",
    "#EndIf",
    "#If True Then\n#Else\n#Else\n#EndIf",
    "Print “a”",
    "Print 1 ± 2",
    "Print True + True",
    "Class C\nSub S()\nEnd Sub\nEnd Class\nC.S",
    "Print Not 1.5",
    "Dim p As New PictureTQX(1, 1, 1)\np.Width = 3",
    "Sub S()\nSuper.T\nEnd Sub",
    "Dim x As Integer\n(x < 3)",
    "Dim x As Integer\nx = 3 Or 4\nx < 4",
    "Dim a() As Integer\nPrint a.Sort",
    "Dim a() As Integer\nDim x As Integer = a.Sort",
    "Dim a() As Integer\nPrint a.Sort + 1",
    "Class C\n+\nEnd Class",
    "RaiseEvent a.b",
    "Print PictureTQX.ImageFormatRGB(1)",
    "Class A\nEnd Class\nSub A()\nEnd Sub",
    "Sub Integer()\nEnd Sub",
    "Print TargetLinux(1)",
};
// clang-format on
// clang-format on

std::vector<std::string> AllTold() {
    std::vector<std::string> told;
    const auto add = [&](const std::string& text) {
        for (std::string& message : ToldOf(text)) told.push_back(std::move(message));
    };
    for (const auto& entry : fs::recursive_directory_iterator(support::SourceFolder() + "/tests/scripts")) {
        if (entry.path().extension() != ".rbs") continue;
        std::ifstream file(entry.path());
        add({std::istreambuf_iterator<char>(file), {}});
    }
    for (const char* text : kMore) add(std::string(text) + '\n');
    add("\x01\n");
    add("Print " + std::string(5000, '(') + '1' + std::string(5000, ')') + '\n');
    add("#If " + std::string(5000, '(') + "True" + std::string(5000, ')') + "\n#EndIf\n");
    const auto repeated = [](const std::string& line) {
        std::string lines;
        for (int i = 0; i < 5000; ++i) lines += line;
        return lines;
    };
    add(repeated("While True\n"));
    add(repeated("Class C\n"));
    return told;
}

std::vector<host::Message> AllRows() {
    std::vector<host::Message> rows;
    const auto add = [&](const auto& table) {
        for (const host::Message& row : host::RowsOf(table)) rows.push_back(row);
    };
    add(host::kLexerSays), add(script::kConditionSays), add(script::kParserSays), add(script::kDeclarationSays);
    add(script::kNameSays), add(script::kTypeSays), add(script::kCallSays), add(script::kStatementSays);
    return rows;
}

class LanguageMessages : public support::PluginTest {};

// Of several rows that a message could be of, the one with the longest text counts.
TEST_F(LanguageMessages, AreEachReachedByAScript) {
    const std::vector<host::Message> rows = AllRows();
    std::set<std::string_view> missing;
    for (const host::Message& row : rows) missing.insert(row.text);
    for (const std::string& message : AllTold()) {
        std::string_view longest;
        for (const host::Message& row : rows)
            if (host::Matches(row.text, message) && row.text.size() > longest.size()) longest = row.text;
        EXPECT_FALSE(longest.empty()) << "of no row: " << message;
        missing.erase(longest);
    }
    EXPECT_THAT(missing, testing::IsEmpty());
}

// Nothing is said past the tables, but what was said before: the lexer's message travels as a token's
// text, and a plug-in's refusal is remembered.
TEST_F(LanguageMessages, AreSaidAgainInTwoPlacesAlone) {
    std::vector<std::string> files;
    for (const char* room : {"/host", "/tqx", "/python/native"})
        for (const auto& entry : fs::recursive_directory_iterator(support::SourceFolder() + room)) {
            if (!entry.is_regular_file() || entry.path().filename() == "Message.h") continue;
            std::ifstream file(entry.path());
            const std::string text{std::istreambuf_iterator<char>(file), {}};
            if (text.find("Said::Again") != std::string::npos) files.push_back(entry.path().filename().string());
        }
    EXPECT_THAT(files, testing::UnorderedElementsAre("Parser.cpp", "Table.cpp"));
}

}  // namespace
