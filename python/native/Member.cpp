// Calls, reads and writes of members, from Python to the host and back.
#include "python/native/Member.h"

#include <structmember.h>

#include <new>
#include <unordered_map>
#include <vector>

#include "host/calls/Call.h"
#include "host/calls/Overload.h"
#include "python/native/Choose.h"
#include "python/native/Convert.h"
#include "python/native/Errors.h"
#include "python/native/Explanation.h"
#include "python/native/Gate.h"
#include "python/native/Wrapper.h"

namespace pytqx {

namespace {

using host::Method;
using host::Object;
using host::Value;

struct Overloads {
    const host::Class* owner;
    std::string what;  // "PictureTQX.Row"
    std::vector<const Method*> instance;
    std::vector<const Method*> shared;
    bool assignable;
};

// --- Calls ----------------------------------------------------------------------------------------

// Whether the method frees what views look at: the class's own destructor under a name, or a constructor.
bool FreesBytes(const Method& method) {
    const auto* const definition = method.owner ? method.owner->definition() : nullptr;
    if (definition && definition->destructor &&
        method.function == reinterpret_cast<sdk::AnyFunction>(definition->destructor))
        return true;
    return host::SameName(method.declaration.name, "Constructor");
}

void RefuseViewed(const Overloads& overloads, const Method& method, Object* self) {
    if (!self || !HasViews(self) || !FreesBytes(method)) return;
    throw py::buffer_error(overloads.what +
                           ": arrays look at this object's bytes, or at those of a view of it; "
                           "delete them first");
}

void RefuseHusk(const Overloads& overloads, const Object* self) {
    if (self && self->destroyed)
        throw py::value_error(overloads.what + " is used on an object whose destructor has run");
}

Value Run(const Chosen& chosen, Object* self, bool assigned) {
    auto& arguments = const_cast<std::vector<Value>&>(chosen.arguments);
    if (!assigned) return host::Invoke(*chosen.method, self, arguments);
    host::InvokeSetter(*chosen.method, self, arguments, chosen.assigned);
    return Value();
}

py::object CallMember(const Overloads& overloads, Object* self, const PythonArguments& arguments,
                      PyObject* assigned = nullptr) {
    const Inside inside;
    const Chosen chosen = Choose(overloads.what, self ? overloads.instance : overloads.shared, arguments, assigned);
    RefuseHusk(overloads, self);
    RefuseViewed(overloads, *chosen.method, self);
    const auto keepAlive = host::Ref<Object>::Share(self);
    const Explaining explaining(
        {chosen.method, nullptr, self, chosen.arguments, assigned ? &chosen.assigned : nullptr, {}});
    const Value result = Guarded([&] { return Run(chosen, self, assigned != nullptr); });
    explaining.Returned(result);
    return ToPython(result);
}

Object* SelfOf(const Overloads& overloads, PyObject* wrapper) {
    Object* const self = Unwrap(wrapper);
    if (self && IsA(self, *overloads.owner)) return self;
    throw py::type_error(overloads.what + " needs a " + overloads.owner->name() + ", not a " +
                         Py_TYPE(wrapper)->tp_name);
}

// --- Method ---------------------------------------------------------------------------------------

struct MethodObject {
    PyObject_HEAD;
    vectorcallfunc call;
    Overloads* overloads;
    PyObject* documentation;
};

// What picture.Row or PictureTQX.CreatePictureTQX is: a method with an instance, or without for shared ones.
struct BoundObject {
    PyObject_HEAD;
    MethodObject* method;
    PyObject* self;  // null for shared methods
};

PyTypeObject* methodType = nullptr;
PyTypeObject* boundType = nullptr;
PyTypeObject* propertyType = nullptr;

MethodObject* AsMethod(PyObject* object) { return reinterpret_cast<MethodObject*>(object); }
BoundObject* AsBound(PyObject* object) { return reinterpret_cast<BoundObject*>(object); }

PyObject* CallMethod(PyObject* callable, PyObject* const* values, std::size_t flags, PyObject* keywords) {
    return AtPythonBorder([&] {
        const Overloads& overloads = *AsMethod(callable)->overloads;
        const Py_ssize_t count = PyVectorcall_NARGS(flags);
        if (count < 1) throw py::type_error(overloads.what + " needs a " + overloads.owner->name());
        Object* const self = SelfOf(overloads, values[0]);
        return CallMember(overloads, self, {values + 1, count - 1, keywords}).release().ptr();
    });
}

PyObject* Bind(MethodObject* method, PyObject* self) {
    BoundObject* const bound = PyObject_New(BoundObject, boundType);
    if (!bound) return nullptr;
    bound->method = reinterpret_cast<MethodObject*>(Py_NewRef(reinterpret_cast<PyObject*>(method)));
    bound->self = Py_XNewRef(self);
    return reinterpret_cast<PyObject*>(bound);
}

PyObject* GetMethod(PyObject* descriptor, PyObject* instance, PyObject*) {
    MethodObject* const method = AsMethod(descriptor);
    if (!instance) return method->overloads->shared.empty() ? Py_NewRef(descriptor) : Bind(method, nullptr);
    return method->overloads->assignable ? Bind(method, instance) : PyMethod_New(descriptor, instance);
}

void FreeMethod(PyObject* self) {
    PyTypeObject* const type = Py_TYPE(self);
    delete AsMethod(self)->overloads;
    Py_CLEAR(AsMethod(self)->documentation);
    type->tp_free(self);
    Py_DECREF(type);
}

PyObject* NameOf(const MethodObject* method) {
    const std::string& what = method->overloads->what;
    return PyUnicode_FromString(what.substr(what.find('.') + 1).c_str());
}

PyObject* RepresentMethod(PyObject* self) {
    return PyUnicode_FromFormat("<method %s>", AsMethod(self)->overloads->what.c_str());
}

// --- Bound methods ----------------------------------------------------------------------------------

py::object CallBound(BoundObject* bound, const PythonArguments& arguments, PyObject* assigned = nullptr) {
    const Overloads& overloads = *bound->method->overloads;
    return CallMember(overloads, bound->self ? SelfOf(overloads, bound->self) : nullptr, arguments, assigned);
}

// The arguments of a call as a tuple and a dictionary, in one row with the names behind.
class JoinedArguments {
  public:
    JoinedArguments(PyObject* arguments, PyObject* keywords)
        : plain_(PyTuple_GET_SIZE(arguments)),
          values_(PySequence_Fast_ITEMS(arguments), PySequence_Fast_ITEMS(arguments) + plain_) {
        py::list names;
        if (keywords)
            for (const auto& [name, value] : py::reinterpret_borrow<py::dict>(keywords)) {
                names.append(name);
                values_.push_back(value.ptr());
            }
        names_ = py::tuple(names);
    }

