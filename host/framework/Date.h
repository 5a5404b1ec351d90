// The class Date: a moment as a place on earth with a fixed distance to Greenwich sees it.
#pragma once

namespace host {

class Runtime;

void RegisterDate(Runtime& runtime);

}  // namespace host
