// Members called by name with values of C++.
#include "tests/support/PluginFixture.h"

#include <cstdlib>
#include <filesystem>
#include <ostream>

#include "host/calls/PluginLoader.h"
#include "host/objects/GuardedMemory.h"

namespace support {

namespace {

using host::Runtime;

const host::Class* ClassOrFail(std::string_view name) {
    const host::Class* type = Runtime::Get().FindClass(name);
    if (!type) ADD_FAILURE() << "there is no class " << name;
    return type;
}

Value InvokeChosen(const std::vector<const host::Method*>& candidates, std::string_view name, Object* self,
                   const Values& arguments) {
    host::Choice choice = host::ChooseOverload(candidates, arguments);
    if (choice.method) return host::Invoke(*choice.method, self, choice.arguments);
    ADD_FAILURE() << name << ": " << choice.problem;
    return Value();
}

const host::Property* PropertyOrFail(const Ref<Object>& object, std::string_view name) {
    const host::Property* property = object ? object->type->FindProperty(name) : nullptr;
    if (!property) ADD_FAILURE() << "there is no property " << name << " of " << Describe(Value(object));
    return property;
}

std::string LiveList() {
    std::string text;
    for (const Object* object : host::LiveObjects()) text += " " + object->type->name();
    return text;
}

}  // namespace

Ref<Object> NewWith(std::string_view className, const Values& arguments) {
    const host::Class* type = ClassOrFail(className);
    if (!type) return nullptr;
    Ref<Object> object = host::NewObject(*type);
    if (!object) {
        ADD_FAILURE() << "no memory for a new " << className;
        return nullptr;
    }
    const auto constructors = type->FindMethods("Constructor");
    if (!constructors.empty() || !arguments.empty()) InvokeChosen(constructors, className, object.get(), arguments);
    return object;
}

Value CallWith(const Ref<Object>& object, std::string_view method, const Values& arguments) {
    if (!object) {
        ADD_FAILURE() << "call of " << method << " on nil";
        return Value();
    }
    return InvokeChosen(object->type->FindMethods(method), method, object.get(), arguments);
}

Value CallSharedWith(std::string_view className, std::string_view method, const Values& arguments) {
    const host::Class* type = ClassOrFail(className);
    return type ? InvokeChosen(type->FindSharedMethods(method), method, nullptr, arguments) : Value();
}

Value Get(const Ref<Object>& object, std::string_view name) {
    const host::Property* property = PropertyOrFail(object, name);
    return property ? host::GetProperty(*property, object.get()) : Value();
}

std::int64_t GetInt(const Ref<Object>& object, std::string_view property) { return Get(object, property).ToInt64(); }

bool GetBool(const Ref<Object>& object, std::string_view property) { return Get(object, property).ToBoolean(); }

std::string GetText(const Ref<Object>& object, std::string_view property) {
    return std::string(Get(object, property).text());
}

Ref<Object> GetObject(const Ref<Object>& object, std::string_view property) {
    return Ref<Object>::Share(Get(object, property).object());
}

void Set(const Ref<Object>& object, std::string_view name, const Value& value) {
    const host::Property* property = PropertyOrFail(object, name);
    if (!property) return;
    if (!property->writable() || host::ConversionCost(value, property->type) < 0)
        ADD_FAILURE() << name << " can't be set to " << Describe(value);
    else
        host::SetProperty(*property, object.get(), host::ConvertTo(value, property->type));
}

void Assign(const Ref<Object>& object, std::string_view method, const Values& arguments, const Value& value) {
    host::Choice choice = host::ChooseOverload(object->type->FindMethods(method), arguments, &value);
    if (!choice.method) {
        ADD_FAILURE() << method << ": " << choice.problem;
        return;
    }
    const Value assigned = choice.arguments.back();
    choice.arguments.pop_back();
    host::InvokeSetter(*choice.method, object.get(), choice.arguments, assigned);
}

std::int64_t ConstantOf(std::string_view className, std::string_view name) {
    const host::Class* type = ClassOrFail(className);
    const host::Constant* constant = type ? type->FindConstant(name) : nullptr;
    if (!constant) ADD_FAILURE() << "there is no constant " << name;
    return constant ? constant->value.ToInt64() : 0;
}

// --- Exceptions ------------------------------------------------------------------------------

Thrown TakeThrown() {
    const Ref<Object> exception = Runtime::Get().TakeRaised();
    if (!exception) return {};
    return {exception->type->name(), host::MessageOf(exception.get())};
}

void PrintTo(const Thrown& thrown, std::ostream* stream) {
    *stream << (thrown.className.empty() ? "no exception" : thrown.className + ": " + thrown.message);
}

// --- Memory blocks ---------------------------------------------------------------------------

Ref<Object> MakeBlock(std::size_t size) {
    return Ref<Object>::Adopt(
        static_cast<Object*>(host::HostFunctionSlot<sdk::knewMemoryBlock>::Call(static_cast<std::int64_t>(size))));
}

Ref<Object> MakeBlock(const Bytes& bytes) {
    Ref<Object> block = MakeBlock(bytes.size());
    std::copy(bytes.begin(), bytes.end(), BlockAddress(block));
    return block;
}

std::uint8_t* BlockAddress(const Ref<Object>& block) {
    return block ? host::HostFunctionSlot<sdk::kmemoryBlockGetPtr>::Call(block.get()) : nullptr;
}

std::int64_t BlockSize(const Ref<Object>& block) { return GetInt(block, "Size"); }

Bytes BlockBytes(const Ref<Object>& block) {
    return block ? BlockBytes(block, static_cast<std::size_t>(BlockSize(block))) : Bytes();
}

Bytes BlockBytes(const Ref<Object>& block, std::size_t count) {
    const std::uint8_t* address = BlockAddress(block);
    return address ? Bytes(address, address + count) : Bytes();
}

Bytes TextBytes(const Value& string) { return {string.text().begin(), string.text().end()}; }

// --- Factories -------------------------------------------------------------------------------

Ref<Object> NewHandler(std::string_view base, std::string_view eventName, host::Callable handler) {
    static int number = 0;
    const host::Class* superclass = ClassOrFail(base);
    const host::Event* event = superclass ? superclass->FindEvent(eventName) : nullptr;
    if (!event) {
        ADD_FAILURE() << base << " has no event " << eventName;
        return nullptr;
    }
    auto type = std::make_unique<host::Class>("Test" + std::string(base) + std::to_string(++number), superclass);
    if (handler) type->AddEventHandler({event, std::move(handler)});
    return host::NewObject(*Runtime::Get().AddClass(std::move(type)));
}

Ref<Object> NewFactory(PictureMaker make) {
    if (!make) return NewHandler("PictureFactoryTQX", "NewPictureTQX", nullptr);
    return NewHandler("PictureFactoryTQX", "NewPictureTQX",
                      [make = std::move(make)](Object*, std::span<Value> arguments) {
                          return Value(make(arguments[0].ToInt32(), arguments[1].ToInt32(), arguments[2].ToInt32()));
                      });
}

// --- Fixture ---------------------------------------------------------------------------------

FailingHostFunction::FailingHostFunction(std::string_view name, std::int64_t nth, std::int64_t count)
    : record_(Runtime::Get().FindHostFunction(name)), before_(record_ ? record_->calls : 0) {
    if (record_)
        record_->FailCall(nth, count);
    else
        ADD_FAILURE() << "there is no host function " << name;
}

FailingHostFunction::~FailingHostFunction() {
    if (record_) record_->FailNever();
}

std::int64_t FailingHostFunction::calls() const { return record_ ? record_->calls - before_ : 0; }

std::int64_t CallsOf(std::string_view hostFunction) {
    const host::HostFunctionRecord* record = Runtime::Get().FindHostFunction(hostFunction);
    if (!record) ADD_FAILURE() << "there is no host function " << hostFunction;
    return record ? record->calls : 0;
}

OnYield::OnYield(std::function<void()> callback) : number_(Runtime::Get().OnYield(std::move(callback))) {}

OnYield::~OnYield() { Runtime::Get().RemoveYield(number_); }

struct PluginTest::Counts {
    std::int64_t objects = host::LiveObjectCount();
    std::int64_t strings = host::LiveStringCount();
    std::int64_t arrays = host::LiveArrayCount();
    std::int64_t brokenGuards = host::BrokenGuardCount();
    std::int64_t overReleases = host::OverReleaseCount();
};

void PluginTest::SetUp() {
    host::LoadPlugin(PluginPath());
    before_ = std::make_shared<Counts>();
}

void PluginTest::TearDown() {
    EXPECT_EQ(TakeThrown(), Thrown{}) << "an exception was left behind";
    const Counts now;
    EXPECT_EQ(now.objects, before_->objects) << "host objects are left alive:" << LiveList();
    EXPECT_EQ(now.strings, before_->strings) << "host strings are left alive";
    EXPECT_EQ(now.arrays, before_->arrays) << "host arrays are left alive";
    EXPECT_EQ(now.brokenGuards, before_->brokenGuards) << "bytes beside a host's memory were written";
    EXPECT_EQ(now.overReleases, before_->overReleases) << "a reference was given up twice";
    if (!scratchFolder_.empty()) std::filesystem::remove_all(scratchFolder_);
}

std::string PluginTest::ScratchPath(const std::string& name) {
    if (scratchFolder_.empty()) {
        std::string folder = (std::filesystem::temp_directory_path() / "tqx-test-XXXXXX").string();
        if (!mkdtemp(folder.data())) ADD_FAILURE() << "no scratch folder can be made";
        scratchFolder_ = folder;
    }
    return scratchFolder_ + "/" + name;
}

}  // namespace support
