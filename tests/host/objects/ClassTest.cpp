// Objects and classes: layout, members by name, destructors, script classes.
#include <gtest/gtest.h>

#include "host/calls/Declaration.h"
#include "host/objects/Class.h"
#include "host/objects/GuardedMemory.h"
#include "tests/host/calls/SampleTest.h"

namespace {

using namespace support;
using host::Class;
using host::Runtime;

host::Method MethodOf(const char* declaration) {
    host::Method method;
    std::string problem;
    EXPECT_TRUE(host::ReadDeclaration(declaration, method.declaration, problem)) << problem;
    method.body = [](Object*, std::span<Value>) { return Value(); };
    return method;
}

class Classes : public SampleTest {
  protected:
    // A script's class, gone with the test.
    Class& Add(const char* name, const Class* superclass) {
        Class* added = Runtime::Get().AddClass(std::make_unique<Class>(name, superclass));
        EXPECT_NE(added, nullptr);
        added_.push_back(added);
        return *added;
    }

    void TearDown() override {
        while (!added_.empty()) {
            Runtime::Get().RemoveClass(*added_.back());
            added_.pop_back();
        }
        SampleTest::TearDown();
    }

  private:
    std::vector<Class*> added_;
};

TEST_F(Classes, AreFoundInAnyCase) {
    EXPECT_EQ(Runtime::Get().FindClass("sAMPLE"), Runtime::Get().FindClass("Sample"));
    EXPECT_EQ(Runtime::Get().FindClass("Sampl"), nullptr);
}

TEST_F(Classes, FindMembersInAnyCase) {
    const Class& type = Runtime::Get().ClassNamed("DerivedSample");
    EXPECT_EQ(type.FindMethods("PICK").size(), 4U);
    EXPECT_EQ(type.FindSharedMethods("thrice").size(), 1U);
    EXPECT_EQ(type.FindProperty("COUNT")->owner->name(), "Sample");
    EXPECT_EQ(type.FindProperty("extra")->owner, &type);
    EXPECT_EQ(type.FindConstant("sampleSmall")->declaration, "SampleSmall = 7");
    EXPECT_EQ(type.FindEvent("asked")->owner->name(), "Sample");
    EXPECT_TRUE(type.FindMethods("Nothing").empty());
    EXPECT_EQ(type.FindProperty("Nothing"), nullptr);
}

TEST_F(Classes, RefuseANameThatIsTaken) {
    EXPECT_EQ(Runtime::Get().AddClass(std::make_unique<Class>("sample", nullptr)), nullptr);
}

TEST_F(Classes, LayInstanceDataAtMultiplesOf16) {
    const Class& sample = Runtime::Get().ClassNamed("Sample");
    const Class& derived = Runtime::Get().ClassNamed("DerivedSample");
    EXPECT_EQ(sample.dataOffset() % 16, 0);
    EXPECT_EQ(derived.dataOffset() % 16, 0);
    EXPECT_GE(derived.dataOffset(), sample.instanceSize());
    const auto object = New("DerivedSample");
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(object.get()) % 16, 0U);
    EXPECT_TRUE(host::GuardsAreWhole(object.get()));
}

TEST_F(Classes, KnowTheirAncestors) {
    const Class& sample = Runtime::Get().ClassNamed("Sample");
    const Class& derived = Runtime::Get().ClassNamed("DerivedSample");
    const auto object = New("DerivedSample");
    EXPECT_TRUE(host::IsA(object.get(), sample));
    EXPECT_TRUE(host::IsA(object.get(), derived));
    EXPECT_FALSE(host::IsA(New("Sample").get(), derived));
    EXPECT_FALSE(host::IsA(nullptr, sample));
}

