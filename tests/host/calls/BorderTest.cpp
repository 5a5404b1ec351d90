// What C++ code throws, as scripts see it.
#include <gtest/gtest.h>

#include <stdexcept>

#include "host/calls/Border.h"
#include "host/messages/RunningMessages.h"
#include "tests/host/calls/SampleTest.h"
#include "tests/support/Interpose.h"

namespace {

using namespace support;
using host::AtBorder;

class Border : public SampleTest {};

template <class Error>
Thrown RaisedFor(const Error& error) {
    AtBorder([&] { throw error; });
    return TakeThrown();
}

TEST_F(Border, GivesWhatTheWorkGives) {
    EXPECT_EQ(AtBorder([] { return 5; }), 5);
    EXPECT_EQ(TakeThrown(), Thrown{});
}

TEST_F(Border, GivesZeroWhereSomethingIsThrown) {
    EXPECT_EQ(AtBorder([]() -> int { throw std::runtime_error("why"); }), 0);
    EXPECT_EQ(TakeThrown(), (Thrown{"RuntimeException", "why"}));
}

TEST_F(Border, HasOneExceptionForEachKindOfFailure) {
    auto& runtime = host::Runtime::Get();
    EXPECT_EQ(RaisedFor(host::Raised{runtime.MakeException("IOException", "own")}), (Thrown{"IOException", "own"}));
    EXPECT_EQ(RaisedFor(std::bad_alloc()).className, "OutOfMemoryException");
    EXPECT_EQ(RaisedFor(std::length_error("vector")).className, "OutOfMemoryException");
    EXPECT_EQ(RaisedFor(std::logic_error("why")), (Thrown{"RuntimeException", "why"}));
    EXPECT_EQ(RaisedFor(5).className, "RuntimeException");
}

// Not even the exception fits.
TEST_F(Border, RaisesAnExceptionMadeBeforehandWhenNoMemoryIsLeft) {
    auto& runtime = host::Runtime::Get();
    host::Ref<host::Object> first, second;
    const host::Raising nothingToJoin = host::kDataRaises.nothingToJoin();
    {
        const FailingAllocations failing(1);
        AtBorder([] { throw std::runtime_error("why"); });
        first = runtime.TakeRaised();
        runtime.Raise(nothingToJoin);
        second = runtime.TakeRaised();
    }
    EXPECT_EQ(first->type->name(), "OutOfMemoryException");
    EXPECT_EQ(second->type->name(), "OutOfMemoryException");
}

TEST_F(Border, TellsTheScriptOfTextThatAPluginCouldNotBuild) {
    const auto build = reinterpret_cast<sdk::String* (*)(const char*, std::int64_t)>(
        reinterpret_cast<sdk::Resolver>(host::Runtime::Entry("ResolverPPC"))("REALBuildString"));
    const std::string bytes(100'000, 'x');
    {
        const FailingAllocations failing(50'000);
        EXPECT_EQ(build(bytes.data(), 100'000), nullptr);
    }
    EXPECT_EQ(TakeThrown().className, "OutOfMemoryException");
}

}  // namespace
