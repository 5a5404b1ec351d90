#include "host/framework/Framework.h"

namespace host {

void RegisterFramework(Runtime&) {}

}  // namespace host