TEST_F(Classes, HideAnInheritedMethodOnlyBehindTheSameParameters) {
    Class& type = Add("Overriding", &Runtime::Get().ClassNamed("Sample"));
    const host::Method& own = type.AddMethod(MethodOf("Pick(value As Double) As Integer"));
    const auto found = type.FindMethods("Pick");
    EXPECT_EQ(found.size(), 4U);
    EXPECT_EQ(found.front(), &own);
    EXPECT_EQ(type.FindExactMethod(own.declaration), &own);
}

TEST_F(Classes, InheritConstructorsOnlyWithoutOneOfTheirOwn) {
    Class& plain = Add("WithoutConstructor", &Runtime::Get().ClassNamed("Sample"));
    EXPECT_EQ(plain.FindMethods("Constructor").size(), 2U);
    Class& own = Add("WithConstructor", &Runtime::Get().ClassNamed("Sample"));
    own.AddMethod(MethodOf("Constructor(a As Double)"));
    EXPECT_EQ(own.FindMethods("Constructor").size(), 1U);
}

TEST_F(Classes, KeepValuesOfScriptsInSlots) {
    Class& type = Add("WithSlots", &Runtime::Get().ClassNamed("Sample"));
    type.AddProperty({.name = "Title", .type = host::TypeNamed("String"), .slot = type.AddSlot(Value("untitled"))});
    type.AddProperty({.name = "Friend", .type = host::TypeNamed("Sample"), .slot = type.AddSlot(Value(nullptr))});
    Class& below = Add("BelowSlots", &type);
    below.AddProperty({.name = "Size", .type = host::TypeNamed("Integer"), .slot = below.AddSlot(Value(3))});
    const auto object = New("BelowSlots");
    EXPECT_EQ(GetText(object, "Title"), "untitled");
    EXPECT_EQ(GetInt(object, "Size"), 3);
    EXPECT_EQ(GetInt(object, "Count"), 7);
    Set(object, "Title", Value("named"));
    Set(object, "Friend", Value(New("Sample")));
    EXPECT_EQ(GetText(object, "Title"), "named");
    EXPECT_EQ(GetText(New("BelowSlots"), "Title"), "untitled");
}

TEST_F(Classes, RunDestructorsFromTheSubclassUpwards) {
    std::string order;
    Class& base = Add("DyingBase", nullptr);
    const std::int32_t slot = base.AddSlot(Value("slot"));
    base.SetDestructor([&](Object* self) { order += "base " + std::string(base.SlotsOf(self)[slot].text()); });
    Class& below = Add("DyingBelow", &base);
    below.SetDestructor([&](Object*) { order += "below "; });
    auto object = New("DyingBelow");
    auto second = object;
    object = nullptr;
    EXPECT_EQ(order, "");
    second = nullptr;
    EXPECT_EQ(order, "below base slot");
}

TEST_F(Classes, LetADestructorTakeAndGiveUpReferences) {
    Class& type = Add("Fidgeting", nullptr);
    int runs = 0;
    type.SetDestructor([&](Object* self) {
        ++runs;
        const auto own = Ref<Object>::Share(self);
    });
    New("Fidgeting");
    EXPECT_EQ(runs, 1);
}

TEST_F(Classes, KeepAnObjectThatItsDestructorGaveAway) {
    Class& type = Add("Escaping", nullptr);
    Ref<Object> escaped;
    int runs = 0;
    type.SetDestructor([&](Object* self) {
        ++runs;
        escaped = Ref<Object>::Share(self);
    });
    New("Escaping");
    ASSERT_TRUE(escaped);
    EXPECT_TRUE(host::IsLiveObject(escaped.get()));
    escaped = nullptr;
    EXPECT_EQ(runs, 1);
}

