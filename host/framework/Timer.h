// The class Timer: an event after a time, once or again and again.
//
// Timers fire while the script waits (App.DoEvents) and while a plug-in yields, so their script
// runs in the middle of an operation. A timer whose event is being handled does not fire again
// until that is done.
#pragma once

namespace host {

class Runtime;

void RegisterTimer(Runtime& runtime);

}  // namespace host
