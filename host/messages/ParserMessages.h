// What is wrong with a script's lines and blocks, and with the script as a whole.
#pragma once

#include "host/messages/Message.h"

namespace script {

using host::Message;

// clang-format off
struct ConditionMessages {
    Message noEnd = {"expected the end of the condition, found …", "something stands behind a condition of #If", "write Then, or nothing"};
    Message tooDeep = {"this condition is nested too deeply", "too many brackets or Nots", "divide it by an #If in an #If"};
    Message noBracket = {"expected \")\" in the condition", "a bracket was opened and not closed", "close it"};
    Message noCondition = {"expected a condition: #If TargetLinux Then", "#If or #ElseIf stands alone", "write what is to hold"};
    Message noConstant = {"no constant is called …", "conditions of #If know the build's constants and those declared above by Const", "declare it above, or mend the name"};
    Message noEndIf = {"this #If has no #EndIf", "lines to be left out have no end", "write #EndIf behind them"};
    Message foreignDirective = {"\"…\" is not part of this language", "there are #If, #ElseIf, #Else and #EndIf", "leave it out"};
    Message noBeginning = {"… has no beginning here; there is no #If before it", "an #Else or #EndIf alone", "write the #If, or delete this"};
    Message afterElse = {"… comes after #Else", "#Else is the last branch", "move it before #Else"};
};

struct ParserMessages {
    Message expectedAfter = {"expected … after …, found …", "the statement goes on with that word or sign", "write it, or look for what is too much before it"};
    Message reservedName = {"expected …; … is a word of the language", "a word of the language can't be a name", "choose another name"};
    Message expected = {"expected …, found …", "a name, or the end of a block, is missing here", "write it, or look for what is too much before it"};
    Message expectedMember = {"expected a member's name after the dot, found …", "a dot is followed by a property or method", "write its name, or delete the dot"};
    Message expectedLineEnd = {"expected the end of the line after …, found …", "there is one statement a line", "put the rest on a line of its own, or behind a colon"};
    Message eventOutside = {"an Event is declared or handled inside a Class", "Event stands outside of any class", "move it into the class"};
    Message moduleInside = {"a Module does not stand inside another declaration", "modules are not nested", "move it out"};
    Message paramArrayDefault = {"a ParamArray has no default: where nothing is left for it, it is empty", "= stands behind a ParamArray", "delete the default"};
    Message byRefOptional = {"a ByRef parameter can't be optional: it needs a variable of the caller's", "= stands behind a ByRef parameter", "delete ByRef or the default"};
    Message subGivesNoValue = {"a Sub gives no value; write Function for one that does", "As stands behind a Sub", "write Function, or delete As and the type"};
    Message functionNeedsType = {"expected As and the type of the Function's value, found …", "a Function says what it gives", "write As and a type, or Sub for one that gives nothing"};
    Message expectedRoutine = {"expected Sub or Function, found …", "what stands before it belongs to a routine's head", "write Sub or Function behind it"};
    Message computedWithValue = {"a property with Get or Set has no value of its own", "= stands behind a property that is computed", "delete it; Get gives the value"};
    Message moduleEvent = {"a Module has no events; a Class has", "Event stands in a module", "make it a class"};
    Message expectedClassMember = {"expected a property, Sub, Function, Event or End …, found …", "statements stand in routines, not in the class itself", "move it into a Sub, or end the class before it"};
    Message expressionTooDeep = {"this expression is nested too deeply; split it into several statements", "too many brackets or operators in one line", "keep a part of it in a variable"};
    Message expectedValue = {"expected a value, found …", "an operator or a bracket waits for a value", "write one, or delete the sign before it"};
    Message expectedHandler = {"expected Catch or Finally for the …, found …", "Try has a Catch, a Finally or both", "write one before End Try"};
    Message expectedEventName = {"expected the name of an event of this class after RaiseEvent", "RaiseEvent calls an event by its name", "RaiseEvent Name(arguments)"};
    Message foreignWord = {"… is not part of this language", "a construct of a related language that this one has not", "write it with what there is: tqx members, docs/language.md"};
    Message mistyped = {"… is no word of the language; did you mean …?", "a word with a letter too many, too few or out of place", "mend it"};
    Message twoWords = {"End … is written in two words", "the End of a block is written as one word", "put a space between"};
    Message exceptionBlockPlace = {"an Exception block stands at the end of a Sub, Function or Event", "Exception stands in a block, or outside of any routine", "use Try and Catch there"};
    Message noBeginning = {"… has no beginning here…", "the end or the middle of a block that was not opened", "delete it, or write the beginning"};
    Message blocksTooDeep = {"blocks are nested too deeply; move the inner ones to a Sub", "too many blocks in each other", "make a Sub or Function of the inner ones"};
    Message declarationsTooDeep = {"declarations are nested too deeply", "more than a hundred modules or classes in each other", "move the inner ones out"};
    Message expectedEnd = {"expected … for the …, found …", "a block is ended by another word than it asks for", "look whether an inner block lacks its end"};
    Message newHasValue = {"a variable declared As New has its value already", "= stands behind As New", "delete New or the value"};
    Message expectedComparison = {"expected a comparison after Is (Case Is < 5), found …", "Is stands before =, <>, <, >, <= or >=", "write one, or delete Is"};
    Message nextOfOther = {"this Next ends the …, which counts in …, not in …", "loops overlap, or the name is wrong", "end the inner loop first, or write Next alone"};
    Message reDimNeedsArray = {"expected an array and its highest index: ReDim values(9)", "ReDim stands before something else", "write the array's name and the index in brackets"};
    Message expectedStatement = {"expected a statement, found …", "a line begins with a word of the language or a name", "look at the line before it: a bracket or text may be open"};
};

struct SourceMessages {
    Message unreadable = {"the script can't be read: …", "the system's reason stands behind it", "look at the name, and at who may read it"};
    Message tooLarge = {"this is too large for a script", "scripts have at most 64 MB", "look whether it is a script at all"};
    Message utf16 = {"the script can't be read: it is UTF-16 text; save it as UTF-8", "every other byte is zero", "choose UTF-8 where the editor saves"};
    Message noMemory = {"there is not enough memory for this script", "it could not even be compiled", "end other programs; divide the script"};
    Message cycles = {"objects that held each other at the end: …", "--leaks: circles of references, which keep each other alive", "set one of the references to Nil before the end"};
    Message leaks = {"objects are still alive at the end: …", "--leaks: something that is no circle kept them", "a fault of a plug-in: tqx check tells more"};
    Message tooManyProperties = {"… has too many properties for one class; divide it", "a class can have 65535", "make several classes, or an array of them"};
    Message tooManyValues = {"… has too many values for one routine; divide it", "variables and values in between: 65535", "make several routines"};
};
// clang-format on

inline constexpr ConditionMessages kConditionSays;
inline constexpr ParserMessages kParserSays;
inline constexpr SourceMessages kSourceSays;

}  // namespace script
