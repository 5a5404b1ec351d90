// Runs the last destructors, then breaks what still holds itself in circles.
#include "host/script/ProgramEnd.h"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_map>

#include "host/objects/Handlers.h"
#include "host/script/ScriptClasses.h"

namespace script {

namespace {

using Objects = std::vector<host::Ref<host::Object>>;
using Arrays = std::vector<host::Ref<host::Array>>;

// Those that are alive now and were not before, the oldest first.
template <class Held, class Counts>
std::vector<host::Ref<Held>> HoldNew(const std::vector<Held*>& alive, const std::vector<Held*>& before,
                                     const Counts& counts) {
    const std::set<const Held*> known(before.begin(), before.end());
    std::vector<host::Ref<Held>> held;
    for (auto one = alive.rbegin(); one != alive.rend(); ++one)
        if (!known.contains(*one) && counts(**one)) held.push_back(host::Ref<Held>::Share(*one));
    return held;
}

// Calls `visit` with each value that an object of the script or an array holds.
template <class Visit>
void ForEachHeld(const host::Object& object, const Visit& visit) {
    for (const host::Class* type = object.type; type; type = type->superclass())
        for (std::size_t i = 0; i < type->slotDefaults().size(); ++i) visit(type->SlotsOf(&object)[i]);
}

template <class Visit>
void ForEachHeld(const host::Array& array, const Visit& visit) {
    for (const host::Value& value : array.values) visit(value);
}

// Whether an object of the framework holds values of the script's where they can be seen.
bool HasSlots(const host::Object& object) {
    bool has = false;
    for (const host::Class* type = object.type; type; type = type->superclass()) has |= !type->slotDefaults().empty();
    return has;
}

const void* ReferenceIn(const host::Value& value) {
    return value.array() ? static_cast<const void*>(value.array()) : value.object();
}

// The objects of a script's classes, the framework's containers and the arrays, with who holds whom. Those that nobody
// else holds are the script's own: they go with it.
class Belongings {
  public:
    Belongings(const Symbols& symbols, const Alive& before, std::span<const host::Value> globals)
        : objects_(
              HoldNew(host::LiveObjects(), before.objects,
                      [&](const host::Object& object) { return IsOfScript(object, symbols) || HasSlots(object); })),
          arrays_(HoldNew(host::LiveArrays(), before.arrays, [](const host::Array&) { return true; })) {
        for (const auto& object : objects_) references_[object.get()] = object->references - 1;
        for (const auto& array : arrays_) references_[array.get()] = array->references - 1;
        const auto forgo = [this](const host::Value& value) { Forgo(value); };
        for (const host::Value& global : globals) forgo(global);
        for (const auto& object : objects_) ForEachHeld(*object, forgo);
        for (const auto& array : arrays_) ForEachHeld(*array, forgo);
        LeaveToOthers();
    }

    const Objects& objects() const { return objects_; }
    const Arrays& arrays() const { return arrays_; }

  private:
    void Forgo(const host::Value& value) {
        const auto found = references_.find(ReferenceIn(value));
        if (found != references_.end()) --found->second;
    }

    // Takes out what somebody else holds, and what that holds in turn.
    void LeaveToOthers() {
        std::vector<const host::Object*> objects;
        std::vector<const host::Array*> arrays;
        std::set<const void*> others;
        for (const auto& object : objects_)
            if (references_[object.get()] > 0 && others.insert(object.get()).second) objects.push_back(object.get());
        for (const auto& array : arrays_)
            if (references_[array.get()] > 0 && others.insert(array.get()).second) arrays.push_back(array.get());
        const auto reach = [&](const host::Value& value) {
            const void* const reached = ReferenceIn(value);
            if (!references_.contains(reached) || !others.insert(reached).second) return;
            value.array() ? arrays.push_back(value.array()) : objects.push_back(value.object());
        };
        while (!objects.empty() || !arrays.empty()) {
            if (!objects.empty()) {
                const host::Object* const object = objects.back();
                objects.pop_back();
                ForEachHeld(*object, reach);
            } else {
                const host::Array* const array = arrays.back();
                arrays.pop_back();
                ForEachHeld(*array, reach);
            }
        }
        std::erase_if(objects_, [&](const auto& object) { return others.contains(object.get()); });
        std::erase_if(arrays_, [&](const auto& array) { return others.contains(array.get()); });
    }

