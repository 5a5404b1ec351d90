// What the command's words do. Each gives the exit code.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/images/Image.h"

namespace tqx {

struct Settings {
    std::string plugin;  // empty: the one that belongs to the command
};

struct RunSettings {
    std::string script;               // its file, unless there is
    std::optional<std::string> code;  // its text
    std::vector<std::string> arguments;
    bool onlyCheck = false;
    bool leaks = false;                     // objects left at the end are an error
    bool explain = false;                   // tell why calls of the plug-in gave nothing
    bool noOrientation = false;             // leave pictures as they lie in their files
    std::optional<std::int64_t> maxPixels;  // of the largest picture read; 0: any; none: by the file's size
};

struct MembersSettings {
    std::string wanted;  // "", "Class", "Class.Member", "Member" or "Function"
    bool json = false;
};

struct CheckSettings {
    bool list = false;
    std::vector<std::string> only;    // ids
    std::vector<std::string> except;  // "ID=REASON"
    std::uint64_t seed = 1;
    bool inProcess = false;
    bool json = false;
    std::string junit;  // a file to write
};

struct FuzzSettings {
    std::int64_t programs = 1000;
    std::int64_t first = 0;  // the number of the first program
    double seconds = 0;      // above 0: as many programs as go into this time
    int statements = 40;     // of a program
    std::uint64_t seed = 1;
    bool whole = false;  // don't shorten what fails
    bool print = false;  // only print the first program
};

int Run(const Settings& settings, const RunSettings& run);
int CheckSyntax(const Settings& settings, const std::vector<std::string>& scripts);
int Repl(const Settings& settings);
int Show(const std::vector<std::string>& files);
int Members(const Settings& settings, const MembersSettings& members);
int Check(const Settings& settings, const CheckSettings& check);
int Fuzz(const Settings& settings, const FuzzSettings& fuzz);

// Shows the picture of a file in the terminal. Throws ImageError.
void ShowPicture(const std::string& file);

// Exit code of check and fuzz when there was nothing to find out.
inline constexpr int kCouldNotRun = 2;

// The plug-in's file that the settings mean.
std::string PluginPath(const Settings& settings);

// Loads it; false after a message.
bool LoadPlugin(const Settings& settings);

}  // namespace tqx