    // Good as long as this, the tuple and the dictionary are.
    PythonArguments All() const { return {values_.data(), plain_, names_.ptr()}; }

  private:
    Py_ssize_t plain_;
    std::vector<PyObject*> values_;
    py::tuple names_;
};

PyObject* CallBoundWith(PyObject* self, PyObject* arguments, PyObject* keywords) {
    return AtPythonBorder([&] {
        const JoinedArguments joined(arguments, keywords);
        return CallBound(AsBound(self), joined.All()).release().ptr();
    });
}

// The arguments in picture.Row[3] or picture.RowInFormat[3, 2].
PythonArguments InBrackets(PyObject* const& key) {
    if (PyTuple_Check(key)) return {PySequence_Fast_ITEMS(key), PyTuple_GET_SIZE(key), nullptr};
    return {&key, 1, nullptr};
}

PyObject* GetItem(PyObject* self, PyObject* key) {
    return AtPythonBorder([&] { return CallBound(AsBound(self), InBrackets(key)).release().ptr(); });
}

int SetItem(PyObject* self, PyObject* key, PyObject* value) {
    return AtPythonBorder(
        [&] {
            if (!value) throw py::type_error(AsBound(self)->method->overloads->what + " can't be deleted");
            CallBound(AsBound(self), InBrackets(key), value);
            return 0;
        },
        -1);
}

void FreeBound(PyObject* self) {
    PyTypeObject* const type = Py_TYPE(self);
    Py_CLEAR(AsBound(self)->method);
    Py_CLEAR(AsBound(self)->self);
    PyObject_Free(self);
    Py_DECREF(type);
}

PyObject* RepresentBound(PyObject* self) {
    return PyUnicode_FromFormat("<bound method %s>", AsBound(self)->method->overloads->what.c_str());
}

PyObject* DocumentationOfBound(PyObject* self, void*) { return Py_NewRef(AsBound(self)->method->documentation); }
PyObject* NameOfBound(PyObject* self, void*) { return NameOf(AsBound(self)->method); }
PyObject* NameOfMethod(PyObject* self, void*) { return NameOf(AsMethod(self)); }

// --- Property ---------------------------------------------------------------------------------------

struct PropertyObject {
    PyObject_HEAD;
    const host::Property* property;
    PyObject* documentation;
};

PropertyObject* AsProperty(PyObject* object) { return reinterpret_cast<PropertyObject*>(object); }

Object* OwnerOf(const host::Property& property, PyObject* wrapper) {
    Object* const self = Unwrap(wrapper);
    if (!self || !IsA(self, *property.owner))
        throw py::type_error(property.name + " needs a " + property.owner->name());
    if (self->destroyed) throw py::value_error(property.name + " is used on an object whose destructor has run");
    return self;
}

Value ReadProperty(const host::Property& property, Object* self) {
    // A field is read at once.
    if (!property.read && !property.getter.function) return host::GetProperty(property, self);
    return Guarded([&] { return host::GetProperty(property, self); });
}

PyObject* GetPropertyOf(PyObject* descriptor, PyObject* instance, PyObject*) {
    if (!instance) return Py_NewRef(descriptor);
    return AtPythonBorder([&] {
        const host::Property& property = *AsProperty(descriptor)->property;
        Object* const self = OwnerOf(property, instance);
        const Inside inside;
        return ToPython(ReadProperty(property, self)).release().ptr();
    });
}

void WriteProperty(const host::Property& property, Object* self, PyObject* value) {
    if (!property.writable()) throw py::attribute_error(property.name + " can only be read");
    if (!value) throw py::attribute_error(property.name + " can't be deleted");
    const Inside inside;
    const std::optional<Value> given = FromPython(value, property.type);
    if (!given || host::ConversionCost(*given, property.type) == host::kNoConversion)
        throw py::type_error(property.name + " is " + TypeText(property.type) + " and can't be a " +
                             Py_TYPE(value)->tp_name);
    const Value converted = host::ConvertTo(*given, property.type);
    Guarded([&] {
        host::SetProperty(property, self, converted);
        return Value();
    });
}

int SetPropertyOf(PyObject* descriptor, PyObject* instance, PyObject* value) {
    return AtPythonBorder(
        [&] {
            const host::Property& property = *AsProperty(descriptor)->property;
            WriteProperty(property, OwnerOf(property, instance), value);
            return 0;
        },
        -1);
}

void FreeProperty(PyObject* self) {
    PyTypeObject* const type = Py_TYPE(self);
    Py_CLEAR(AsProperty(self)->documentation);
    PyObject_Free(self);
    Py_DECREF(type);
}

// --- Types ------------------------------------------------------------------------------------------

template <class Function>
void* Slot(Function function) {
    return reinterpret_cast<void*>(function);
}

PyTypeObject* MakeType(const char* name, std::size_t size, unsigned long flags, PyType_Slot* slots) {
    PyType_Spec spec = {name, static_cast<int>(size), 0, static_cast<unsigned>(Py_TPFLAGS_DEFAULT | flags), slots};
    PyObject* const type = PyType_FromSpec(&spec);
    if (!type) throw py::error_already_set();
    return reinterpret_cast<PyTypeObject*>(type);
}

PyMemberDef methodMembers[] = {
    {"__vectorcalloffset__", T_PYSSIZET, offsetof(MethodObject, call), READONLY, nullptr},
    {"__doc__", T_OBJECT, offsetof(MethodObject, documentation), READONLY, nullptr},
    {},
};
PyGetSetDef methodGetters[] = {{"__name__", NameOfMethod, nullptr, nullptr, nullptr}, {}};
PyType_Slot methodSlots[] = {
    {Py_tp_call, Slot(&PyVectorcall_Call)},
    {Py_tp_descr_get, Slot(&GetMethod)},
    {Py_tp_dealloc, Slot(&FreeMethod)},
    {Py_tp_repr, Slot(&RepresentMethod)},
    {Py_tp_members, methodMembers},
    {Py_tp_getset, methodGetters},
    {0, nullptr},
};

PyGetSetDef boundGetters[] = {{"__doc__", DocumentationOfBound, nullptr, nullptr, nullptr},
                              {"__name__", NameOfBound, nullptr, nullptr, nullptr},
                              {}};
PyType_Slot boundSlots[] = {
    {Py_tp_call, Slot(&CallBoundWith)},
    {Py_mp_subscript, Slot(&GetItem)},
    {Py_mp_ass_subscript, Slot(&SetItem)},
    {Py_tp_dealloc, Slot(&FreeBound)},
    {Py_tp_repr, Slot(&RepresentBound)},
    {Py_tp_getset, boundGetters},
    {0, nullptr},
};

PyMemberDef propertyMembers[] = {
    {"__doc__", T_OBJECT, offsetof(PropertyObject, documentation), READONLY, nullptr},
    {},
};
PyType_Slot propertySlots[] = {
    {Py_tp_descr_get, Slot(&GetPropertyOf)},
    {Py_tp_descr_set, Slot(&SetPropertyOf)},
    {Py_tp_dealloc, Slot(&FreeProperty)},
    {Py_tp_members, propertyMembers},
    {0, nullptr},
};

const Overloads& ConstructorsOf(const host::Class& type) {
    static auto* const known = new std::unordered_map<const host::Class*, Overloads>;
    const auto [entry, added] = known->try_emplace(&type);
    if (added) entry->second = {&type, type.name(), type.FindMethods("Constructor"), {}, false};
    return entry->second;
}

bool AnyAssignable(const std::vector<const Method*>& methods) {
    for (const Method* method : methods)
        if (method->assignable()) return true;
    return false;
}

}  // namespace

py::object MakeMethod(const host::Class& owner, const std::string& name, const std::string& documentation) {
    MethodObject* const method = PyObject_New(MethodObject, methodType);
    if (!method) throw py::error_already_set();
    method->call = &CallMethod;
    method->documentation = py::str(documentation).release().ptr();
    method->overloads =
        new Overloads{&owner, owner.name() + '.' + name, owner.FindMethods(name), owner.FindSharedMethods(name), false};
    method->overloads->assignable = AnyAssignable(method->overloads->instance);
    return py::reinterpret_steal<py::object>(reinterpret_cast<PyObject*>(method));
}

py::object MakeProperty(const host::Property& property, const std::string& documentation) {
    PropertyObject* const object = PyObject_New(PropertyObject, propertyType);
    if (!object) throw py::error_already_set();
    object->property = &property;
    object->documentation = py::str(documentation).release().ptr();
    return py::reinterpret_steal<py::object>(reinterpret_cast<PyObject*>(object));
}

bool Construct(PyObject* self, PyObject* arguments, PyObject* keywords) {
    Object* const object = Unwrap(self);
    const Overloads& constructors = ConstructorsOf(*object->type);
    const bool any = PyTuple_GET_SIZE(arguments) > 0 || (keywords && PyDict_Size(keywords) > 0);
    if (constructors.instance.empty() && !any) return true;
    const JoinedArguments joined(arguments, keywords);
    CallMember(constructors, object, joined.All());
    return true;
}

void AddMemberTypes(py::module_& module) {
    methodType = MakeType("tqx._native.Method", sizeof(MethodObject),
                          Py_TPFLAGS_HAVE_VECTORCALL | Py_TPFLAGS_METHOD_DESCRIPTOR, methodSlots);
    boundType = MakeType("tqx._native.BoundMethod", sizeof(BoundObject), 0, boundSlots);
    propertyType = MakeType("tqx._native.Property", sizeof(PropertyObject), 0, propertySlots);
    module.attr("Method") = py::handle(reinterpret_cast<PyObject*>(methodType));
    module.attr("BoundMethod") = py::handle(reinterpret_cast<PyObject*>(boundType));
    module.attr("Property") = py::handle(reinterpret_cast<PyObject*>(propertyType));
}

}  // namespace pytqx
