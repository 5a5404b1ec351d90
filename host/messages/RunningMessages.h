// What goes wrong while a script runs: exceptions, by what raises them.
#pragma once

#include "host/messages/RaisedMessage.h"

namespace host {

// clang-format off
// The script itself.
struct ScriptRaises {
    RaisedMessage calledOnNil = {"NilObjectException", {"… is called on Nil", "a method is called, and there is no object before the dot", "find out why it is Nil: what was not made, or what refused (tqx run --explain says why)"}, "Dim p As Picture\np.Save(Nil, 0)"};
    RaisedMessage askedOfNil = {"NilObjectException", {"… is asked of Nil", "a property is read, and there is no object before the dot", "the same"}, "Dim p As Picture\nPrint p.Width"};
    RaisedMessage setOnNil = {"NilObjectException", {"… is set on Nil", "a property is written, and there is no object before the dot", "the same"}, "Dim m As MemoryBlock\nm.LittleEndian = True"};
    RaisedMessage propertyOfNil = {"NilObjectException", {"A property of Nil is asked for", "the same for a property of a class of the script", "make the object first: New"}, "Class C\n  Property N As Integer\nEnd Class\nDim c As C\nPrint c.N"};
    RaisedMessage noArray = {"NilObjectException", {"The array is Nil", "an array variable was set to Nil", "give it an array, or ReDim it"}, "Dim a() As Integer\na = Nil\nPrint a(0)"};
    RaisedMessage nilRaised = {"NilObjectException", {"Nil is raised", "Raise stands before a variable that holds no exception", "make one: Raise New RuntimeException"}, "Dim e As RuntimeException\nRaise e"};
    RaisedMessage emptyDelegate = {"NilObjectException", {"This delegate has nothing to call", "a delegate was made of a method of Nil", "make the object first: New"}, "Class C\n  Sub S()\n  End Sub\nEnd Class\nDelegate Sub D()\nDim c As C\nDim d As D = AddressOf c.S\nd.Invoke"};
    RaisedMessage destroyed = {"NilObjectException", {"… is used on a … whose destructor has run", "a destructor kept its object, but what the host's class held is gone", "keep what is needed, not the object itself"}, "Dim kept As P\nSub Drop()\n  Dim p As New P(2, 2, 32)\nEnd Sub\nDrop\nkept.Save(Nil, 0)\nClass P\n  Inherits Picture\n  Sub Destructor()\n    kept = Self\n  End Sub\nEnd Class"};
    RaisedMessage index = {"OutOfBoundsException", {"Index … is out of bounds; …", "the array has no such element; the first is 0, the last Ubound", "count from 0 to Ubound"}, "Dim a(3) As Integer\nPrint a(4)"};
    RaisedMessage gridIndex = {"OutOfBoundsException", {"Index … of dimension … is out of bounds; the highest is …", "an array of several dimensions has no such element", "count each index from 0 to Ubound(array, dimension)"}, "Dim a(1, 2) As Integer\nPrint a(1, 3)"};
    RaisedMessage noDimension = {"OutOfBoundsException", {"This array has no dimension …", "the second number of Ubound", "dimensions count from 1"}, "Dim a(1, 2) As Integer\nPrint Ubound(a, 3)"};
    RaisedMessage sortWith = {"OutOfBoundsException", {"SortWith needs arrays of one length, not of … and … elements", "one of its arrays has fewer or more elements than the array that is sorted", "look at the Ubound of each"}, "Dim a() As Integer = Array(1, 2)\nDim b(2) As String\na.SortWith b"};
    RaisedMessage emptyPop = {"OutOfBoundsException", {"Pop takes the last element; the array is empty", "Pop of an array without elements", "ask Ubound first: it is -1"}, "Dim a() As Integer\nPrint a.Pop"};
    RaisedMessage highestIndex = {"OutOfBoundsException", {"An array's highest index is -1 to …, not …", "an array was asked to have less than nothing", "-1 makes it empty"}, "Dim a() As Integer\nReDim a(-2)"};
    RaisedMessage tooManyElements = {"OutOfMemoryException", {"An array can't have more than … elements", "an array was asked to be larger than any memory", "divide the work"}, "Dim a() As Integer\nReDim a(2147483647)"};
    RaisedMessage memory = {"OutOfMemoryException", {"There is not enough memory.", "a picture or a block is larger than what the system has left", "drop what is not needed any more, or use a picture in a file"}, "Dim p As New Picture(5000, 5000, 32)"};
    RaisedMessage division = {"RuntimeException", {"Division by zero", "\\ or Mod of whole numbers by 0; / gives infinity instead", "ask before dividing"}, "Dim n As Integer\nPrint 1 \\ n"};
    RaisedMessage tooDeep = {"StackOverflowException", {"Calls are nested too deeply", "routines call each other without end, mostly one itself", "let it end, or use a loop"}, "Sub S()\n  S\nEnd Sub\nS"};
    RaisedMessage mismatch = {"TypeMismatchException", {"A value of type … can't become …", "a Variant holds something else than is needed here", "look at what it holds, or convert it: Str, Val"}, "Dim v As Variant = 4\nDim p As Picture = v"};
    RaisedMessage noOrder = {"TypeMismatchException", {"Objects have no order", "two objects are compared by < or >", "compare what they hold"}, "Dim v As Variant = New MemoryBlock(1)\nPrint v < v"};
    RaisedMessage cast = {"IllegalCastException", {"A … is no …", "ClassName(x) with an object of another class", "ask first: x IsA ClassName"}, "Dim e As New RuntimeException\nPrint IOException(e).Message"};
    RaisedMessage noObjects = {"RuntimeException", {"There are no objects of class …", "New of a class that only stands for all others", "name the class that is meant"}, "Dim v As Variant = New Object"};
    RaisedMessage nothingRaised = {"RuntimeException", {"An exception without an object was raised.", "a plug-in raised Nil", "its author can mend it"}, ""};
    RaisedMessage withoutReason = {"RuntimeException", {"Something failed without saying why.", "a class of the host, or of a plug-in, threw what is no exception", "its author can mend it"}, ""};
};

// Memory blocks, texts and timers.
struct DataRaises {
    RaisedMessage argument = {"OutOfBoundsException", {"Argument … is not among ….", "the script was called with fewer words", "look at Ubound(App.Arguments) first"}, "Print App.Arguments(7)"};
    RaisedMessage blockSize = {"OutOfBoundsException", {"A memory block can't have … bytes.", "its size is below 0", "compute the size anew"}, "Dim m As New MemoryBlock(-1)"};
    RaisedMessage notInBlock = {"OutOfBoundsException", {"… not in a memory block of … bytes.", "what is read or written lies partly behind the end", "look at Size; a number takes as many bytes as its name says"}, "Dim m As New MemoryBlock(4)\nPrint m.DoubleValue(0)"};
    RaisedMessage character = {"OutOfBoundsException", {"There is no character ….", "Chr of a number that is none of a character", "0 to 1114111 are"}, "Print Chr(-1)"};
    RaisedMessage timerMode = {"OutOfBoundsException", {"A timer's mode is 0, 1 or 2, not ….", "Mode of a Timer", "0 is off, 1 once, 2 again and again"}, "Dim t As New Timer\nt.Mode = 3"};
    RaisedMessage nothingToJoin = {"NilObjectException", {"There is no array to join.", "Join of an array that is Nil", "give it an array"}, "Dim a() As String\na = Nil\nPrint Join(a, \",\")"};
    RaisedMessage notReached = {"OutOfBoundsException", {"… not to be reached in this memory block.", "a block around a picture's own memory is used before its first byte", "count from 0"}, "Dim p As New PictureTQX(4, 4, 1)\nPrint p.RawRow(0).Byte(-1)"};
    RaisedMessage unknownSize = {"OutOfBoundsException", {"This memory block's size is not known and can't be changed.", "a block around a picture's own memory can't grow", "copy what you need: Row, RowInFormat"}, "Dim p As New PictureTQX(4, 4, 1)\np.RawRow(0).Size = 4"};
    RaisedMessage noEnd = {"OutOfBoundsException", {"This memory block's size is not known, so it has no end.", "RightB of such a block", "the same"}, "Dim p As New PictureTQX(4, 4, 1)\nDim m As MemoryBlock = p.RawRow(0).RightB(2)"};
    RaisedMessage noString = {"OutOfBoundsException", {"This memory block's size is not known, so it can't become a string.", "such a block is used as a text", "say how many bytes: StringValue(0, count)"}, "Dim p As New PictureTQX(4, 4, 1)\nDim s As String = p.RawRow(0)"};
    RaisedMessage textOrder = {"OutOfBoundsException", {"StrComp has modes 0 (bytes) and 1 (text), not ….", "the third number of StrComp", "say which order is meant"}, "Print StrComp(\"a\", \"b\", 2)"};
};

// Dictionaries, collections, chance, dates, the environment.
struct ContainersRaise {
    RaisedMessage noKey = {"KeyNotFoundException", {"There is no key … in this dictionary.", "Value or Remove with a key that was never given a value", "ask HasKey first, or use Lookup"}, "Dim d As New Dictionary\nPrint d.Value(1)"};
    RaisedMessage keyNumber = {"OutOfBoundsException", {"Key … is not in a dictionary of … entries.", "keys count from 0 to Count - 1", "count so"}, "Dim d As New Dictionary\nPrint d.Key(0)"};
    RaisedMessage noKeyOfItem = {"KeyNotFoundException", {"There is no key … in this collection.", "no item was added with this key", "keys are texts; a number is a place from 1"}, "Dim c As New Collection\nPrint c.Item(\"a\")"};
    RaisedMessage itemNumber = {"OutOfBoundsException", {"Item … is not in a collection of … items.", "items count from 1 to Count", "count so"}, "Dim c As New Collection\nPrint c.Item(0)"};
    RaisedMessage noItem = {"TypeMismatchException", {"An item is known by its number or its key, not by ….", "an item is asked for by something else", "use a number or a text"}, "Dim c As New Collection\nPrint c.Item(True)"};
    RaisedMessage keyTaken = {"RuntimeException", {"This collection has an item of the key … already.", "two items can't have one key", "Remove the first one, or use a Dictionary"}, "Dim c As New Collection\nc.Add(1, \"a\")\nc.Add(2, \"A\")"};
    RaisedMessage noRange = {"OutOfBoundsException", {"No number is from … to ….", "InRange of a Random with the greater number first", "give the least number first"}, "Dim r As New Random\nPrint r.InRange(2, 1)"};
    RaisedMessage noneBelow = {"OutOfBoundsException", {"No number from 0 on is below ….", "LessThan of a Random with a number below 1", "give the first number that is too large"}, "Dim r As New Random\nPrint r.LessThan(0)"};
    RaisedMessage years = {"OutOfBoundsException", {"A date's years are 1 to 9999.", "a field or TotalSeconds leads beyond them", "look for a field that was computed wrongly"}, "Dim d As New Date\nd.Year = 0"};
    RaisedMessage hours = {"OutOfBoundsException", {"A date is at most 24 hours away from Greenwich.", "GMTOffset is a number of hours", "give hours, not minutes or seconds"}, "Dim d As New Date\nd.GMTOffset = 60"};
    RaisedMessage variable = {"RuntimeException", {"… and … can't be the name and value of an environment variable.", "the name is empty or has an =, or one of them a zero byte", "choose another name"}, "System.EnvironmentVariable(\"a=b\") = \"x\""};
    RaisedMessage noDate = {"UnsupportedFormatException", {"… is no date as 2026-11-22…", "SQLDate or SQLDateTime is set to another text", "all digits are needed, zeros too; ParseDate takes other forms"}, "Dim d As New Date\nd.SQLDate = \"1.2.2026\""};
    RaisedMessage noDateToCopy = {"NilObjectException", {"There is no date to copy.", "New Date(other) where the other is Nil", "New Date alone is now"}, "Dim d As Date\nDim c As New Date(d)"};
    RaisedMessage noDateToFill = {"NilObjectException", {"ParseDate fills a date that is there: Dim d As New Date.", "the date given is Nil", "make one before"}, "Dim d As Date\nPrint ParseDate(\"1/2/2026\", d)"};
};

// Regular expressions and encodings.
struct PatternsRaise {
    RaisedMessage pattern = {"RegExSearchPatternException", {"The search pattern is wrong at byte …: …", "the reason stands behind it", "mend SearchPattern; a backslash makes any sign an ordinary one"}, "Dim r As New RegEx\nr.SearchPattern = \"(\"\nDim m As RegExMatch = r.Search(\"x\")"};
    RaisedMessage givenUp = {"RegExException", {"The search was given up: …", "the pattern tries more ways than anybody could wait for", "leave out repetitions of repetitions, such as (a+)+"}, "Dim r As New RegEx\nr.SearchPattern = \"^(a+)+$\"\nDim m As RegExMatch = r.Search(\"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa!\")"};
    RaisedMessage expression = {"OutOfBoundsException", {"Expression … is not among the … of this match.", "0 is the whole match, then the groups that matched", "look at SubExpressionCount"}, "Dim r As New RegEx\nr.SearchPattern = \"x\"\nPrint r.Search(\"x\").SubExpressionString(1)"};
    RaisedMessage lineEnds = {"OutOfBoundsException", {"LineEndType is 0 to 4 (any, this system's, CR, CRLF, LF), not ….", "LineEndType of RegExOptions", "use one of these"}, "Dim r As New RegEx\nr.Options.LineEndType = 9"};
    RaisedMessage noSearch = {"NilObjectException", {"This match belongs to no search.", "a RegExMatch was made by New", "Search gives one"}, "Dim m As New RegExMatch\nPrint m.Replace"};
    RaisedMessage noEncoding = {"NilObjectException", {"There is no encoding.", "the encoding given is Nil", "the encodings are members of Encodings"}, "Print ConvertEncoding(\"a\", Nil)"};
    RaisedMessage foreignEncoding = {"NilObjectException", {"This encoding is none of Encodings.", "a TextEncoding was made by New", "the same"}, "Dim e As New TextEncoding\nPrint e.InternetName"};
    RaisedMessage encodingNumber = {"OutOfBoundsException", {"Encoding … is not among ….", "encodings count from 0 to Encodings.Count - 1", "count so"}, "Print Encodings.Item(-1).InternetName"};
    RaisedMessage noConverter = {"UnsupportedFormatException", {"The system can't convert to ….", "a module of the C library for this encoding can't be loaded", "look whether the C library is installed as a whole"}, ""};
};

// Pictures.
struct PicturesRaise {
    RaisedMessage noRow = {"OutOfBoundsException", {"Index is out of bounds.", "a PictureTQX has no such row", "rows count from 0 to Height - 1"}, "Dim p As New PictureTQX(4, 4, 1)\nDim m As MemoryBlock = p.Row(4)"};
    RaisedMessage noRowBytes = {"NilObjectException", {"Memoryblock is nil", "Nil, or a text of no bytes, is assigned to a row", "give it the row's bytes"}, "Dim p As New PictureTQX(4, 4, 1)\np.Row(0) = Nil"};
    RaisedMessage worldByte = {"OutOfBoundsException", {"Byte … is not in a world of … bytes.", "what CopyGWorld gave has no such byte", "RowBytes times Height are there"}, "Dim p As New PictureTQX(4, 4, 1)\nDim v As Variant = p.CopyGWorld\nDim w As GWorldTQX = v\nPrint w.Byte(99999)"};
    RaisedMessage size = {"OutOfBoundsException", {"A picture can't be … x … pixels.", "a side is below 1", "compute the size anew"}, "Dim p As New Picture(0, 5, 32)"};
    RaisedMessage depth = {"UnsupportedFormatException", {"A picture can't have depth …; there are 32, 24, 16, 8 and 1.", "the third number of New Picture", "32 keeps colours as they are"}, "Dim p As New Picture(5, 5, 7)"};
    RaisedMessage format = {"UnsupportedFormatException", {"There is no picture format ….", "the format of Save", "Picture.SaveAsPNG and its kin; 0 goes by the name"}, "Dim p As New Picture(5, 5, 32)\np.Save(GetFolderItem(\"x.png\"), 99)"};
    RaisedMessage pixel = {"OutOfBoundsException", {"Pixel (…, …) is not in a picture of … x … pixels.", "columns and rows count from 0", "the last ones are Width - 1 and Height - 1"}, "Dim p As New Picture(5, 5, 32)\np.RGBSurface.Pixel(5, 0) = &c000000"};
    RaisedMessage madeTwice = {"RuntimeException", {"This picture has its pixels already.", "a picture's constructor is called once more", "make a new picture"}, "Dim p As New Picture(5, 5, 32)\np.Constructor(6, 6, 32)"};
    RaisedMessage nothingToDraw = {"NilObjectException", {"There is no picture to draw.", "DrawPicture of Nil", "a picture that was not opened, or a CopyPicture that refused"}, "Dim p As New Picture(5, 5, 32)\np.Graphics.DrawPicture(Nil, 0, 0)"};
    RaisedMessage nothingToWrite = {"NilObjectException", {"There is no picture to write to ….", "Save or SaveAsPicture of Nil", "the same"}, "GetFolderItem(\"x.png\").SaveAsPicture(Nil)"};
    RaisedMessage noPictureForRows = {"NilObjectException", {"There is no picture for the rows of a file.", "SaveFrom or OpenInto of Nil", "make the picture first"}, "GetFolderItem(\"x.png\").SaveFrom(Nil)"};
    RaisedMessage noRows = {"TypeMismatchException", {"… has no Width, Height and RowInFormat.", "SaveFrom or OpenInto of an object that has no rows", "give it a picture of the plug-in; of the host's, SaveAsPicture"}, "GetFolderItem(\"x.png\").SaveFrom(New MemoryBlock(1))"};
    RaisedMessage rowMissing = {"RuntimeException", {"Row … can't be had.", "SaveFrom of a picture that is not valid or was closed", "save before Close"}, "Dim p As New PictureTQX(4, 4, 1)\np.Close\nGetFolderItem(\"x.png\").SaveFrom(p)"};
    RaisedMessage noConstant = {"TypeMismatchException", {"… has no constant ….", "SaveFrom or OpenInto of an object that doesn't say its formats' numbers", "let its class inherit PictureTQX"}, "Class R\n  Property Width As Integer\n  Property Height As Integer\n  Function RowInFormat(index As Integer, format As Integer) As MemoryBlock\n    Return Nil\n  End Function\nEnd Class\nGetFolderItem(\"x.png\").SaveFrom(New R)"};
    RaisedMessage rowsUnfit = {"TypeMismatchException", {"RowInFormat of … can't take a row's number and a format.", "SaveFrom or OpenInto of an object of another plug-in", "its author can mend it: RowInFormat(index as integer, format as integer) as memoryblock, assignable"}, ""};
    RaisedMessage rowShrunk = {"RuntimeException", {"The block of a row was made smaller.", "OpenInto gives each row in one block, and the object changed its size", "copy what is to be kept"}, ""};
    RaisedMessage emptyMask = {"NilObjectException", {"The mask has no pixels.", "a mask of a class whose constructor gave it none", "let it call Super.Constructor(width, height, depth)"}, "Dim p As New Picture(5, 5, 32)\np.Mask = New Unmade\nClass Unmade\n  Inherits Picture\n  Sub Constructor()\n  End Sub\nEnd Class"};
    RaisedMessage noPictureOfSurface = {"NilObjectException", {"This surface belongs to no picture.", "New RGBSurface makes none that is of use", "a picture's RGBSurface"}, "Dim s As New RGBSurface\nPrint s.Pixel(0, 0).Red"};
    RaisedMessage noPictureOfGraphics = {"NilObjectException", {"This graphics belongs to no picture.", "New Graphics makes none that is of use", "a picture's Graphics"}, "Dim g As New Graphics\ng.FillRect(0, 0, 1, 1)"};
    RaisedMessage otherSize = {"OutOfBoundsException", {"… has … x … pixels, the picture … x … pixels.", "OpenInto fills a picture of the file's size only", "open the file as a Picture first, or know its size"}, "Dim f As FolderItem = TemporaryFolder.Child(\"tqx-messages-test.png\")\nf.SaveFrom(New PictureTQX(4, 4, 1))\nTry\n  f.OpenInto(New PictureTQX(5, 4, 1))\nFinally\n  f.Delete\nEnd Try"};
    RaisedMessage textSize = {"OutOfBoundsException", {"A text's size is 0 (the system's) to 1000 pixels, not ….", "TextSize of a Graphics", "use one of these"}, "Dim p As New Picture(5, 5, 32)\np.Graphics.TextSize = -1"};
    RaisedMessage mapSize = {"OutOfBoundsException", {"A map of colours has 256 numbers, 0 to 255, not ….", "Transform of an RGBSurface", "Dim map(255) As Integer has as many"}, "Dim p As New Picture(5, 5, 32)\np.RGBSurface.Transform(Array(1, 2))"};
    RaisedMessage noPoints = {"NilObjectException", {"There are no points of a polygon.", "DrawPolygon or FillPolygon of an array that is Nil", "give it an array: its element 0 is not used, then x and y by turns"}, "Dim p As New Picture(5, 5, 32)\nDim a() As Integer\na = Nil\np.Graphics.FillPolygon(a)"};
    RaisedMessage noFontFile = {"UnsupportedFormatException", {"There is no font file …; the DejaVu fonts are needed, or a folder with them in TQX_FONTS.", "text is drawn or measured, and the fonts are not installed", "install the package fonts-dejavu-core"}, ""};
    RaisedMessage noFont = {"UnsupportedFormatException", {"…: is no font", "a font's file can't be read as one", "install it anew, or look at TQX_FONTS"}, ""};
};

// Files and folders.
struct FilesRaise {
    RaisedMessage noItem = {"NilObjectException", {"There is no folder item.", "a file is Nil", "GetFolderItem gives one, also of what does not exist yet"}, "Dim p As New Picture(5, 5, 32)\np.Save(Nil, 1)"};
    RaisedMessage noPath = {"NilObjectException", {"This folder item has no path.", "an item of a class whose constructor gave it none", "let it call Super.Constructor(path)"}, "Class F\n  Inherits FolderItem\n  Sub Constructor()\n  End Sub\nEnd Class\nDim f As New F\nPrint f.Name"};
    RaisedMessage itemNumber = {"OutOfBoundsException", {"Item … is not in a folder of … items.", "items of a folder count from 1 to Count", "count so"}, "Print TemporaryFolder.Item(0).Name"};
    RaisedMessage folder = {"IOException", {"…: is a folder", "a file is wanted", "name a file in it: Child"}, "Dim t As TextInputStream = TextInputStream.Open(GetFolderItem(\"/usr\"))"};
    RaisedMessage notOrdinary = {"IOException", {"…: is not an ordinary file", "a device or a pipe is no file to be read at any place", "copy it to a file first"}, "Dim b As BinaryStream = BinaryStream.Open(GetFolderItem(\"/dev/null\"))"};
    RaisedMessage readOnly = {"IOException", {"…: is open for reading only", "a stream is written to that was opened to be read", "open it for writing"}, "Dim b As BinaryStream = BinaryStream.Open(GetFolderItem(\"/proc/version\"))\nb.WriteByte(1)"};
    RaisedMessage noFile = {"NilObjectException", {"This stream belongs to no file.", "a stream was made by New", "Open or Create give one"}, "Dim b As New BinaryStream\nPrint b.ReadByte"};
    RaisedMessage closed = {"IOException", {"…: is closed", "a stream is used after Close", "open it again"}, "Dim t As TextInputStream = TextInputStream.Open(GetFolderItem(\"/proc/version\"))\nt.Close\nPrint t.ReadLine"};
    RaisedMessage cannotOpen = {"IOException", {"…: can't be opened: …", "the system's reason stands behind it", "look at the name, and at who may read it"}, "Dim t As TextInputStream = TextInputStream.Open(GetFolderItem(\"/none/at/all\"))"};
    RaisedMessage cannotWrite = {"IOException", {"…: can't be written: …", "the system's reason stands behind it", "look at the folder's name, at who may write there, and at the room left"}, ""};
    RaisedMessage cannotRead = {"IOException", {"…: can't be read: …", "the system's reason stands behind it", "look at the disk"}, "Dim t As TextInputStream = TextInputStream.Open(GetFolderItem(\"/proc/self/mem\"))\nPrint t.ReadAll"};
    RaisedMessage cannotPosition = {"IOException", {"…: can't be positioned: …", "the same; what was written before is stored first", "look at the room left"}, ""};
    RaisedMessage cannotMeasure = {"IOException", {"…: can't be measured: …", "the same", "the same"}, ""};
    RaisedMessage cannotResize = {"IOException", {"…: can't be given another length: …", "the same", "the same"}, ""};
    RaisedMessage cannotMakeFolder = {"IOException", {"…: can't be made a folder: …", "the same", "the same"}, "GetFolderItem(\"/proc/none\").CreateAsFolder"};
    RaisedMessage cannotDelete = {"IOException", {"…: can't be deleted: …", "the same", "ask Exists first"}, "GetFolderItem(\"/none/at/all\").Delete"};
    RaisedMessage endOfFile = {"IOException", {"The file ends before the number.", "a number is read at the end of a file", "ask EOF first"}, "Dim b As BinaryStream = BinaryStream.Open(GetFolderItem(\"/proc/version\"))\nWhile True\n  Print b.ReadInt32\nWend"};
    RaisedMessage cannotCopy = {"IOException", {"…: can't be copied: …", "the system's reason stands behind it; a folder can't be copied as a whole", "copy its items one by one"}, "GetFolderItem(\"/proc\").CopyFileTo(TemporaryFolder.Child(\"tqx-none\"))"};
    RaisedMessage cannotMove = {"IOException", {"…: can't be moved: …", "the same", "ask Exists first"}, "GetFolderItem(\"/none/at/all\").MoveFileTo(TemporaryFolder.Child(\"tqx-none\"))"};
};
// clang-format on

inline constexpr ScriptRaises kScriptRaises;
inline constexpr DataRaises kDataRaises;
inline constexpr ContainersRaise kContainersRaise;
inline constexpr PatternsRaise kPatternsRaise;
inline constexpr PicturesRaise kPicturesRaise;
inline constexpr FilesRaise kFilesRaise;

}  // namespace host
