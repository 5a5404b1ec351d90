// Declarations of members: what is read from them, and what is said of wrong ones.
#include <gtest/gtest.h>

#include "host/calls/Declaration.h"

namespace {

using host::ConstantDeclaration;
using host::Declaration;
using host::DeclarationText;
using host::Kind;

Declaration Read(std::string_view text) {
    Declaration declaration;
    std::string problem;
    EXPECT_TRUE(host::ReadDeclaration(text, declaration, problem)) << problem;
    return declaration;
}

std::string ProblemOf(std::string_view text) {
    Declaration declaration;
    std::string problem;
    EXPECT_FALSE(host::ReadDeclaration(text, declaration, problem)) << text;
    return problem;
}

ConstantDeclaration ReadConstant(std::string_view text) {
    ConstantDeclaration constant;
    std::string problem;
    EXPECT_TRUE(host::ReadConstant(text, constant, problem)) << problem;
    return constant;
}

std::string ConstantProblemOf(std::string_view text) {
    ConstantDeclaration constant;
    std::string problem;
    EXPECT_FALSE(host::ReadConstant(text, constant, problem)) << text;
    return problem;
}

TEST(Declaration, ReadsAMethodWithParametersAndResult) {
    const Declaration method = Read("Row(index as integer, buf() as double, dest as PictureTQX=nil) as memoryblock");
    EXPECT_EQ(method.name, "Row");
    ASSERT_EQ(method.parameters.size(), 3U);
    EXPECT_EQ(method.parameters[0].name, "index");
    EXPECT_EQ(method.parameters[0].type.kind, Kind::Integer);
    EXPECT_FALSE(method.parameters[0].optional);
    EXPECT_EQ(method.parameters[1].type.kind, Kind::Array);
    EXPECT_EQ(method.parameters[1].type.element, Kind::Double);
    EXPECT_EQ(method.parameters[2].type.kind, Kind::Object);
    EXPECT_EQ(method.parameters[2].type.className, "PictureTQX");
    EXPECT_TRUE(method.parameters[2].optional);
    EXPECT_TRUE(method.parameters[2].defaultValue.IsNil());
    EXPECT_EQ(method.result.className, "memoryblock");
    EXPECT_EQ(method.RequiredCount(), 2U);
}

TEST(Declaration, ReadsMethodsWithoutParametersOrResult) {
    EXPECT_TRUE(Read("Close").parameters.empty());
    EXPECT_EQ(Read("Close").result.kind, Kind::None);
    EXPECT_EQ(Read("Close()").parameters.size(), 0U);
    EXPECT_EQ(Read("AutoLevel as boolean").result.kind, Kind::Boolean);
    EXPECT_EQ(Read("CopyGWorld as variant").result.className, "variant");
    EXPECT_TRUE(Read("CopyGWorld as variant").result.IsVariant());
}

TEST(Declaration, KnowsEveryTypeInAnyCase) {
    const Declaration method = Read(
        "M(a as integer, b as INT64, c as UInt32, d as uint8, e as Double, f as single, g as Boolean, h as color, "
        "i as String, j as Variant)");
    const Kind kinds[] = {Kind::Integer, Kind::Int64,   Kind::UInt32, Kind::UInt8,  Kind::Double,
                          Kind::Single,  Kind::Boolean, Kind::Color,  Kind::String, Kind::Object};
    for (std::size_t i = 0; i < std::size(kinds); ++i) EXPECT_EQ(method.parameters[i].type.kind, kinds[i]) << i;
}

TEST(Declaration, ReadsDefaultsOfEveryType) {
    const Declaration method = Read(
        "M(a as integer = -5, b as double = 2, c as boolean=false, d as string = \"x\"\"y\", e as color = &cFF0000, "
        "f as integer = &hFFFFFFFF, g as uint8 = 255, h() as integer = nil)");
    EXPECT_EQ(method.parameters[0].defaultValue.ToInt64(), -5);
    EXPECT_EQ(method.parameters[1].defaultValue.kind(), Kind::Double);
    EXPECT_EQ(method.parameters[1].defaultValue.ToDouble(), 2.0);
    EXPECT_FALSE(method.parameters[2].defaultValue.ToBoolean());
    EXPECT_EQ(method.parameters[3].defaultValue.text(), "x\"y");
    EXPECT_EQ(method.parameters[4].defaultValue.ToInt64(), 0xFF0000);
    EXPECT_EQ(method.parameters[5].defaultValue.ToInt64(), -1);
    EXPECT_EQ(method.parameters[6].defaultValue.kind(), Kind::UInt8);
    EXPECT_EQ(method.RequiredCount(), 0U);
}

TEST(Declaration, ReadsModifiersButAllowsThemAsNames) {
    const Declaration method = Read("M(ByRef a as integer, Optional b as double, ParamArray c as string)");
    EXPECT_TRUE(method.parameters[0].byRef);
    EXPECT_TRUE(method.parameters[1].optional);
    EXPECT_EQ(method.parameters[1].defaultValue.ToDouble(), 0.0);
    EXPECT_TRUE(method.parameters[2].paramArray);
    EXPECT_EQ(TypeText(method.parameters[2].type), "String()");
    EXPECT_EQ(Read("M(byref as integer)").parameters[0].name, "byref");
    EXPECT_EQ(Read("M(optional() as integer)").parameters[0].name, "optional");
}

TEST(Declaration, AllowsAnyBlanks) {
    EXPECT_EQ(DeclarationText(Read(" DrawPicture( p as Picture , x  as Integer )  as  boolean ")),
              "DrawPicture(p As Picture, x As Integer) As Boolean");
}

TEST(Declaration, WritesWhatItReads) {
    for (const char* text :
         {"Close", "Clone As PictureTQX", "M(ByRef a As Integer, b() As Double, c As Boolean = False) As Int64",
          "M(ParamArray a As String)", "M(a As Picture = nil, b As String = \"x\")"}) {
        EXPECT_EQ(DeclarationText(Read(text)), text);
    }
}

TEST(Declaration, ComparesSignatures) {
    EXPECT_TRUE(SameSignature(Read("Draw( P as picture, x as INTEGER ) as Boolean"),
                              Read("draw(q As Picture, y As Integer) As boolean")));
    EXPECT_FALSE(SameSignature(Read("Draw(p as picture)"), Read("Draw(p as picture, x as integer)")));
    EXPECT_FALSE(SameSignature(Read("Draw(p as picture)"), Read("Draw(p as folderitem)")));
    EXPECT_FALSE(SameSignature(Read("Draw(p as picture)"), Read("Draw(p as picture) as boolean")));
    EXPECT_FALSE(SameSignature(Read("Draw(p as integer)"), Read("Draw(p() as integer)")));
    EXPECT_FALSE(SameSignature(Read("Draw(p as integer)"), Read("Paint(p as integer)")));
}

TEST(Declaration, SaysWhatIsWrongAndWhere) {
    EXPECT_EQ(ProblemOf(""), "\"\", column 1: a name was expected, not the end");
    EXPECT_EQ(ProblemOf("M(a)"), "\"M(a)\", column 4: As was expected, not \")\"");
    EXPECT_EQ(ProblemOf("M(a as)"), "\"M(a as)\", column 7: a type was expected, not \")\"");
    EXPECT_EQ(ProblemOf("M(a as integer"), "\"M(a as integer\", column 15: , or ) was expected, not the end");
    EXPECT_EQ(ProblemOf("M(as integer)"), "\"M(as integer)\", column 3: a parameter's name was expected, not \"as\"");
    EXPECT_EQ(ProblemOf("M(a as integer,)"),
              "\"M(a as integer,)\", column 16: a parameter's name was expected, not \")\"");
    EXPECT_EQ(ProblemOf("M() as integer x"), "\"M() as integer x\", column 16: the end was expected, not \"x\"");
    EXPECT_EQ(ProblemOf("M(a as integer = \"x\")"),
              "\"M(a as integer = \"x\")\", column 18: a default of type Integer was expected, not \"x\"");
    EXPECT_EQ(ProblemOf("M(a as picture = 1)"),
              "\"M(a as picture = 1)\", column 18: a default of type picture was expected, not \"1\"");
    EXPECT_EQ(ProblemOf("5"), "\"5\", column 1: a name was expected, not \"5\"");
}

TEST(Declaration, ReadsConstants) {
    const ConstantDeclaration gray = ReadConstant("ImageFormatG = &h0000000B");
    EXPECT_EQ(gray.name, "ImageFormatG");
    EXPECT_EQ(gray.value.kind(), Kind::Integer);
    EXPECT_EQ(gray.value.ToInt64(), 11);
    EXPECT_EQ(ReadConstant("ScaleCubic = 7").value.ToInt64(), 7);
    EXPECT_EQ(ReadConstant("Low = -8").value.ToInt64(), -8);
    EXPECT_EQ(ReadConstant("Top = &hFFFFFFFF").value.kind(), Kind::Integer);
    EXPECT_EQ(ReadConstant("Top = &hFFFFFFFF").value.ToInt64(), -1);
    EXPECT_EQ(ReadConstant("Wide = 5000000000").value.kind(), Kind::Int64);
    EXPECT_EQ(ReadConstant("Ratio = 1.5").value.ToDouble(), 1.5);
    EXPECT_EQ(ReadConstant("Name = \"x\"").value.text(), "x");
    EXPECT_TRUE(ReadConstant("On = True").value.ToBoolean());
}

TEST(Declaration, RefusesConstantsWithoutAValue) {
    EXPECT_EQ(ConstantProblemOf("A"), "\"A\", column 2: = was expected, not the end");
    EXPECT_EQ(ConstantProblemOf("A = "), "\"A = \", column 5: a literal was expected, not the end");
    EXPECT_EQ(ConstantProblemOf("A = B"), "\"A = B\", column 5: a literal was expected, not \"B\"");
    EXPECT_EQ(ConstantProblemOf("A = -\"x\""), "\"A = -\"x\"\", column 6: a literal was expected, not \"x\"");
    EXPECT_EQ(ConstantProblemOf("A = &hZ"), "\"A = &hZ\", column 5: \"&hZ\" is no number in base 16");
}

}  // namespace
