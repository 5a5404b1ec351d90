// The checks of a plug-in: the id of each, what holds when it passes, and what to do when it doesn't.
#pragma once

#include "host/messages/Message.h"

namespace host {

// clang-format off
struct CheckMessages {
    Message loading = {"loading", "The library loads, and its entry point offers classes.", "tqx run -e 1 tells the loader's reason"};
    Message exportedSymbols = {"exported-symbols", "Nothing but the entry point is exported.", "hide what is for the library itself: -fvisibility=hidden"};
    Message linkedLibraries = {"linked-libraries", "No library is needed beyond the C++ and C libraries.", "link it statically, or leave it out"};
    Message startUp = {"start-up", "The resolver is asked for first, then the version is stated, then classes are registered.", "ask for the resolver, state the version, then register"};
    Message hostNames = {"host-names", "Every host function that is asked for is one that hosts have.", "mend the name; a function that is not there is null"};
    Message declarations = {"declarations", "Every declaration can be read, and reads the same when it is written out.", "mend the declaration that is named"};
    Message classes = {"classes", "The host takes every class.", "the host's reason stands behind the class"};
    Message records = {"records", "Flags, names and types go together.", "mend the flags or the name of the member"};
    Message constants = {"constants", "Every constant has a value.", "give it a value, in the record or the declaration"};
    Message fields = {"fields", "Fields of instances are aligned and don't overlap.", "mend the offset or the size in the record"};
    Message overloads = {"overloads", "No call fits two overloads equally well.", "rename one, or change its parameters"};
    Message codePointers = {"code-pointers", "Every function of a record lies in the plug-in.", "the record points somewhere else: mend it"};
    Message events = {"events", "Every event can be raised, and its handler gets what was passed.", "mend the event's declaration"};
    Message calls = {"calls", "Nothing that scripts can do crashes or hangs.", "run the script below the finding; --in-process under a debugger"};
    Message references = {"references", "Nothing is left alive, and nothing is given up twice.", "balance what is retained and released in the member that is named"};
    Message guardBytes = {"guard-bytes", "Nothing is written beside memory of the host.", "look for an index past the end in the member that is named"};
    Message unaskedYields = {"unasked-yields", "Nothing yields without being asked to.", "yield only where the property asks for it"};
    Message exceptions = {"exceptions", "Exceptions have a class that is known and a text that can be shown.", "raise a class that hosts have, with a text in UTF-8"};
    Message properties = {"properties", "What is assigned to a property is what it then has.", "let getter and setter mean the same"};
    Message repetition = {"repetition", "The same call with the same input gives the same bytes.", "look for memory that is not set, or for state between calls"};
    Message sources = {"sources", "What a call only reads is the same afterwards.", "write to the destination only"};
    Message strayWrites = {"stray-writes", "Only the channels and pixels of a picture are written.", "look at the last row and column, at clips and at single channels"};
    Message hostFunctions = {"host-functions", "Each host function may fail.", "look at what each host function gave before using it"};
    Message allocation = {"allocation", "Each allocation may fail.", "look at what each allocation gave before using it"};
    Message systemCalls = {"system-calls", "Each call of the system for files and mappings may fail.", "look at what each call of the system gave"};
    Message askedYields = {"asked-yields", "What is asked to yield does, at its interval.", "count ticks since the last yield"};
    Message reEntry = {"re-entry", "Scripts may do anything while a call yields.", "look at the pictures anew after each yield"};
};
// clang-format on

inline constexpr CheckMessages kCheckSays;

}  // namespace host
