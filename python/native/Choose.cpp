// Python's arguments tried on every overload, and the nearest taken.
#include "python/native/Choose.h"

#include <optional>

#include "host/calls/Declaration.h"
#include "host/calls/Overload.h"
#include "python/native/Convert.h"

namespace pytqx {

namespace {

using host::Fit;
using host::Method;
using host::Parameter;
using host::Value;

struct Fitted {
    Fit fit;
    Chosen chosen;
};

// The arguments in the order of the parameters; null where one is left out. Those beyond the parameters
// are for a ParamArray. False when a name is unknown, stands twice, or there are too many.
bool Place(const std::vector<Parameter>& parameters, const PythonArguments& arguments, std::vector<PyObject*>& placed) {
    const bool open = !parameters.empty() && parameters.back().paramArray;
    const auto count = static_cast<std::size_t>(arguments.count);
    if (count > parameters.size() && !open) return false;
    placed.assign(arguments.values, arguments.values + count);
    placed.resize(std::max(count, parameters.size()));
    if (!arguments.keywords) return true;
    for (Py_ssize_t k = 0; k < PyTuple_GET_SIZE(arguments.keywords); ++k) {
        const std::string name = pybind11::str(PyTuple_GET_ITEM(arguments.keywords, k));
        std::size_t i = 0;
        while (i < parameters.size() && !host::SameName(parameters[i].name, name)) ++i;
        if (i == parameters.size() || placed[i]) return false;
        placed[i] = arguments.values[arguments.count + k];
    }
    return true;
}

// One argument as its parameter's type; false when it can't be.
bool Pass(PyObject* argument, const host::Type& type, Fit& fit, Value& passed) {
    std::optional<Value> value = FromPython(argument, type);
    if (!value) return false;
    const int cost = host::ConversionCost(*value, type);
    if (cost == host::kNoConversion) return false;
    fit.cost += cost;
    passed = cost == 0 ? std::move(*value) : host::ConvertTo(*value, type);
    return true;
}

bool PassRest(std::span<PyObject* const> rest, const host::Type& type, Fit& fit, Value& passed) {
    auto array = host::MakeArray(ElementOf(type));
    for (PyObject* argument : rest) {
        Value element;
        if (!argument || !Pass(argument, array->element, fit, element)) return false;
        array->values.push_back(std::move(element));
        ++fit.cost;
    }
    ++fit.defaults;
    passed = Value(std::move(array));
    return true;
}

bool PassAll(const std::vector<Parameter>& parameters, std::span<PyObject* const> placed, Fitted& fitted) {
    fitted.chosen.arguments.resize(parameters.size());
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const Parameter& parameter = parameters[i];
        Value& value = fitted.chosen.arguments[i];
        if (parameter.paramArray) {
            const auto rest = placed[i] ? placed.subspan(i) : placed.subspan(placed.size());
            return PassRest(rest, parameter.type, fitted.fit, value);
        }
        if (placed[i]) {
            if (!Pass(placed[i], parameter.type, fitted.fit, value)) return false;
        } else if (parameter.optional) {
            value = parameter.defaultValue;
            ++fitted.fit.defaults;
        } else {
            return false;
        }
    }
    return true;
}

// Whether the number of arguments can be right; told before anything is converted.
bool CountFits(const std::vector<Parameter>& parameters, const PythonArguments& arguments) {
    const auto named = arguments.keywords ? PyTuple_GET_SIZE(arguments.keywords) : 0;
    const auto count = static_cast<std::size_t>(arguments.count + named);
    if (count > parameters.size()) return !parameters.empty() && parameters.back().paramArray;
    if (count == parameters.size()) return true;
    return parameters[count].optional || parameters[count].paramArray || named > 0;
}

std::optional<Fitted> FitOf(const Method& method, const PythonArguments& arguments, PyObject* assigned) {
    const auto& parameters = method.declaration.parameters;
    if ((assigned && !method.assignable()) || !CountFits(parameters, arguments)) return {};
    std::vector<PyObject*> placed;
    Fitted fitted{{}, {&method, {}, {}}};
    if (!Place(parameters, arguments, placed) || !PassAll(parameters, placed, fitted)) return {};
    if (assigned && !Pass(assigned, method.declaration.result, fitted.fit, fitted.chosen.assigned)) return {};
    return fitted;
}

std::string TypesText(const PythonArguments& arguments) {
    std::string text;
    const Py_ssize_t named = arguments.keywords ? PyTuple_GET_SIZE(arguments.keywords) : 0;
    for (Py_ssize_t i = 0; i < arguments.count + named; ++i) {
        if (i > 0) text += ", ";
        if (i >= arguments.count)
            text += std::string(pybind11::str(PyTuple_GET_ITEM(arguments.keywords, i - arguments.count))) + '=';
        text += Py_TYPE(arguments.values[i])->tp_name;
    }
    return text;
}

[[noreturn]] void Fail(const std::string& what, const char* why, std::span<const Method* const> candidates,
                       const PythonArguments& arguments, PyObject* assigned) {
    std::string text = what + '(' + TypesText(arguments) + ')';
    if (assigned) text += std::string(" = ") + Py_TYPE(assigned)->tp_name;
    text += std::string(": ") + why;
    for (const Method* method : candidates)
        if (!assigned || method->assignable()) text += "\n  " + DeclarationText(method->declaration);
    throw pybind11::type_error(text);
}

}  // namespace

Chosen Choose(const std::string& what, std::span<const Method* const> candidates, const PythonArguments& arguments,
              PyObject* assigned) {
    std::optional<Fitted> best;
    std::optional<pybind11::error_already_set> outOfRange;
    bool several = false;
    for (const Method* method : candidates) {
        try {
            std::optional<Fitted> fitted = FitOf(*method, arguments, assigned);
            if (!fitted || (best && best->fit < fitted->fit)) continue;
            several = best && best->fit == fitted->fit;
            best = std::move(fitted);
        } catch (const pybind11::error_already_set& error) {
            outOfRange = error;  // another overload may take the number
        }
    }
    if (!best && outOfRange) throw std::move(*outOfRange);
    if (!best) Fail(what, "no form takes these arguments; there is", candidates, arguments, assigned);
    if (several) Fail(what, "more than one form takes these arguments:", candidates, arguments, assigned);
    return std::move(best->chosen);
}

}  // namespace pytqx
