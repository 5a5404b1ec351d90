// Looks class names up to spell them as their classes do.
#include "host/reference/Spelling.h"

#include "host/calls/Runtime.h"

namespace host {

Type SpelledType(Type type) {
    const Class* known = type.className.empty() ? nullptr : Runtime::Get().FindClass(type.className);
    if (known) type.className = known->name();
    return type;
}

Declaration SpelledTypes(Declaration declaration) {
    declaration.result = SpelledType(declaration.result);
    for (Parameter& parameter : declaration.parameters) parameter.type = SpelledType(parameter.type);
    return declaration;
}

}  // namespace host