    Objects objects_;
    Arrays arrays_;
    std::unordered_map<const void*, std::int64_t> references_;  // that are not accounted for
};

// Gives references up in thought only: counts what would be left, and runs an object's destructors
// when that is nothing.
class LastDestructors {
  public:
    explicit LastDestructors(const Belongings& belongings) {
        for (const auto& object : belongings.objects()) given_[object.get()] = 0;
        for (const auto& array : belongings.arrays()) given_[array.get()] = 0;
    }

    void GiveUp(const host::Value& value) {
        Push(value);
        while (!waiting_.empty()) {
            const Held next = waiting_.back();
            waiting_.pop_back();
            GiveUpOne(next);
        }
    }

  private:
    // Borrowed from the belongings; a destructor may change the place where it was found.
    struct Held {
        host::Object* object;
        host::Array* array;
    };

    void Push(const host::Value& value) {
        if (given_.contains(ReferenceIn(value))) waiting_.push_back({value.object(), value.array()});
    }

    void GiveUpOne(Held held) {
        constexpr std::int64_t kOfBelongings = 1;
        if (held.object) {
            if (++given_[held.object] + kOfBelongings != held.object->references) return;
            host::RunScriptDestructors(held.object);
            PushHeld(*held.object);
        } else if (++given_[held.array] + kOfBelongings == held.array->references) {
            PushHeld(*held.array);
        }
    }

    template <class Holder>
    void PushHeld(const Holder& holder) {
        const std::size_t before = waiting_.size();
        ForEachHeld(holder, [this](const host::Value& value) { Push(value); });
        std::reverse(waiting_.begin() + static_cast<std::ptrdiff_t>(before), waiting_.end());
    }

    std::unordered_map<const void*, std::int64_t> given_;
    std::vector<Held> waiting_;  // the next one last
};

bool HasDestructors(const Symbols& symbols) {
    return std::any_of(symbols.scriptClasses.begin(), symbols.scriptClasses.end(),
                       [](const ClassSymbol* symbol) { return symbol->made && symbol->made->destructor(); });
}

void RunLastDestructors(const Symbols& symbols, const Alive& before, std::span<const host::Value> globals) {
    const Belongings belongings(symbols, before, globals);
    LastDestructors destructors(belongings);
    for (const host::Value& global : globals) destructors.GiveUp(global);
    for (const auto& object : belongings.objects()) host::RunScriptDestructors(object.get());
}

using Counts = std::map<std::string, int>;

std::vector<std::string> Listed(const Counts& counts) {
    std::vector<std::string> lines;
    for (const auto& [name, count] : counts) lines.push_back(std::to_string(count) + " × " + name);
    return lines;
}

// Empties what only holds itself, and counts it. Arrays that go with their objects don't count.
Counts BreakCycles(const Symbols& symbols, const Alive& before) {
    Counts counts;
    const Belongings left(symbols, before, {});
    for (const auto& object : left.objects()) ++counts[object->type->name()];
    for (const auto& object : left.objects()) host::ClearSlots(object.get());
    for (const auto& array : left.arrays())
        if (array->references > 1) ++counts["array"];
    for (const auto& array : left.arrays()) {
        const host::Values dropped = std::exchange(array->values, {});
    }
    return counts;
}

}  // namespace

Leftovers EndProgram(Machine& machine, const Symbols& symbols, const Alive& before) {
    machine.DropLocals();
    host::RemoveHandlersOf(&machine);
    if (HasDestructors(symbols)) RunLastDestructors(symbols, before, machine.Globals());
    machine.DropGlobals();
    const Counts cycles = BreakCycles(symbols, before);
    Counts leaks;
    const std::set<const host::Object*> known(before.objects.begin(), before.objects.end());
    for (const host::Object* object : host::LiveObjects())
        if (!known.contains(object)) ++leaks[object->type->name()];
    return {Listed(cycles), Listed(leaks)};
}

}  // namespace script
