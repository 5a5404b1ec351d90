// Why a plug-in is not taken.
#pragma once

#include "host/messages/Message.h"

namespace host {

// clang-format off
struct LoadMessages {
    Message none = {"There is no plug-in at ….", "the file is missing", "look at the path: --plugin, TQX_PLUGIN"};
    Message folder = {"… is a folder, not a plug-in.", "the path leads to a folder", "name the file in it"};
    Message cannotLoad = {"… can't be loaded as a plug-in: …", "the system's loader refuses it; its reason stands behind", "a library that it needs may be missing, or it was made for another machine"};
    Message noEntry = {"… is no plug-in: it has no entry point … (…).", "a library, but none that hosts know", "look whether it is the right file"};
    Message refused = {"…: ….", "the host refuses a class that the plug-in registers; why stands behind", "see the reasons below"};
    Message noClass = {"… is a plug-in without any class.", "its entry point registered nothing", "tqx check tells what it did"};
    Message notLoaded = {"… is not loaded.", "a check looks into a library that is not there any more", "run the check by itself: --only"};
};

// What is wrong with a class, behind "class "Name" is refused: ".
struct ClassMessages {
    Message refused = {"class \"…\" is refused: …", "something in its records is wrong; why stands behind", "the plug-in's author can mend it"};
    Message unknownSuperclass = {"its superclass … is unknown", "the class it inherits was not registered before", "register that one first"};
    Message nameTaken = {"there is a class of this name already", "another plug-in or the framework has it", "use one of the two"};
    Message version = {"it is of interface version …; this host has …", "the record's layout is another one", "build the plug-in against this interface"};
    Message noName = {"it has no proper name", "no letters, digits and _", "name it"};
    Message instanceSize = {"its instance data has … bytes", "the size is negative or beyond a megabyte", "mend the record"};
    Message statesCount = {"it states … …", "a count of members is negative or beyond any table", "mend the count"};
    Message noTable = {"it states … … but has no table of them", "the pointer is missing", "mend the pointer or the count"};
    Message noDeclaration = {"without a declaration", "a member's declaration is missing", "write it"};
    Message unreadable = {"\"…\", column …: … was expected, not …", "a declaration can't be read", "mend it there"};
    Message comesTwice = {"… comes twice", "two members have one name and the same parameters", "delete one"};
    Message fieldOutside = {"its field at byte … lies outside the instance data of … bytes", "a property's field is none of the record", "mend the offset or the size"};
    Message noProperName = {"property \"…\" has no proper name or type", "no letters, digits and _", "mend the record"};
    Message neitherReadNorWritten = {"it can be neither read nor written", "a property without getter and setter", "give it one of them"};
    Message byRef = {"…: a function can't take ByRef or ParamArray arguments", "calls go by value", "leave the word out"};
    Message tooManyArguments = {"… takes more than … arguments", "calls have a limit", "take an object in their place"};
    Message noFunction = {"… has no function", "the pointer is missing", "write the function"};
    Message nothingToAssign = {"… is assignable but has no type to assign", "a method with a setter and without a result", "give it a result"};
};
// clang-format on

inline constexpr LoadMessages kLoadSays;
inline constexpr ClassMessages kClassSays;

}  // namespace host
