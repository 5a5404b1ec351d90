// How a script ends when the system asks for it, and that no scratch file stays however it ends.
//
// SIGINT (Ctrl-C), SIGTERM and SIGHUP end the script in order: its frames are unwound, its objects
// destroyed, and plug-ins close what they have open. The second of them, or a script that takes
// longer than two seconds for that because a long call is at work, ends the process at once; the
// scratch files are then removed by the handler. So they are when a fault ends the process.
#pragma once

namespace tqx {

// What SIGINT ends: a script, or at a prompt only what runs there.
enum class InterruptEnds { Script, Step };

// Handles signals from now on, but for those that the command was told to ignore (nohup).
void HandleSignals(InterruptEnds interrupt = InterruptEnds::Script);

// Whether a signal asked for the end.
bool EndIsAsked();

// Removes what scratch files are left at the end, of objects that something still holds. Gives the
// exit code: 128 and the signal's number after one that ended the script.
int EndAfterSignals(int exitCode);

}  // namespace tqx
