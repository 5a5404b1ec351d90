// What the command says; "tqx: " or the command's name stands before each.
#pragma once

#include "host/messages/Message.h"

namespace tqx {

using host::Message;

// clang-format off
struct CommandMessages {
    Message noCommand = {"there is no command …", "the first word that is no option names none", "tqx --help lists them"};
    Message noOption = {"there is no option …", "a word with - or -- before it that the command doesn't know", "the command's --help lists them; behind a script's name every word is the script's"};
    Message commandMissing = {"a command is missing", "there are options alone, and no terminal for a prompt", "tqx --help lists them"};
    Message scriptMissing = {"a script is missing", "tqx run stands alone", "name its file, - or -e CODE"};
    Message noCheck = {"there is no check …; --list names them", "the id behind --only or --except", "tqx check --list"};
    Message noReason = {"--except needs a reason: ID=REASON", "a check is left out without a word why", "write it behind ="};
    Message noPixelCount = {"\"…\" is not a number of pixels, 0 or more", "the number behind --max-pixels", "digits alone; 0 reads any"};
    Message output = {"standard output can't be written: …", "the system's reason stands behind it", "a full disk, mostly"};
    Message report = {"… can't be written.", "the file behind --junit", "look at the folder's name and at the room left"};
};
// clang-format on

inline constexpr CommandMessages kCommandSays;

}  // namespace tqx