TEST_F(Classes, ClearTheDataOfAnObjectThatItsDestructorGaveAway) {
    Class& type = Add("EscapingSample", &Runtime::Get().ClassNamed("Sample"));
    type.AddProperty({.name = "Title", .type = host::TypeNamed("String"), .slot = type.AddSlot(Value("untitled"))});
    Ref<Object> escaped;
    type.SetDestructor([&](Object* self) { escaped = Ref<Object>::Share(self); });
    Set(New("EscapingSample"), "Title", Value("named"));
    ASSERT_TRUE(escaped);
    EXPECT_TRUE(escaped->destroyed);
    EXPECT_EQ(GetInt(escaped, "Count"), 0) << "a field of the plug-in's data";
    EXPECT_EQ(GetText(escaped, "Title"), "untitled");
    Set(escaped, "Title", Value("what is written now goes with the object"));
    escaped = nullptr;
}

TEST_F(Classes, RunAScriptsDestructorBeforeItsTimeOnceOnly) {
    Class& type = Add("EndingEarly", nullptr);
    int runs = 0;
    type.SetDestructor([&](Object*) { ++runs; });
    auto object = New("EndingEarly");
    host::RunScriptDestructors(object.get());
    EXPECT_EQ(runs, 1);
    object = nullptr;
    EXPECT_EQ(runs, 1);
}

// --- What the fixture watches -----------------------------------------------------------------

TEST(LiveObjects, AreCountedAndListed) {
    host::LoadPlugin(TestPluginPath("Sample"));
    const std::int64_t before = host::LiveObjectCount();
    auto one = New("Sample");
    auto two = New("Sample");
    EXPECT_EQ(host::LiveObjectCount(), before + 2);
    EXPECT_EQ(host::LiveObjects().front(), two.get());
    one = nullptr;
    EXPECT_TRUE(host::IsLiveObject(two.get()));
    two = nullptr;
    EXPECT_EQ(host::LiveObjectCount(), before);
}

TEST(LiveObjects, SeeAReferenceGivenUpInADestructorThatNobodyHad) {
    auto type = std::make_unique<Class>("Careless", nullptr);
    type->SetDestructor([](Object* self) { host::Release(self); });
    const Class& careless = *Runtime::Get().AddClass(std::move(type));
    const std::int64_t before = host::OverReleaseCount();
    New("Careless");
    EXPECT_EQ(host::OverReleaseCount(), before + 1);
    Runtime::Get().RemoveClass(careless);
}

#if !defined(__SANITIZE_ADDRESS__)
TEST(GuardedMemory, CountsOverwrittenGuards) {
    const std::int64_t before = host::BrokenGuardCount();
    for (const int at : {-1, -16, 10, 25}) {
        auto* bytes = static_cast<std::uint8_t*>(host::AllocateGuarded(10));
        EXPECT_TRUE(host::GuardsAreWhole(bytes));
        const auto* volatile hidden = bytes;  // the compiler must not see through this
        const_cast<std::uint8_t*>(hidden)[at] = 1;
        EXPECT_FALSE(host::GuardsAreWhole(bytes)) << at;
        host::FreeGuarded(bytes);
    }
    EXPECT_EQ(host::BrokenGuardCount(), before + 4);
}

TEST(GuardedMemory, CountsOverwrittenGuardsOfWhatIsNeverFreed) {
    auto* bytes = static_cast<std::uint8_t*>(host::AllocateGuardedAsIs(10));
    host::WatchGuarded(bytes);
    const std::int64_t before = host::BrokenGuardCount();
    const auto* volatile hidden = bytes;
    const_cast<std::uint8_t*>(hidden)[10] = 1;
    EXPECT_EQ(host::BrokenGuardCount(), before + 1);
    EXPECT_EQ(host::BrokenGuardCount(), before + 1) << "counted once";
}
#endif

TEST(GuardedMemory, IsZeroedAndAligned) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{1000}}) {
        auto* bytes = static_cast<std::uint8_t*>(host::AllocateGuarded(size));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % 16, 0U);
        for (std::size_t i = 0; i < size; ++i) EXPECT_EQ(bytes[i], 0);
        host::FreeGuarded(bytes);
    }
    EXPECT_EQ(host::AllocateGuarded(SIZE_MAX), nullptr);
    host::FreeGuarded(nullptr);
}

}  // namespace
