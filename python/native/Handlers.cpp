// Python's methods registered as the handlers of events.
#include "python/native/Handlers.h"

#include <memory>
#include <utility>

#include "host/calls/Overload.h"
#include "host/calls/Runtime.h"
#include "python/native/Convert.h"
#include "python/native/Errors.h"
#include "python/native/Gate.h"
#include "python/native/Wrapper.h"

namespace pytqx {

namespace {

using host::Value;

Value AsResult(const host::Event& event, PyObject* result) {
    const host::Type& type = event.declaration.result;
    if (type.kind == host::Kind::None) return Value();
    const std::optional<Value> value = FromPython(result, type);
    if (!value || host::ConversionCost(*value, type) == host::kNoConversion)
        throw py::type_error(event.declaration.name + " should give " + TypeText(type) + " or None, not " +
                             Py_TYPE(result)->tp_name);
    return host::ConvertTo(*value, type);
}

Value CallHandler(const host::Event& event, host::Object* self, std::span<Value> arguments) {
    const py::object wrapper = Wrap(host::Ref<host::Object>::Share(self));
    py::tuple passed(arguments.size());
    for (std::size_t i = 0; i < arguments.size(); ++i) passed[i] = ToPython(arguments[i]);
    const py::object result = wrapper.attr(event.declaration.name.c_str())(*passed);
    return AsResult(event, result.ptr());
}

Value Handle(const host::Event& event, host::Object* self, std::span<Value> arguments) {
    const WithInterpreter interpreter;
    try {
        return CallHandler(event, self, arguments);
    } catch (py::error_already_set& error) {
        throw CarriedThroughHost(error);
    } catch (const py::builtin_exception& error) {
        error.set_error();
        py::error_already_set raised;
        throw CarriedThroughHost(raised);
    }
}

void AddHandlers(host::Class& derived, const py::type& type) {
    for (const host::Class* at = derived.superclass(); at; at = at->superclass())
        for (const host::Event& event : at->events()) {
            if (!py::hasattr(type, event.declaration.name.c_str())) continue;
            derived.AddEventHandler({&event, [&event](host::Object* self, std::span<Value> arguments) {
                                         return Handle(event, self, arguments);
                                     }});
        }
}

}  // namespace

void Derive(const py::type& type, const std::string& name) {
    static int number = 0;
    auto* const python = reinterpret_cast<PyTypeObject*>(type.ptr());
    const host::Class* const base = ClassOf(python->tp_base);
    if (!base) throw py::type_error(name + ": a class has one base of the host's, and it stands first");
    const Inside inside;
    auto derived = std::make_unique<host::Class>(name + '#' + std::to_string(++number), base);
    derived->SetDestructor([](host::Object* object) {
        const WithInterpreter interpreter;
        ForgetKept(object);
    });
    AddHandlers(*derived, type);
    Register(python, *host::Runtime::Get().AddClass(std::move(derived)), true);
}

}  // namespace pytqx
