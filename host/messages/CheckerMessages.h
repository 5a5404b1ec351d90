// What is wrong with a script's names, types and calls.
#pragma once

#include "host/messages/Message.h"

namespace script {

using host::Message;

// clang-format off
struct CallMessages {
    Message wrongCount = {"… takes …, not …:\n    …", "the call has too few or too many arguments", "compare it with the declaration below the message"};
    Message wrongArgument = {"argument … of … is …, but … is wanted:\n    …", "an argument is of a type that can't become the parameter's", "convert it: Str, Val, a cast; or look at the order of the arguments"};
    Message givesNoValue = {"… gives no value", "a Sub stands where a value is wanted", "call it on a line of its own"};
    Message noOverload = {"no … takes (…)…; there are:…", "several methods have this name, and none takes these arguments", "compare the call with the declarations below the message"};
    Message ambiguous = {"this call could mean any of these; a cast of an argument decides:…", "several methods of this name fit equally well", "write a cast: Double(x)"};
    Message readOnlyByRef = {"… can only be read; … is a ByRef parameter and may be written", "the routine called may change what it is given", "give it a variable"};
    Message valueByRef = {"… is a ByRef parameter: it takes a variable, not a value", "the routine called may change what it is given", "keep the value in a variable first"};
    Message castTakesOne = {"a cast takes one value: …(x)", "a type's name is called with none or several values", "write one value in the brackets"};
    Message arrayMethodOfGrid = {"… works on arrays of one dimension; this is …", "arrays of several dimensions only have Ubound and ReDim", "use an array of one dimension"};
    Message arrayMethodCount = {"… of an array takes …", "the call has too few or too many arguments", "Append, Remove and ReDim take one, Insert two, IndexOf one or two, SortWith one or more, Sort, Shuffle and Pop none"};
    Message cannotSortWith = {"SortWith brings arrays of one dimension into its array's order, not …", "something else stands among its arguments", "name the arrays"};
    Message cannotSort = {"only arrays of numbers and texts can be sorted, not …", "what the array holds has no order", "sort an array of numbers or texts in its place"};
    Message emptyArray = {"Array needs at least one element to know its type", "Array() alone could be of any type", "Dim values() As Integer is an empty array"};
    Message arrayOfAddresses = {"Array can't tell what delegate this address is for; append it to an array of one", "AddressOf is of no type by itself", "Dim calls() As MyDelegate, then calls.Append(AddressOf Routine)"};
    Message arrayOfArrays = {"an array can't hold arrays", "an element is an array", "use several dimensions, or a class with an array in it"};
    Message uboundCount = {"Ubound takes an array and perhaps the number of a dimension, not … arguments", "the call has too few or too many arguments", "Ubound(values), Ubound(grid, 2)"};
    Message uboundOfOther = {"Ubound is asked of an array", "the argument is none", "Len and Count tell the sizes of other things"};
    Message printCount = {"Print takes one value; texts are joined by +", "several values, or none", "Print a + \", \" + Str(b)"};
    Message showAddress = {"an address can't be shown; AddressOf is given to a delegate", "Print of AddressOf", "call the routine, or print a text"};
    Message quitCount = {"Quit takes one exit code", "several values", "Quit, or Quit(1)"};
    Message noIndex = {"this is …, which takes no index", "brackets stand behind something that is no array", "delete them, or look at the name"};
    Message oneIndex = {"an array takes one index", "several indices for an array of one dimension", "write one"};
    Message indices = {"this array takes … indices", "too few or too many indices", "write one for each dimension"};
};

struct TypeMessages {
    Message foreign = {"… is not part of this language", "a type of a related language that this one has not", "use one of docs/language.md"};
    Message unknown = {"there is no type …", "no class of the script, the framework or the plug-in has this name", "mend the name; tqx members lists the classes"};
    Message module = {"… is a module; there are no objects of it", "a module stands where a class is wanted", "make it a class"};
    Message dimensions = {"an array has at most … dimensions", "too many commas in the brackets", "use fewer"};
    Message lossyLiteral = {"this number does not fit in …, which holds …", "a warning: the number written is changed to one that fits", "use a larger type or a smaller number"};
    Message wanted = {"… is …, but … is wanted…", "a value is of a type that can't become the other one", "convert it: Str, Val, a cast"};
    Message noRoutineLike = {"AddressOf names no routine that is called like …", "the routine's parameters or value differ from the delegate's", "give it those of the declaration below the message"};
    Message valueWanted = {"a value is wanted here, but this gives none", "a Sub stands where a value is wanted", "make it a Function, or call it on a line of its own"};
    Message cannotApply = {"… can't be applied to …; it takes …", "- or Not before a value of another kind", "convert the value, or look at the brackets"};
    Message operatorOfAddress = {"AddressOf is given to a delegate; … does not take it", "an operator stands beside AddressOf", "assign it to a variable of a delegate first"};
    Message cannotJoin = {"… can't join … and …", "an operator stands between values of the wrong types", "convert one of them: Str, Val"};
    Message isOfOther = {"Is compares objects, but … is none; use =", "Is asks whether two variables hold the same object", "write ="};
    Message cannotCompare = {"… and … can't be compared by …", "the two have no common type", "convert one of them"};
    Message cannotJoinBits = {"… can't join … and …; it takes two Booleans or two whole numbers", "And, Or or Xor between other values", "write comparisons on both sides"};
    Message isAOfOther = {"IsA is followed by a class; … is none", "IsA asks for an object's class", "write the name of a class"};
    Message isAWithoutObject = {"IsA asks an object for its class, but this is …", "the value before IsA is no object", "its type is known already"};
    Message newOfOther = {"New makes objects of classes; … is none", "New stands before another type", "delete New"};
    Message newOfInterface = {"New makes objects of classes; … is an interface", "an interface has no objects of its own", "name a class that implements it"};
    Message newOfDelegate = {"an object of … is made by AddressOf and the name of a routine", "New stands before a delegate", "write AddressOf Routine"};
    Message noConstructor = {"… has no Constructor that takes arguments", "New with arguments for a class that declares no such Constructor", "declare one, or leave the brackets out"};
    Message onlyExceptions = {"only exceptions can be caught; … is none", "Catch As with another class", "name RuntimeException or one that inherits it"};
};

struct DeclarationMessages {
    Message classTwice = {"there is a class … already…; choose another name", "two types have one name", "rename one"};
    Message noBase = {"there is no class … to inherit…", "no class of the script, the framework or the plug-in has this name", "mend the name"};
    Message inheritsInterface = {"… is an …; write Implements …", "a class implements interfaces and inherits a class", "write Implements"};
    Message inheritsOther = {"… is a … and can't be inherited", "only a class inherits a class, only an interface an interface", "look at the name"};
    Message inheritsItself = {"… can't inherit itself", "the chain of bases comes back to this class", "leave one Inherits out"};
    Message noInterface = {"… is no interface", "Implements names another type", "write Inherits, or look at the name"};
    Message implementsInInterface = {"only a class implements interfaces; an interface inherits others", "Implements stands in an interface", "write Inherits"};
    Message missingMethod = {"… implements … and so needs:\n    …", "a method of the interface is missing in the class", "add it with these parameters"};
    Message memberTwice = {"… has a … already…", "two members of a class have one name", "rename one"};
    Message routineTwice = {"… with these parameters already, in line …", "two routines of one name have the same parameters", "rename one, or change its parameters"};
    Message afterParamArray = {"nothing is left for a parameter after a ParamArray, which comes last", "a ParamArray takes all that is left of the arguments", "move it to the end"};
    Message extendsPlace = {"Extends stands before the first parameter", "the first parameter is what stands before the dot", "move it"};
    Message extendsInClass = {"a method that extends a type stands in a module or outside of any class", "a method of a class has its object already", "move it out of the class"};
    Message assignsPlace = {"Assigns stands before the last parameter", "the last parameter is what stands behind =", "move it"};
    Message optionalOrder = {"a parameter after an optional one is optional too", "arguments are left out from the end only", "give it a default, or move it to the front"};
    Message defaultNotConstant = {"a default is made of literals and constants", "a default is computed before the script runs", "let the routine compute it"};
    Message notASub = {"… is a Sub of an object", "a Constructor or Destructor is a Function or shared", "write Sub, without Shared"};
    Message destructorParameters = {"a Destructor takes no parameters", "nobody calls a Destructor with arguments", "keep what it needs in properties"};
    Message overrideType = {"… overrides one that gives …:\n    …", "the class that is inherited has it with another type", "give the same type, or another name"};
    Message noEventToHandle = {"… inherits no event …", "Event with a body handles an event of the class that is inherited", "mend the name; tqx members CLASS lists its events"};
    Message handlerDiffers = {"the event is declared as …; the handler must be the same", "the handler's parameters or value differ", "write them as the event has them"};
    Message constantNotConstant = {"a constant's value is made of literals and other constants", "a constant is known before the script runs", "make it a variable: Dim"};
    Message nameOfType = {"… is a type; choose another name", "a routine outside of classes has the name of a type", "rename it"};
    Message twice = {"… is declared already, in line …", "two variables of one block have one name", "rename one, or leave the second Dim out"};
    Message labelTwice = {"there is a label … in this block already", "GoTo could not tell them apart", "rename one"};
    Message noLabel = {"there is no label … here; GoTo stays in its routine and does not jump into a block", "the label is missing or not to be reached", "mend the name, or use a loop"};
};

struct NameMessages {
    Message unknown = {"nothing here is called …; …", "no variable, routine or class has this name here", "mend the name, or declare it"};
    Message noMember = {"… has no member …", "no property or method of the class has this name", "mend the name; tqx members CLASS lists them"};
    Message isPrivate = {"… is private to …", "Private members are for the class or module that declares them", "make it Public, or go by another member"};
    Message notAddressable = {"AddressOf is followed by the name of a Sub or Function of the script…", "the plug-in's and the framework's routines have no address", "write a Sub that calls it"};
    Message noEventOfObject = {"expected the event of an object: AddHandler clock.Action, AddressOf Tick", "AddHandler stands before something else", "write object, dot, event"};
    Message noEvent = {"… has no event …", "no event of the class has this name", "tqx members CLASS lists its events"};
    Message superAlone = {"Super is followed by a dot and a member's name", "Super is no object of its own", "Super.Constructor(…), or Self for the object"};
    Message noSelf = {"there is no Self here; it exists in the methods of a class", "Self or Me outside of a class, or in a shared method", "name the object"};
    Message noSuper = {"Super exists in the methods of a class that inherits another", "there is no class to go to", "delete Super and the dot"};
    Message needsObject = {"… belongs to an object of …; there is none here", "a property of an object is used in a shared method", "name the object: clock.Period"};
    Message needsObjectInShared = {"… belongs to an object of …; a shared method has none", "a method of an object is called in a shared method", "name the object"};
    Message needsObjectOfClass = {"… belongs to an object of …; the class itself has none", "the class stands before the dot, not an object of it", "make one: New"};
    Message constantArguments = {"… is a constant and takes no arguments", "brackets stand behind a constant", "delete them"};
    Message beforeDim = {"… is used before its Dim in line …", "a variable exists from its Dim on", "move the Dim up"};
    Message noEventToRaise = {"this class declares no event … that it could raise", "RaiseEvent of an event that the class doesn't declare", "declare it: Event Name(parameters)"};
    Message writeOnly = {"… can be set but not read", "the property has a Set alone", "add a Get"};
    Message readOnly = {"… can be read but not set", "the property has no Set", "look for a method that changes it"};
    Message noAssignment = {"… has no … with a parameter that Assigns", "object(index) = value needs one", "declare it: Sub Operator_Subscript(index As Integer, Assigns value As …)"};
    Message inTwoModules = {"… is in … and in …; write the module's name and a dot before it", "two modules have a member of this name", "Name.Member"};
    Message assignConstant = {"a constant can't be assigned to", "= stands behind a constant", "make it a variable: Dim"};
    Message assignValue = {"this can't be assigned to; a variable, a property or an element can", "the left side of = is a value", "look at the brackets; compare in an If"};
};

struct StatementMessages {
    Message callOfVariable = {"… is a variable; assign to it with =", "a variable alone on a line does nothing", "write = and a value"};
    Message propertyWriteOnly = {"this property can be set but not read", "the property has a Set alone", "write = and a value"};
    Message valueAlone = {"a value alone does nothing; call something or assign it", "a value or comparison stands on a line of its own", "Dim x As Integer = …, Print …"};
    Message doesNothing = {"this does nothing; a statement calls something or assigns a value", "a value that was computed is not used", "assign it, print it, or delete the line"};
    Message caseOfAddress = {"an address can't be compared; AddressOf is given to a delegate", "Select Case of AddressOf", "keep a number or a text beside it"};
    Message noLoopVariable = {"a loop needs a variable to count in: For i As Integer = 1 To 10", "For is followed by something else", "write a variable's name"};
    Message loopOfOther = {"a loop counts in numbers; this is …", "the variable of For is of another type", "use a number, or For Each"};
    Message eachOfGrid = {"For Each goes through arrays of one dimension", "the array has several", "count the indices by For in For"};
    Message eachOfOther = {"For Each goes through an array; this is …", "what stands behind In is none", "look for a method that gives an array: Keys, Values"};
    Message nothingToLeave = {"there is no Sub or Function here to leave", "Exit Sub outside of any routine", "Quit ends the script"};
    Message noSuchLoop = {"… stands in no such loop", "Exit or Continue names a loop that isn't around it", "move it into the loop, or name another one"};
    Message returnNeedsValue = {"… gives a value: Return needs one of …", "Return stands alone in a Function", "write the value behind it"};
    Message returnInSub = {"only a Function gives a value", "Return with a value in a Sub or in the script itself", "write Function, or Return alone"};
    Message reDimOfOther = {"ReDim changes the size of an array; this is …", "what is named is no array", "look at the name"};
    Message reDimCount = {"this is …; ReDim takes a highest index for each of its … dimensions", "too few or too many numbers in the brackets", "write one for each dimension"};
};
// clang-format on

inline constexpr CallMessages kCallSays;
inline constexpr TypeMessages kTypeSays;
inline constexpr DeclarationMessages kDeclarationSays;
inline constexpr NameMessages kNameSays;
inline constexpr StatementMessages kStatementSays;

}  // namespace script
