// Signatures compared without regard to names.
#include "host/objects/Signature.h"

#include <algorithm>

namespace host {

bool SameParameters(const Declaration& a, const Declaration& b) {
    return std::equal(a.parameters.begin(), a.parameters.end(), b.parameters.begin(), b.parameters.end(),
                      [](const Parameter& x, const Parameter& y) {
                          return x.type == y.type && x.byRef == y.byRef && x.extends == y.extends &&
                                 x.assigns == y.assigns;
                      });
}

bool SameSignature(const Declaration& a, const Declaration& b) {
    return SameName(a.name, b.name) && a.result == b.result && SameParameters(a, b);
}

}  // namespace host
