// One conversion a kind of type, in each direction.
#include "python/native/Convert.h"

#include <string>
#include <utility>

#include "host/framework/FolderItem.h"
#include "python/native/Wrapper.h"

namespace pytqx {

namespace {

using host::Kind;
using host::Type;
using host::Value;
using MaybeValue = std::optional<Value>;

py::object& ColorType() {
    static auto* const type = new py::object;
    return *type;
}

bool IsColor(PyObject* value) { return ColorType() && PyObject_IsInstance(value, ColorType().ptr()) == 1; }

bool IsNumpyBool(PyObject* value) { return std::string_view(Py_TYPE(value)->tp_name) == "numpy.bool_"; }

// --- Numbers --------------------------------------------------------------------------------------

[[noreturn]] void FailRange(PyObject* number, const Type& place) {
    const std::string text = py::str(number);
    PyErr_SetString(PyExc_OverflowError, (text + " is out of the range of " + TypeText(place)).c_str());
    throw py::error_already_set();
}

// A whole number above those of Int64.
MaybeValue UpperHalf(PyObject* number, const Type& place) {
    const unsigned long long whole = PyLong_AsUnsignedLongLong(number);
    if (PyErr_Occurred()) {
        PyErr_Clear();
        FailRange(number, place);
    }
    return Value::OfKind(Kind::UInt64, static_cast<std::int64_t>(whole));
}

// A whole number as Integer where it fits, else as Int64; as UInt64 where only that holds it.
MaybeValue Whole(PyObject* value, const Type& place) {
    const auto number = py::reinterpret_steal<py::object>(PyNumber_Index(value));
    if (!number) throw py::error_already_set();
    int overflow = 0;
    const long long whole = PyLong_AsLongLongAndOverflow(number.ptr(), &overflow);
    if (overflow > 0 && place.kind == Kind::UInt64) return UpperHalf(number.ptr(), place);
    if (overflow) FailRange(number.ptr(), place);
    if (host::IsWholeKind(place.kind) &&
        (std::cmp_less(whole, host::LowestOf(place.kind)) || std::cmp_greater(whole, host::HighestOf(place.kind))))
        FailRange(number.ptr(), place);
    if (whole >= INT32_MIN && whole <= INT32_MAX) return Value(static_cast<std::int32_t>(whole));
    return Value(static_cast<std::int64_t>(whole));
}

MaybeValue Real(PyObject* value) {
    const double real = PyFloat_AsDouble(value);
    if (real == -1.0 && PyErr_Occurred()) throw py::error_already_set();
    return Value(real);
}

bool HasFloat(PyObject* value) {
    const PyNumberMethods* const number = Py_TYPE(value)->tp_as_number;
    return number && number->nb_float && !PyBool_Check(value) && !IsNumpyBool(value);
}

MaybeValue Number(PyObject* value, const Type& place) {
    if (PyBool_Check(value) || IsColor(value)) return {};
    if (PyFloat_Check(value)) return host::IsRealKind(place.kind) ? Real(value) : MaybeValue();
    if (PyIndex_Check(value) && !IsNumpyBool(value)) return Whole(value, place);
    return host::IsRealKind(place.kind) && HasFloat(value) ? Real(value) : MaybeValue();
}

MaybeValue ColorOf(PyObject* value) {
    if (!PyLong_Check(value) || PyBool_Check(value)) return {};
    const long long color = PyLong_AsLongLong(value);
    if (PyErr_Occurred() || color < 0 || color > 0xffffff) {
        PyErr_Clear();
        FailRange(value, host::TypeNamed("Color"));
    }
    return Value(static_cast<sdk::Color>(color));
}

// --- Text, arrays, objects --------------------------------------------------------------------------

MaybeValue Text(PyObject* value) {
    Py_ssize_t length = 0;
    if (PyUnicode_Check(value)) {
        const char* const text = PyUnicode_AsUTF8AndSize(value, &length);
        if (!text) throw py::error_already_set();
        return Value(host::MakeString({text, static_cast<std::size_t>(length)}));
    }
    if (!PyBytes_Check(value)) return {};
    const std::string_view bytes(PyBytes_AS_STRING(value), static_cast<std::size_t>(PyBytes_GET_SIZE(value)));
    return Value(host::MakeString(bytes, sdk::Encoding::None));
}

MaybeValue ArrayFrom(PyObject* value, const Type& place) {
    if (value == Py_None) return Value(nullptr);
    if (!PySequence_Check(value) || PyUnicode_Check(value) || PyBytes_Check(value)) return {};
    const auto items = py::reinterpret_steal<py::object>(PySequence_Fast(value, "a sequence is needed"));
    if (!items) throw py::error_already_set();
    const Type element = ElementOf(place);
    auto array = host::MakeArray(element);
    for (Py_ssize_t i = 0; i < PySequence_Fast_GET_SIZE(items.ptr()); ++i) {
        MaybeValue item = FromPython(PySequence_Fast_GET_ITEM(items.ptr(), i), element);
        if (!item) return {};
        array->values.push_back(host::IsNumberKind(element.kind) ? NumberAs(*item, element.kind) : std::move(*item));
    }
    return Value(std::move(array));
}

// The text of a str or a path object; nothing for any other.
std::optional<std::string> PathText(PyObject* value) {
    const auto path = py::reinterpret_steal<py::object>(PyOS_FSPath(value));
    if (!path) {
        PyErr_Clear();
        return {};
    }
    PyObject* encoded = nullptr;
    if (!PyUnicode_FSConverter(path.ptr(), &encoded)) throw py::error_already_set();
    const auto bytes = py::reinterpret_steal<py::bytes>(encoded);
    return std::string(bytes);
}

MaybeValue ObjectFrom(PyObject* value, const Type& place) {
    if (value == Py_None) return Value(nullptr);
    if (host::Object* const object = Unwrap(value)) return Value(host::Ref<host::Object>::Share(object));
    if (host::SameName(place.className, "FolderItem"))
        if (const auto path = PathText(value)) return Value(host::NewFolderItem(*path));
    return PyBytes_Check(value) ? Text(value) : MaybeValue();  // the host may make an object of them
}

MaybeValue Anything(PyObject* value) {
    if (IsColor(value)) return ColorOf(value);
    if (PyBool_Check(value)) return Value(value == Py_True);
    if (PyUnicode_Check(value) || PyBytes_Check(value)) return Text(value);
    const Type number = host::TypeNamed(PyFloat_Check(value) ? "Double" : "Int64");
    if (PyFloat_Check(value) || PyIndex_Check(value)) return Number(value, number);
    return ObjectFrom(value, host::TypeNamed("Variant"));
}

py::object TextToPython(const host::String* string) {
    if (!string) return py::none();
    const std::string_view bytes = host::Bytes(string);
    if (host::EncodingOf(string) == sdk::Encoding::None) return py::bytes(bytes.data(), bytes.size());
    const auto shared = host::Ref<host::String>::Share(const_cast<host::String*>(string));
    const std::string text = host::SoundUtf8(host::Bytes(host::ConvertEncoding(shared, sdk::Encoding::Utf8)));
    return py::str(text);
}

py::object ListOf(const host::Array* array) {
    if (!array) return py::none();
    py::list list;
    for (const Value& value : array->values) list.append(ToPython(value));
    return list;
}

}  // namespace

std::optional<Value> FromPython(PyObject* value, const Type& place) {
    if (place.IsVariant()) return Anything(value);
    switch (place.kind) {
        case Kind::Boolean:
            if (IsNumpyBool(value)) return Value(PyObject_IsTrue(value) == 1);
            return PyBool_Check(value) ? MaybeValue(Value(value == Py_True)) : MaybeValue();
        case Kind::Color:
            return ColorOf(value);
        case Kind::String:
            return Text(value);
        case Kind::Array:
            return ArrayFrom(value, place);
        case Kind::Object:
            return ObjectFrom(value, place);
        case Kind::None:
            return {};
        default:
            return Number(value, place);
    }
}

py::object ToPython(const Value& value) {
    switch (value.kind()) {
        case Kind::None:
            return py::none();
        case Kind::Boolean:
            return py::bool_(value.ToBoolean());
        case Kind::Color:
            return ColorType()(value.ToInt64());
        case Kind::Double:
        case Kind::Single:
            return py::float_(value.ToDouble());
        case Kind::String:
            return TextToPython(value.string());
        case Kind::Array:
            return ListOf(value.array());
        case Kind::Object:
            return Wrap(host::Ref<host::Object>::Share(value.object()));
        case Kind::UInt64:
            return py::int_(static_cast<std::uint64_t>(value.ToInt64()));
        default:
            return py::int_(value.ToInt64());
    }
}

void SetColorType(py::object type) { ColorType() = std::move(type); }

}  // namespace pytqx
