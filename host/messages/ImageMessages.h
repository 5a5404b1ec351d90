// What is wrong with image files that are read or written; the file's name stands before each.
#pragma once

#include "host/messages/Message.h"

namespace host {

// clang-format off
struct ImageFileMessages {
    Message folder = {"is a folder", "a file is wanted", "name a file in it: Child"};
    Message notOrdinary = {"is not an ordinary file", "a device or a pipe is no file to be read at any place", "copy it to a file first"};
    Message cannotOpen = {"can't be opened: …", "the system's reason stands behind it", "look at the name, and at who may read it"};
    Message noMemoryToOpen = {"can't be opened: out of memory", "the picture is larger than what the system has left", "end other programs; read a smaller one"};
    Message cannotRead = {"can't be read: …", "the system's reason stands behind it", "look at the disk"};
    Message cannotBeRead = {"can't be read", "the system failed in the middle of the file", "look at the disk"};
    Message cannotWrite = {"can't be written: …", "the system's reason stands behind it", "look at the folder's name, at who may write there, and at the room left"};
    Message readOnly = {"can't be written: the file is read-only", "who made it took all rights to write to it", "choose another name, or change its rights"};
    Message noMemoryToWrite = {"can't be written: out of memory", "the encoder's memory is larger than what the system has left", "end other programs"};
    Message noPlace = {"can't be written: the file can't be positioned", "the system failed in the middle of the file", "look at the disk"};
    Message noScratch = {"can't be read: the folder of temporary files has no room for it", "a JPEG file in several scans is kept in a scratch file", "make room, or set TMPDIR to another folder"};
    Message libraryVersion = {"can't be read: the WebP library is of another version", "the library is not the one that tqx was built with", "build tqx anew"};
    Message writerLibraryVersion = {"can't be written: the WebP library is of another version", "the same", "build tqx anew"};
};

struct ImageReadMessages {
    Message empty = {"is empty", "the file has no bytes", "look where it came from"};
    Message unknown = {"is not an image of a known format (PNG, JPEG, TIFF, WebP, GIF, BMP, PNM)", "its first bytes are none of these formats'", "convert it; the name's ending does not count"};
    Message cutShort = {"is cut short", "the file ends before its picture does", "copy or load it again"};
    Message cutOrDamaged = {"is cut short or damaged", "the picture's bytes can't be decoded", "copy or load it again"};
    Message noPixels = {"holds no pixels", "a side is 0", "look at the program that wrote it"};
    Message tooLarge = {"is too large: … pixels", "a side is beyond what any picture can have", "the file is damaged, or made to harm"};
    Message aboveLimit = {"is too large: … pixels are more than the limit of …; the option --max-pixels lifts it", "a small file can state any size; the limit grows with the file", "tqx run --max-pixels 0 reads any"};
    Message noMoreRows = {"has no more rows", "more rows are asked for than the picture has", "a fault of the caller"};
    Message bmpMasks = {"is a damaged BMP file (its pixels lie in its masks)", "the head points into itself", "write it anew"};
    Message bmpHead = {"is a damaged BMP file (its pixels lie in its head)", "the head points into itself", "write it anew"};
    Message bmpKind = {"is a BMP file of an unknown kind", "a head, depth or packing that is not read", "convert it to PNG"};
    Message gifDamaged = {"is a damaged GIF file (…)", "the library's reason, or what is missing, stands in brackets", "write it anew"};
    Message gifWithoutPicture = {"is a GIF file without a picture", "there is no frame in it", "write it anew"};
    Message jpegScans = {"is a damaged JPEG file (too many scans)", "a small file of endless scans is made to harm", "write it anew"};
    Message jpegDamaged = {"is a damaged JPEG file (…)", "the library's reason stands in brackets", "write it anew"};
    Message pngDamaged = {"is a damaged PNG file (…)", "the library's reason stands in brackets", "write it anew"};
    Message pnmDamaged = {"is a damaged PNM file", "a number of its head is none, or too large", "write it anew"};
    Message pamKind = {"is a PAM file of an unknown kind", "it has less than one or more than four channels", "convert it"};
    Message tiffDamaged = {"is a damaged TIFF file (…)", "the library's reason, or what is wrong, stands in brackets", "write it anew"};
    Message tiffBare = {"is a damaged TIFF file", "the library gave no reason", "write it anew"};
    Message tiffKind = {"is a TIFF file of a kind that can't be read (…)", "the library's reason stands in brackets", "convert it to plain RGB"};
    Message tiffCompression = {"is a TIFF file whose compression is not supported (…)", "the compression's name stands in brackets", "save it with another one: LZW, Deflate"};
    Message webpDamaged = {"is a damaged WebP file", "its bytes can't be decoded", "write it anew"};
    Message webpTooLarge = {"is too large for a WebP file", "WebP files have less than 4 GB", "the file is damaged"};
};

struct ImageWriteMessages {
    Message gif = {"GIF files can be read, not written; PNG keeps all their pixels", "the name ends with .gif", "save as .png"};
    Message extension = {"has an unknown extension (known: png, jpg, tif, webp, bmp, pnm, pgm, ppm, pam)", "the format goes by the name", "give it one of these endings"};
    Message noPixels = {"can't be written: the picture has no pixels", "a side is 0", "look at Width and Height first"};
    Message bmpTooLarge = {"can't be written: a BMP file holds at most 4 GB", "its sizes have 32 bits", "save as .png or .tif"};
    Message sideTooLong = {"can't be written: a side of a … image has at most … pixels", "the format's limit", "save as .png or .tif, or scale it down"};
    Message libraryFault = {"can't be written (…)", "the library's reason stands in brackets", "save as another format"};
    Message tooManyRows = {"can't be written: too many rows", "more rows are given than the picture has", "a fault of the caller"};
    Message rowsMissing = {"can't be written: rows are missing", "fewer rows are given than the picture has", "a fault of the caller"};
    Message twice = {"can't be written twice", "the file was completed already", "a fault of the caller"};
};
// clang-format on

inline constexpr ImageFileMessages kImageFileSays;
inline constexpr ImageReadMessages kImageReadSays;
inline constexpr ImageWriteMessages kImageWriteSays;

}  // namespace host
