// Ways to come by instances of a plug-in's classes.
#include "host/calls/Call.h"
#include "host/calls/Runtime.h"
#include "host/check/Case.h"

namespace host::check {

namespace {

// How many of a constructor's instances are tried with every argument.
constexpr std::size_t kBroadInstances = 3;

bool IsConstructor(const Method& method) { return SameName(method.declaration.name, "Constructor"); }

// A subclass whose constructor does not call its superclass's.
InstancePtr Unconstructed(const Class& type) {
    auto instance = std::make_shared<Instance>();
    instance->label = "not constructed";
    instance->type = &type;
    instance->script = [&type](const std::string& name) {
        return "Class Bare" + name + "\n  Inherits " + type.name() +
               "\n  Sub Constructor()\n  End Sub\nEnd Class\nDim " + name + " As New Bare" + name + "\n";
    };
    instance->make = [&type] { return NewObject(type); };
    instance->broad = true;
    return instance;
}

std::shared_ptr<Instance> Constructed(const Class& type, const Method* constructor,
                                      const std::vector<Expression>& arguments) {
    auto instance = std::make_shared<Instance>();
    const Expression creation = NewExpression(type.name(), arguments);
    instance->label = "constructed";
    instance->type = &type;
    instance->script = [creation](const std::string& name) {
        return creation.before + "Dim " + name + " As " + creation.text + "\n";
    };
    instance->make = [creation] {
        Ref<Object> object = Ref<Object>::Share(creation.make().object());
        Runtime::Get().TakeRaised();
        return object;
    };
    instance->constructor = constructor;
    instance->arguments = arguments;
    instance->constructed = true;
    return instance;
}

InstancePtr After(const InstancePtr& before, const Method& command) {
    auto instance = std::make_shared<Instance>(*before);
    instance->label = "after " + command.declaration.name;
    instance->script = [before, &command](const std::string& name) {
        return before->script(name) + name + "." + command.declaration.name + "\n";
    };
    instance->make = [before, &command] {
        Ref<Object> object = before->make();
        if (object) Invoke(command, object.get(), {});
        Runtime::Get().TakeRaised();
        return object;
    };
    instance->constructed = false;
    instance->first = false;
    instance->broad = true;
    return instance;
}

// Those of one constructor; every so many of them broad, the first among them.
void AddConstructed(const Class& type, const Method& constructor, Supply& supply) {
    const auto lists = ArgumentLists(constructor.declaration, type, supply, false);
    const std::size_t step = lists.size() / kBroadInstances + 1;
    for (std::size_t i = 0; i < lists.size(); ++i) {
        auto instance = Constructed(type, &constructor, lists[i]);
        instance->first = i == 0;
        instance->broad = i % step == 0;
        supply.instances.push_back(instance);
    }
}

// The first instance is what the later constructors' own-class arguments are made from.
void AddInstances(const Class& type, Supply& supply) {
    bool any = false;
    for (const Method& method : type.methods()) {
        if (!IsConstructor(method)) continue;
        AddConstructed(type, method, supply);
        any = true;
    }
    if (!any) {
        auto instance = Constructed(type, nullptr, {});
        instance->first = true;
        instance->broad = true;
        supply.instances.push_back(instance);
    }
    supply.instances.push_back(Unconstructed(type));
    const auto own = supply.InstancesOf(type);
    const InstancePtr first = own.front();
    for (const Method& method : type.methods())
        if (IsPlainCommand(method)) supply.instances.push_back(After(first, method));
}

}  // namespace

bool IsPlainCommand(const Method& method) {
    return method.declaration.parameters.empty() && method.declaration.result.kind == Kind::None &&
           !IsConstructor(method);
}

Supply MakeSupply(const std::vector<const Class*>& classes, const std::string& scratchFolder, std::uint64_t seed) {
    Supply supply;
    supply.seed = seed;
    supply.classes = classes;
    supply.scratchFolder = scratchFolder;
    for (const Class* type : classes) AddInstances(*type, supply);
    return supply;
}

}  // namespace host::check
