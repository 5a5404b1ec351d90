// The messages by what raises them, and the page made of them.
#include "host/reference/Messages.h"

#include "host/messages/CheckMessages.h"
#include "host/messages/CheckerMessages.h"
#include "host/messages/CommandMessages.h"
#include "host/messages/ImageMessages.h"
#include "host/messages/LexerMessages.h"
#include "host/messages/LoadMessages.h"
#include "host/messages/ParserMessages.h"

namespace host {

namespace {

constexpr std::string_view kScript = "The script itself";
constexpr std::string_view kData = "Memory blocks, texts and timers";
constexpr std::string_view kContainers = "Dictionaries, collections, chance, dates, the environment";
constexpr std::string_view kPatterns = "Regular expressions and encodings";
constexpr std::string_view kPictures = "Pictures";
constexpr std::string_view kFiles = "Files and folders";

// clang-format off
constexpr MessageRow kRows[] = {
    {kScript, "NilObjectException", "… is called on Nil", "a method is called, and there is no object before the dot", "find out why it is Nil: what was not made, or what refused (tqx run --explain says why)", "Dim p As Picture\np.Save(Nil, 0)"},
    {kScript, "NilObjectException", "… is asked of Nil", "a property is read, and there is no object before the dot", "the same", "Dim p As Picture\nPrint p.Width"},
    {kScript, "NilObjectException", "… is set on Nil", "a property is written, and there is no object before the dot", "the same", "Dim m As MemoryBlock\nm.LittleEndian = True"},
    {kScript, "NilObjectException", "A property of Nil is asked for", "the same for a property of a class of the script", "make the object first: New", "Class C\n  Property N As Integer\nEnd Class\nDim c As C\nPrint c.N"},
    {kScript, "NilObjectException", "The array is Nil", "an array variable was set to Nil", "give it an array, or ReDim it", "Dim a() As Integer\na = Nil\nPrint a(0)"},
    {kScript, "NilObjectException", "Nil is raised", "Raise stands before a variable that holds no exception", "make one: Raise New RuntimeException", "Dim e As RuntimeException\nRaise e"},
    {kScript, "OutOfBoundsException", "Index … is out of bounds…", "the array has no such element; the first is 0, the last Ubound", "count from 0 to Ubound", "Dim a(3) As Integer\nPrint a(4)"},
    {kScript, "OutOfBoundsException", "An array's highest index is -1 to 99999999, not …", "an array was asked to have less than nothing", "-1 makes it empty", "Dim a() As Integer\nReDim a(-2)"},
    {kScript, "OutOfMemoryException", "An array can't have more than 100000000 elements", "an array was asked to be larger than any memory", "divide the work", "Dim a() As Integer\nReDim a(2147483647)"},
    {kScript, "RuntimeException", "Division by zero", "\\ or Mod of whole numbers by 0; / gives infinity instead", "ask before dividing", "Dim n As Integer\nPrint 1 \\ n"},
    {kScript, "StackOverflowException", "Calls are nested too deeply", "routines call each other without end, mostly one itself", "let it end, or use a loop", "Sub S()\n  S\nEnd Sub\nS"},
    {kScript, "TypeMismatchException", "A value of type … can't become …", "a Variant holds something else than is needed here", "look at what it holds, or convert it: Str, Val", "Dim v As Variant = 4\nDim p As Picture = v"},
    {kScript, "TypeMismatchException", "Objects have no order", "two objects are compared by < or >", "compare what they hold", "Dim v As Variant = New MemoryBlock(1)\nPrint v < v"},
    {kScript, "IllegalCastException", "A … is no …", "ClassName(x) with an object of another class", "ask first: x IsA ClassName", "Dim e As New RuntimeException\nPrint IOException(e).Message"},

    {kData, "OutOfBoundsException", "Argument … is not among ….", "the script was called with fewer words", "look at Ubound(App.Arguments) first", "Print App.Arguments(7)"},
    {kData, "OutOfBoundsException", "A memory block can't have … bytes.", "its size is below 0", "compute the size anew", "Dim m As New MemoryBlock(-1)"},
    {kData, "OutOfBoundsException", "… not in a memory block of … bytes.", "what is read or written lies partly behind the end", "look at Size; a number takes as many bytes as its name says", "Dim m As New MemoryBlock(4)\nPrint m.DoubleValue(0)"},
    {kData, "OutOfBoundsException", "There is no character ….", "Chr of a number that is none of a character", "0 to 1114111 are", "Print Chr(-1)"},
    {kData, "OutOfBoundsException", "A timer's mode is 0, 1 or 2, not ….", "Mode of a Timer", "0 is off, 1 once, 2 again and again", "Dim t As New Timer\nt.Mode = 3"},
    {kData, "NilObjectException", "There is no array to join.", "Join of an array that is Nil", "give it an array", "Dim a() As String\na = Nil\nPrint Join(a, \",\")"},

    {kData, "OutOfBoundsException", "… not to be reached in this memory block.", "a block around a picture's own memory is used before its first byte", "count from 0", "Dim p As New PictureTQX(4, 4, 1)\nPrint p.RawRow(0).Byte(-1)"},
    {kData, "OutOfBoundsException", "This memory block's size is not known and can't be changed.", "a block around a picture's own memory can't grow", "copy what you need: Row, RowInFormat", "Dim p As New PictureTQX(4, 4, 1)\np.RawRow(0).Size = 4"},
    {kData, "OutOfBoundsException", "This memory block's size is not known, so it has no end.", "RightB of such a block", "the same", "Dim p As New PictureTQX(4, 4, 1)\nDim m As MemoryBlock = p.RawRow(0).RightB(2)"},
    {kData, "OutOfBoundsException", "This memory block's size is not known, so it can't become a string.", "such a block is used as a text", "say how many bytes: StringValue(0, count)", "Dim p As New PictureTQX(4, 4, 1)\nDim s As String = p.RawRow(0)"},
    {kData, "OutOfBoundsException", "StrComp has modes 0 (bytes) and 1 (text), not ….", "the third number of StrComp", "say which order is meant", "Print StrComp(\"a\", \"b\", 2)"},

    {kContainers, "KeyNotFoundException", "There is no key … in this dictionary.", "Value or Remove with a key that was never given a value", "ask HasKey first, or use Lookup", "Dim d As New Dictionary\nPrint d.Value(1)"},
    {kContainers, "OutOfBoundsException", "Key … is not in a dictionary of … entries.", "keys count from 0 to Count - 1", "count so", "Dim d As New Dictionary\nPrint d.Key(0)"},
    {kContainers, "KeyNotFoundException", "There is no key … in this collection.", "no item was added with this key", "keys are texts; a number is a place from 1", "Dim c As New Collection\nPrint c.Item(\"a\")"},
    {kContainers, "OutOfBoundsException", "Item … is not in a collection of … items.", "items count from 1 to Count", "count so", "Dim c As New Collection\nPrint c.Item(0)"},
    {kContainers, "TypeMismatchException", "An item is known by its number or its key, not by ….", "an item is asked for by something else", "use a number or a text", "Dim c As New Collection\nPrint c.Item(True)"},
    {kContainers, "RuntimeException", "This collection has an item of the key … already.", "two items can't have one key", "Remove the first one, or use a Dictionary", "Dim c As New Collection\nc.Add(1, \"a\")\nc.Add(2, \"A\")"},
    {kContainers, "OutOfBoundsException", "No number is from … to ….", "InRange of a Random with the greater number first", "give the least number first", "Dim r As New Random\nPrint r.InRange(2, 1)"},
    {kContainers, "OutOfBoundsException", "No number from 0 on is below ….", "LessThan of a Random with a number below 1", "give the first number that is too large", "Dim r As New Random\nPrint r.LessThan(0)"},
    {kContainers, "OutOfBoundsException", "A date's years are 1 to 9999.", "a field or TotalSeconds leads beyond them", "look for a field that was computed wrongly", "Dim d As New Date\nd.Year = 0"},
    {kContainers, "OutOfBoundsException", "A date is at most 24 hours away from Greenwich.", "GMTOffset is a number of hours", "give hours, not minutes or seconds", "Dim d As New Date\nd.GMTOffset = 60"},
    {kContainers, "RuntimeException", "… and … can't be the name and value of an environment variable.", "the name is empty or has an =, or one of them a zero byte", "choose another name", "System.EnvironmentVariable(\"a=b\") = \"x\""},
    {kContainers, "UnsupportedFormatException", "… is no date as 2026-11-22…", "SQLDate or SQLDateTime is set to another text", "all digits are needed, zeros too; ParseDate takes other forms", "Dim d As New Date\nd.SQLDate = \"1.2.2026\""},
    {kContainers, "NilObjectException", "There is no date to copy.", "New Date(other) where the other is Nil", "New Date alone is now", "Dim d As Date\nDim c As New Date(d)"},
    {kContainers, "NilObjectException", "ParseDate fills a date that is there: Dim d As New Date.", "the date given is Nil", "make one before", "Dim d As Date\nPrint ParseDate(\"1/2/2026\", d)"},

    {kPatterns, "RegExSearchPatternException", "The search pattern is wrong at byte …: …", "the reason stands behind it", "mend SearchPattern; a backslash makes any sign an ordinary one", "Dim r As New RegEx\nr.SearchPattern = \"(\"\nDim m As RegExMatch = r.Search(\"x\")"},
    {kPatterns, "RegExException", "The search was given up: …", "the pattern tries more ways than anybody could wait for", "leave out repetitions of repetitions, such as (a+)+", "Dim r As New RegEx\nr.SearchPattern = \"^(a+)+$\"\nDim m As RegExMatch = r.Search(\"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa!\")"},
    {kPatterns, "OutOfBoundsException", "Expression … is not among the … of this match.", "0 is the whole match, then the groups that matched", "look at SubExpressionCount", "Dim r As New RegEx\nr.SearchPattern = \"x\"\nPrint r.Search(\"x\").SubExpressionString(1)"},
    {kPatterns, "OutOfBoundsException", "LineEndType is 0 to 4 (any, this system's, CR, CRLF, LF), not ….", "LineEndType of RegExOptions", "use one of these", "Dim r As New RegEx\nr.Options.LineEndType = 9"},
    {kPatterns, "NilObjectException", "This match belongs to no search.", "a RegExMatch was made by New", "Search gives one", "Dim m As New RegExMatch\nPrint m.Replace"},
    {kPatterns, "NilObjectException", "There is no encoding.", "the encoding given is Nil", "the encodings are members of Encodings", "Print ConvertEncoding(\"a\", Nil)"},
    {kPatterns, "NilObjectException", "This encoding is none of Encodings.", "a TextEncoding was made by New", "the same", "Dim e As New TextEncoding\nPrint e.InternetName"},
    {kPatterns, "OutOfBoundsException", "Encoding … is not among ….", "encodings count from 0 to Encodings.Count - 1", "count so", "Print Encodings.Item(-1).InternetName"},

    {kPictures, "OutOfBoundsException", "Index is out of bounds.", "a PictureTQX has no such row", "rows count from 0 to Height - 1", "Dim p As New PictureTQX(4, 4, 1)\nDim m As MemoryBlock = p.Row(4)"},
    {kPictures, "NilObjectException", "Memoryblock is nil", "Nil, or a text of no bytes, is assigned to a row", "give it the row's bytes", "Dim p As New PictureTQX(4, 4, 1)\np.Row(0) = Nil"},
    {kPictures, "OutOfBoundsException", "Byte … is not in a world of … bytes.", "what CopyGWorld gave has no such byte", "RowBytes times Height are there", "Dim p As New PictureTQX(4, 4, 1)\nDim v As Variant = p.CopyGWorld\nDim w As GWorldTQX = v\nPrint w.Byte(99999)"},
    {kPictures, "OutOfBoundsException", "A picture can't be … x … pixels.", "a side is below 1", "compute the size anew", "Dim p As New Picture(0, 5, 32)"},
    {kPictures, "UnsupportedFormatException", "A picture can't have depth …; there are 32, 24, 16, 8 and 1.", "the third number of New Picture", "32 keeps colours as they are", "Dim p As New Picture(5, 5, 7)"},
    {kPictures, "UnsupportedFormatException", "There is no picture format ….", "the format of Save", "Picture.SaveAsPNG and its kin; 0 goes by the name", "Dim p As New Picture(5, 5, 32)\np.Save(GetFolderItem(\"x.png\"), 99)"},
    {kPictures, "OutOfBoundsException", "Pixel (…, …) is not in a picture of … x … pixels.", "columns and rows count from 0", "the last ones are Width - 1 and Height - 1", "Dim p As New Picture(5, 5, 32)\np.RGBSurface.Pixel(5, 0) = &c000000"},
    {kPictures, "RuntimeException", "This picture has its pixels already.", "a picture's constructor is called once more", "make a new picture", "Dim p As New Picture(5, 5, 32)\np.Constructor(6, 6, 32)"},
    {kPictures, "NilObjectException", "There is no picture to draw.", "DrawPicture of Nil", "a picture that was not opened, or a CopyPicture that refused", "Dim p As New Picture(5, 5, 32)\np.Graphics.DrawPicture(Nil, 0, 0)"},
    {kPictures, "NilObjectException", "There is no picture to write to ….", "Save or SaveAsPicture of Nil", "the same", "GetFolderItem(\"x.png\").SaveAsPicture(Nil)"},
    {kPictures, "NilObjectException", "There is no picture for the rows of a file.", "SaveFrom or OpenInto of Nil", "make the picture first", "GetFolderItem(\"x.png\").SaveFrom(Nil)"},
    {kPictures, "TypeMismatchException", "… has no Width, Height and RowInFormat.", "SaveFrom or OpenInto of an object that has no rows", "give it a picture of the plug-in; of the host's, SaveAsPicture", "GetFolderItem(\"x.png\").SaveFrom(New MemoryBlock(1))"},
    {kPictures, "RuntimeException", "Row … can't be had.", "SaveFrom of a picture that is not valid or was closed", "save before Close", "Dim p As New PictureTQX(4, 4, 1)\np.Close\nGetFolderItem(\"x.png\").SaveFrom(p)"},

    {kPictures, "NilObjectException", "The mask has no pixels.", "a mask of a class whose constructor gave it none", "let it call Super.Constructor(width, height, depth)", "Dim p As New Picture(5, 5, 32)\np.Mask = New Unmade\nClass Unmade\n  Inherits Picture\n  Sub Constructor()\n  End Sub\nEnd Class"},
    {kPictures, "NilObjectException", "This surface belongs to no picture.", "New RGBSurface makes none that is of use", "a picture's RGBSurface", "Dim s As New RGBSurface\nPrint s.Pixel(0, 0).Red"},
    {kPictures, "NilObjectException", "This graphics belongs to no picture.", "New Graphics makes none that is of use", "a picture's Graphics", "Dim g As New Graphics\ng.FillRect(0, 0, 1, 1)"},
    {kPictures, "OutOfBoundsException", "… has … pixels, the picture ….", "OpenInto fills a picture of the file's size only", "open the file as a Picture first, or know its size", "Dim f As FolderItem = TemporaryFolder.Child(\"tqx-messages-test.png\")\nf.SaveFrom(New PictureTQX(4, 4, 1))\nTry\n  f.OpenInto(New PictureTQX(5, 4, 1))\nFinally\n  f.Delete\nEnd Try"},
    {kPictures, "UnsupportedFormatException", "…: GIF files can be read, not written; PNG keeps all their pixels", "the name ends with .gif", "save as .png", "Dim p As New Picture(5, 5, 32)\nGetFolderItem(\"x.gif\").SaveAsPicture(p)"},
    {kPictures, "OutOfMemoryException", "There is not enough memory.", "a picture or a block is larger than what the system has left", "drop what is not needed any more, or use a picture in a file", "Dim p As New Picture(5000, 5000, 32)"},
    {kPictures, "OutOfBoundsException", "A text's size is 0 (the system's) to 1000 pixels, not ….", "TextSize of a Graphics", "use one of these", "Dim p As New Picture(5, 5, 32)\np.Graphics.TextSize = -1"},
    {kPictures, "OutOfBoundsException", "A map of colours has 256 numbers, 0 to 255, not ….", "Transform of an RGBSurface", "Dim map(255) As Integer has as many", "Dim p As New Picture(5, 5, 32)\np.RGBSurface.Transform(Array(1, 2))"},
    {kPictures, "NilObjectException", "There are no points of a polygon.", "DrawPolygon or FillPolygon of an array that is Nil", "give it an array: its element 0 is not used, then x and y by turns", "Dim p As New Picture(5, 5, 32)\nDim a() As Integer\na = Nil\np.Graphics.FillPolygon(a)"},

    {kFiles, "NilObjectException", "There is no folder item.", "a file is Nil", "GetFolderItem gives one, also of what does not exist yet", "Dim p As New Picture(5, 5, 32)\np.Save(Nil, 1)"},
    {kFiles, "OutOfBoundsException", "Item … is not in a folder of … items.", "items of a folder count from 1 to Count", "count so", "Print TemporaryFolder.Item(0).Name"},
    {kFiles, "IOException", "…: is a folder", "a file is wanted", "name a file in it: Child", "Dim t As TextInputStream = TextInputStream.Open(GetFolderItem(\"/usr\"))"},
    {kFiles, "IOException", "…: is not an ordinary file", "a device or a pipe is no file to be read at any place", "copy it to a file first", "Dim b As BinaryStream = BinaryStream.Open(GetFolderItem(\"/dev/null\"))"},
    {kFiles, "IOException", "…: is open for reading only", "a stream is written to that was opened to be read", "open it for writing", "Dim b As BinaryStream = BinaryStream.Open(GetFolderItem(\"/proc/version\"))\nb.WriteByte(1)"},
    {kFiles, "NilObjectException", "This stream belongs to no file.", "a stream was made by New", "Open or Create give one", "Dim b As New BinaryStream\nPrint b.ReadByte"},
    {kFiles, "IOException", "…: is closed", "a stream is used after Close", "open it again", "Dim t As TextInputStream = TextInputStream.Open(GetFolderItem(\"/proc/version\"))\nt.Close\nPrint t.ReadLine"},
    {kFiles, "IOException", "…: can't be opened: …", "the system's reason stands behind it", "look at the name, and at who may read it", "Dim t As TextInputStream = TextInputStream.Open(GetFolderItem(\"/none/at/all\"))"},
    {kFiles, "IOException", "…: can't be written: …", "the system's reason stands behind it", "look at the folder's name, at who may write there, and at the room left", "Dim p As New Picture(5, 5, 32)\nGetFolderItem(\"/none/at/x.png\").SaveAsPicture(p)"},
    {kFiles, "IOException", "…: can't be made a folder: …", "the same", "the same", "GetFolderItem(\"/proc/none\").CreateAsFolder"},
    {kFiles, "IOException", "…: can't be deleted: …", "the same", "ask Exists first", "GetFolderItem(\"/none/at/all\").Delete"},
    {kFiles, "IOException", "The file ends before the number.", "a number is read at the end of a file", "ask EOF first", "Dim b As BinaryStream = BinaryStream.Open(GetFolderItem(\"/proc/version\"))\nWhile True\n  Print b.ReadInt32\nWend"},
    {kFiles, "IOException", "…: can't be copied: …", "the system's reason stands behind it; a folder can't be copied as a whole", "copy its items one by one", "GetFolderItem(\"/proc\").CopyFileTo(TemporaryFolder.Child(\"tqx-none\"))"},
    {kFiles, "IOException", "…: can't be moved: …", "the same", "ask Exists first", "GetFolderItem(\"/none/at/all\").MoveFileTo(TemporaryFolder.Child(\"tqx-none\"))"},
};
// clang-format on

template <class... Tables>
std::vector<Message> Joined(const Tables&... tables) {
    std::vector<Message> rows;
    const auto add = [&](const auto& table) {
        for (const Message& row : RowsOf(table)) rows.push_back(row);
    };
    (add(tables), ...);
    return rows;
}

std::string BeginOf(std::string_view title) {
    return "\n### " + std::string(title) + "\n\n| Message | Means | What to do |\n|---|---|---|\n";
}

// The declarations that follow some messages stand on lines of their own there.
std::string RowOf(std::string_view text, std::string_view meaning, std::string_view remedy) {
    constexpr std::string_view kNextLine = "\n    ";
    std::string line(text);
    if (const std::size_t at = line.find(kNextLine); at != std::string::npos) line.replace(at, kNextLine.size(), " ");
    return "| `" + line + "` | " + std::string(meaning) + " | " + std::string(remedy) + " |\n";
}

}  // namespace

std::span<const MessageRow> MessageRows() { return kRows; }

std::vector<MessageChapter> MessageChapters() {
    using namespace script;
    return {
        {"Signs of a script", Joined(kLexerSays)},
        {"Lines and blocks of a script", Joined(kConditionSays, kParserSays)},
        {"Declarations", Joined(kDeclarationSays)},
        {"Names", Joined(kNameSays)},
        {"Types and values", Joined(kTypeSays)},
        {"Calls", Joined(kCallSays)},
        {"Statements", Joined(kStatementSays)},
        {"A script as a whole", Joined(kSourceSays)},
        {"Image files", Joined(kImageFileSays, kImageReadSays, kImageWriteSays)},
        {"Plug-ins", Joined(kLoadSays, kClassSays)},
        {"The command", Joined(tqx::kCommandSays)},
        {"Checks of a plug-in", Joined(kCheckSays)},
    };
}

std::string MessagesPage() {
    std::string page =
        "# Messages\n\n"
        "What the host says, what it means and what to do. `…` stands for names, numbers and reasons. Why a member of\n"
        "the plug-in gave `Nil` or did nothing, `tqx run --explain` says.\n\n"
        "## But for running scripts\n\n"
        "Of a script as `file:line:column: message`, with the line and a mark below it; `warning:` stands before what\n"
        "keeps no script from running. Of other files as `file: message`.\n";
    for (const MessageChapter& chapter : MessageChapters()) {
        page += BeginOf(chapter.title);
        for (const Message& row : chapter.rows) page += RowOf(row.text, row.meaning, row.remedy);
    }
    page +=
        "\n## While a script runs\n\n"
        "What ends a script that nobody catches it in, as `file:line:column: Class: message`.\n";
    std::string_view chapter;
    for (const MessageRow& row : kRows) {
        if (row.chapter != chapter) page += BeginOf(row.chapter);
        chapter = row.chapter;
        page += RowOf(std::string(row.exception) + ": " + std::string(row.text), row.meaning, row.remedy);
    }
    return page;
}

}  // namespace host
