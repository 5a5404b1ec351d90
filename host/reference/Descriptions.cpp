// The sentences, by the names they describe.
#include "host/reference/Descriptions.h"

#include "host/objects/Class.h"

namespace host {

namespace {

struct Entry {
    std::string_view name;
    std::string_view text;
};

constexpr Entry kFunctions[] = {
    // Text
    {"Str", "A value as text: a number in the fewest digits that read back the same, or by a pattern as in Format."},
    {"Format", "A number as text by a pattern such as \"-#,##0.00\"."},
    {"Val", "The number at the beginning of a text, 0 where there is none."},
    {"CStr", "A value as text, as Str gives it."},
    {"CLong", "The whole number at the beginning of a text, its fraction cut off; 0 where there is none."},
    {"CDbl", "The number at the beginning of a text, 0 where there is none."},
    {"Hex", "A whole number in hexadecimal digits."},
    {"Oct", "A whole number in octal digits."},
    {"Bin", "A whole number in binary digits."},
    {"Chr", "The character of a code point."},
    {"ChrB", "The one byte of a code from 0 to 255, as text."},
    {"Asc", "The code point of a text's first character."},
    {"AscB", "A text's first byte."},
    {"Len", "How many characters a text has."},
    {"LenB", "How many bytes a text has."},
    {"Left", "The first characters of a text."},
    {"LeftB", "The first bytes of a text."},
    {"Right", "The last characters of a text."},
    {"RightB", "The last bytes of a text."},
    {"Mid", "Characters from the middle of a text; the first is 1."},
    {"MidB", "Bytes from the middle of a text; the first is 1."},
    {"InStr", "Where a text is found in another, from 1, in any case; 0 when it is not there."},
    {"InStrB", "At which byte a text is found in another, from 1, byte by byte; 0 when it is not there."},
    {"Replace", "A text with the first place of another in it replaced."},
    {"ReplaceB", "A text with the first place of some bytes in it replaced."},
    {"ReplaceAll", "A text with every place of another in it replaced."},
    {"ReplaceAllB", "A text with every place of some bytes in it replaced."},
    {"Split", "The parts of a text between delimiters, spaces if none is given, as an array."},
    {"Join", "The texts of an array in one, with a delimiter, a space if none is given, between them."},
    {"NthField", "A part of a text between delimiters by its number from 1; empty when it is not there."},
    {"NthFieldB", "A part of a text between delimiters, which are looked for byte by byte."},
    {"CountFields", "How many parts a text has between delimiters, as many as Split gives."},
    {"CountFieldsB", "How many parts a text has between delimiters, which are looked for byte by byte."},
    {"Trim", "A text without white space at its ends."},
    {"LTrim", "A text without white space at its beginning."},
    {"RTrim", "A text without white space at its end."},
    {"Uppercase", "A text in capital letters."},
    {"Lowercase", "A text in small letters."},
    {"Titlecase", "A text with each word's first letter as a capital and the others small."},
    {"StrComp", "-1, 0 or 1: the order of two texts, by their bytes (mode 0) or in any case (mode 1)."},
    {"EndOfLine", "The end of a line: of this system, or .UNIX, .Windows, .Macintosh."},
    {"ReplaceLineEndings", "A text with every end of a line, whichever it is, replaced."},
    {"EncodeHex", "Bytes as hexadecimal digits, two a byte."},
    {"DecodeHex", "The bytes that hexadecimal digits stand for."},
    {"MD5", "The MD5 digest of a text's bytes: 16 raw bytes."},
    // Numbers
    {"Abs", "A number without its sign."},
    {"Sign", "-1, 0 or 1 for a negative number, zero, or a positive one."},
    {"Ceil", "The least whole number that is not below a number."},
    {"Floor", "The greatest whole number that is not above a number."},
    {"Round", "The nearest whole number; halves go away from zero."},
    {"Sqrt", "The square root."},
    {"Sin", "The sine of an angle in radians."},
    {"Cos", "The cosine of an angle in radians."},
    {"Tan", "The tangent of an angle in radians."},
    {"Asin", "The angle in radians whose sine is given."},
    {"Acos", "The angle in radians whose cosine is given."},
    {"Atan", "The angle in radians whose tangent is given."},
    {"Atan2", "The angle in radians of the point (x, y)."},
    {"Exp", "e to a power."},
    {"Log", "The natural logarithm."},
    {"Pow", "A number to a power."},
    {"Min", "The least of two to four numbers."},
    {"Max", "The greatest of two to four numbers."},
    {"Rnd", "A random number from 0 up to, not including, 1."},
    {"Microseconds", "Millionths of a second since some moment."},
    {"Ticks", "Sixtieths of a second since some moment."},
    {"BitAnd", "The bits that all of two to four whole numbers have."},
    {"BitOr", "The bits that any of two to four whole numbers has."},
    {"BitXor", "The bits that an odd number of two to four whole numbers have."},
    {"RGB", "A colour of red, green and blue, 0 to 255 each."},
    {"HSV", "A colour of hue, saturation and value, 0 to 1 each; a whole turn of the hue is 1."},
    {"CMY", "A colour of cyan, magenta and yellow, 0 to 1 each."},
    {"VarType", "The number of what a value is, such as Variant.TypeString."},
    {"IsNumeric", "Whether a value is a number, or a text that is one from end to end."},
    {"Type", "The number of what a Variant holds, such as Variant.TypeString."},
    {"IsNull", "Whether a Variant holds nothing."},
    {"IsArray", "Whether a Variant holds an array."},
    {"Hue", "A colour's place in a turn through red, yellow, green, cyan, blue and magenta, from 0 up to 1."},
    {"Saturation", "How far a colour is from gray, 0 to 1."},
    {"Value", "How bright the brightest part of a colour is, 0 to 1."},
    {"Cyan", "How much red a colour lacks, 0 to 1."},
    {"Magenta", "How much green a colour lacks, 0 to 1."},
    {"Yellow", "How much blue a colour lacks, 0 to 1."},
    // Files and pictures
    {"GetFolderItem", "The file or folder of a path, whether or not it exists."},
    {"TemporaryFolder", "The folder for files of a short life."},
    {"NewMemoryBlock", "A memory block of so many zero bytes, Nil where there can't be one."},
    {"MsgBox", "Prints a message as a line; gives 1, as if its one button had been pressed."},
    {"StdIn", "Standard input, to read from."},
    {"StdOut", "Standard output, to write to."},
    {"StdErr", "Standard error, to write to."},
    {"Input", "The next line of standard input, empty at its end."},
    {"ParseDate", "Whether a text is a date as people write one; the date given is then that one."},
    {"Encoding", "The encoding of a text, Nil for bytes."},
    {"ConvertEncoding", "A text in another encoding; what that lacks becomes a question mark."},
    {"DefineEncoding", "Bytes as the text that they are in an encoding; with Nil, a text's bytes."},
    {"GetInternetTextEncoding", "The encoding of a name such as iso-8859-1, Nil for an unknown one."},
    {"NewPicture", "A white picture of a width and a height in pixels and a depth in bits."},
};

constexpr Entry kClasses[] = {
    {"App", "The running program: its arguments and its events."},
    {"Bitwise", "Functions on the bits of whole numbers of 32 or 64 bits."},
    {"Collection", "Values in a row, by their number from 1 or by a key."},
    {"Dictionary", "Values by keys of any kind, in the order in which the keys came; texts in any case."},
    {"Random", "Random numbers, for a seed always the same."},
    {"System", "What surrounds the program: its log and the environment."},
    {"BinaryStream", "A file as bytes and numbers, at any position."},
    {"FolderItem", "A file or folder by its path: what it is, what it holds, pictures from it and into it."},
    {"Graphics", "Draws into a picture."},
    {"GWorldTQX", "An off-screen world made by CopyGWorld."},
    {"MemoryBlock", "Bytes in memory, read and written as numbers and texts."},
    {"Picture", "Pixels of the host, with a mask that is black where the picture is opaque."},
    {"RGBSurface", "The single pixels of a picture."},
    {"TextInputStream", "A text file to read from."},
    {"TextOutputStream", "A text file to write to."},
    {"Timer", "Runs its event Action every so many milliseconds while the script waits or a plug-in yields."},
    {"Variant", "Holds a value of any type."},
    {"Date",
     "A moment in local time: its fields, its seconds since 1904, its text; fields out of range move the others."},
    {"StandardInputStream", "What the program is given to read."},
    {"StandardOutputStream", "Where the program writes to."},
    {"Encodings", "The encodings of texts by their names."},
    {"TextEncoding", "An encoding of texts: its name and its characters."},
    {"RegEx", "Searches and replaces by regular expressions, such as Perl knows them."},
    {"RegExOptions", "How a RegEx searches."},
    {"RegExMatch", "Where a RegEx found something, and what its groups matched."},
    {"RegExException", "A search by a regular expression took too many steps."},
    {"RegExSearchPatternException", "A search pattern is no regular expression."},
    {"SpecialFolder", "Folders that have a purpose, such as the user's home."},
    {"RuntimeException", "What went wrong; the class of all exceptions."},
    {"OutOfBoundsException", "An index outside of what there is."},
    {"NilObjectException", "Something was asked of Nil."},
    {"TypeMismatchException", "A Variant's value is not of the type that is needed."},
    {"IllegalCastException", "An object is not of the class that it was cast to."},
    {"IOException", "A file could not be read or written."},
    {"UnsupportedFormatException", "A file holds what can't be read, or should hold what can't be written."},
    {"KeyNotFoundException", "Nothing is kept under a key."},
    {"StackOverflowException", "Calls are nested too deeply."},
    {"OutOfMemoryException", "There is not enough memory."},
};

constexpr Entry kLanguage[] = {
    {"Print", "Print(value)"},
    {"Quit", "Quit(exitCode As Integer = 0)"},
    {"Array", "Array(value, ...) As T()"},
    {"Ubound", "Ubound(array) As Integer"},
};

constexpr Entry kLanguageTexts[] = {
    {"Print", "Writes a value of any type, and a line's end, to standard output."},
    {"Quit", "Ends the script with an exit code."},
    {"Array", "An array of the values given."},
    {"Ubound", "An array's highest index, -1 if it is empty."},
};

template <std::size_t Count>
std::string_view Find(const Entry (&entries)[Count], std::string_view name) {
    for (const Entry& entry : entries)
        if (SameName(entry.name, name)) return entry.text;
    return {};
}

}  // namespace

std::string_view DescriptionOf(std::string_view name) {
    for (const std::string_view text : {Find(kFunctions, name), Find(kClasses, name), Find(kLanguageTexts, name)})
        if (!text.empty()) return text;
    return {};
}

std::string_view LanguageFunction(std::string_view name) { return Find(kLanguage, name); }

}  // namespace host
