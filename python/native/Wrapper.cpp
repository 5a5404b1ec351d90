// Wrappers made, found again, collected and finalized.
#include "python/native/Wrapper.h"

#include <structmember.h>

#include <string>
#include <unordered_map>
#include <utility>

#include "python/native/Buffers.h"
#include "python/native/Errors.h"
#include "python/native/Gate.h"
#include "python/native/Member.h"

namespace pytqx {

namespace {

struct Wrapper {
    PyObject_HEAD;
    host::Object* object;  // owned
    PyObject* attributes;  // of custom types; null until there are any
    PyObject* weak;
};

struct Registered {
    const host::Class* hostClass;
    bool custom;
};

// What is left of a custom object's wrapper while only the host holds the object.
struct Kept {
    py::object type;
    py::object attributes;  // may be null
};

// All guarded by the interpreter's lock. Never freed: wrappers may outlive the module.
struct Tables {
    std::unordered_map<PyTypeObject*, Registered> types;
    std::unordered_map<const host::Class*, PyTypeObject*> ofClass;
    std::unordered_map<host::Object*, Wrapper*> wrappers;
    std::unordered_map<host::Object*, Kept> kept;
    std::unordered_map<host::Object*, long> views;
};

Tables& All() {
    static auto* const tables = new Tables;
    return *tables;
}

Wrapper* Cast(PyObject* self) { return reinterpret_cast<Wrapper*>(self); }

bool IsCustom(PyTypeObject* type) {
    const auto found = All().types.find(type);
    return found != All().types.end() && found->second.custom;
}

// --- Life ---------------------------------------------------------------------------------------

PyObject* New(PyTypeObject* type, PyObject*, PyObject*) {
    return AtPythonBorder([&]() -> PyObject* {
        const host::Class* const hostClass = ClassOf(type);
        if (!hostClass) throw py::type_error(std::string(type->tp_name) + " stands for no class of the host");
        const Inside inside;
        host::Ref<host::Object> object = Guarded([&] { return host::NewObject(*hostClass); });
        if (!object) throw std::bad_alloc();
        PyObject* const self = type->tp_alloc(type, 0);
        if (!self) throw py::error_already_set();
        Cast(self)->object = object.Detach();
        All().wrappers[Cast(self)->object] = Cast(self);
        return self;
    });
}

int Init(PyObject* self, PyObject* arguments, PyObject* keywords) {
    return AtPythonBorder([&] { return Construct(self, arguments, keywords) ? 0 : -1; }, -1);
}

// Keeps the attributes of an object that the host holds as well. Also before a garbage collection that found
// the wrapper out of Python's reach, which the host's references it can't see.
void Finalize(PyObject* self) {
    Wrapper* const wrapper = Cast(self);
    if (!wrapper->object || wrapper->object->references < 2 || !IsCustom(Py_TYPE(self))) return;
    All().kept.try_emplace(wrapper->object,
                           Kept{py::reinterpret_borrow<py::object>(reinterpret_cast<PyObject*>(Py_TYPE(self))),
                                py::reinterpret_borrow<py::object>(wrapper->attributes)});
}

void Dealloc(PyObject* self) {
    Wrapper* const wrapper = Cast(self);
    PyObject_GC_UnTrack(self);
    if (PyObject_CallFinalizerFromDealloc(self) < 0) return;
    Finalize(self);  // what a __del__ in Python stood before
    if (wrapper->weak) PyObject_ClearWeakRefs(self);
    PyTypeObject* const type = Py_TYPE(self);
    if (const auto found = All().wrappers.find(wrapper->object);
        found != All().wrappers.end() && found->second == wrapper)
        All().wrappers.erase(found);
    GiveUp(std::exchange(wrapper->object, nullptr));
    Py_CLEAR(wrapper->attributes);
    type->tp_free(self);
    Py_DECREF(type);
}

int Traverse(PyObject* self, visitproc visit, void* arg) {
    Py_VISIT(Py_TYPE(self));
    Py_VISIT(Cast(self)->attributes);
    return 0;
}

int Clear(PyObject* self) {
    Py_CLEAR(Cast(self)->attributes);
    return 0;
}

// --- Attributes -----------------------------------------------------------------------------------

// Only objects of custom types have attributes of their own: a property's misspelt name is an error.
int SetAttribute(PyObject* self, PyObject* name, PyObject* value) {
    if (!IsCustom(Py_TYPE(self)) && !_PyType_Lookup(Py_TYPE(self), name)) {
        PyErr_Format(PyExc_AttributeError, "'%s' object has no attribute '%U'", Py_TYPE(self)->tp_name, name);
        return -1;
    }
    return PyObject_GenericSetAttr(self, name, value);
}

PyObject* Represent(PyObject* self) {
    return PyUnicode_FromFormat("<%s object at %p>", Py_TYPE(self)->tp_name, Cast(self)->object);
}

PyMemberDef members[] = {
    {"__dictoffset__", T_PYSSIZET, offsetof(Wrapper, attributes), READONLY, nullptr},
    {"__weaklistoffset__", T_PYSSIZET, offsetof(Wrapper, weak), READONLY, nullptr},
    {},
};

PyGetSetDef getters[] = {{"__dict__", PyObject_GenericGetDict, PyObject_GenericSetDict, nullptr, nullptr}, {}};

template <class Function>
void* Slot(Function function) {
    return reinterpret_cast<void*>(function);
}

PyTypeObject* MakeType() {
    PyType_Slot slots[] = {
        {Py_tp_new, Slot(&New)},
        {Py_tp_init, Slot(&Init)},
        {Py_tp_dealloc, Slot(&Dealloc)},
        {Py_tp_finalize, Slot(&Finalize)},
        {Py_tp_traverse, Slot(&Traverse)},
        {Py_tp_clear, Slot(&Clear)},
        {Py_tp_setattro, Slot(&SetAttribute)},
        {Py_tp_repr, Slot(&Represent)},
        {Py_tp_members, members},
        {Py_tp_getset, getters},
        {Py_bf_getbuffer, Slot(&GetBuffer)},
        {Py_bf_releasebuffer, Slot(&ReleaseBuffer)},
        {Py_tp_doc, const_cast<char*>("An object of the desk host or of a plug-in.")},
        {0, nullptr},
    };
    PyType_Spec spec = {"tqx._native.Object", sizeof(Wrapper), 0,
                        Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE | Py_TPFLAGS_HAVE_GC, slots};
    PyObject* const type = PyType_FromSpec(&spec);
    if (!type) throw py::error_already_set();
    return reinterpret_cast<PyTypeObject*>(type);
}

// A wrapper for an object that has none.
py::object NewWrapper(const host::Ref<host::Object>& object, PyTypeObject* type) {
    PyObject* const self = type->tp_alloc(type, 0);
    if (!self) throw py::error_already_set();
    Cast(self)->object = host::Ref<host::Object>(object).Detach();
    All().wrappers[object.get()] = Cast(self);
    return py::reinterpret_steal<py::object>(self);
}

py::object Rewrap(const host::Ref<host::Object>& object, Kept kept) {
    py::object self = NewWrapper(object, reinterpret_cast<PyTypeObject*>(kept.type.ptr()));
    Cast(self.ptr())->attributes = kept.attributes.release().ptr();
    return self;
}

}  // namespace

PyTypeObject* WrapperType() {
    static PyTypeObject* const type = MakeType();
    return type;
}

void Register(PyTypeObject* type, const host::Class& hostClass, bool custom) {
    Py_INCREF(type);
    All().types[type] = {&hostClass, custom};
    All().ofClass[&hostClass] = type;
}

const host::Class* ClassOf(PyTypeObject* type) {
    const auto found = All().types.find(type);
    return found == All().types.end() ? nullptr : found->second.hostClass;
}

PyTypeObject* TypeOf(const host::Class& hostClass) {
    for (const host::Class* at = &hostClass; at; at = at->superclass())
        if (const auto found = All().ofClass.find(at); found != All().ofClass.end()) return found->second;
    return WrapperType();
}

py::object Wrap(const host::Ref<host::Object>& object) {
    if (!object) return py::none();
    if (const auto found = All().wrappers.find(object.get()); found != All().wrappers.end())
        return py::reinterpret_borrow<py::object>(reinterpret_cast<PyObject*>(found->second));
    if (auto kept = All().kept.extract(object.get())) return Rewrap(object, std::move(kept.mapped()));
    return NewWrapper(object, TypeOf(*object->type));
}

host::Object* Unwrap(PyObject* wrapper) {
    return PyObject_TypeCheck(wrapper, WrapperType()) ? Cast(wrapper)->object : nullptr;
}

void ForgetKept(host::Object* object) {
    const auto kept = All().kept.extract(object);  // its destructors run after it is out of the table
}

void AddView(host::Object* object) { ++All().views[object]; }

void RemoveView(host::Object* object) {
    const auto found = All().views.find(object);
    if (found != All().views.end() && --found->second == 0) All().views.erase(found);
}

bool HasViews(host::Object* object) { return All().views.contains(object); }

}  // namespace pytqx
