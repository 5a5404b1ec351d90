// What a check is, and what it is given.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "host/check/Case.h"
#include "host/check/Check.h"
#include "host/check/Children.h"
#include "host/messages/Message.h"

namespace host::check {

// What a check found. Convict makes it worse, never better.
struct Outcome {
    CheckStatus status = CheckStatus::Pass;
    std::int64_t cases = 0;
    std::string detail;
    std::string script;
    std::set<std::string> members;  // convicted, by name: later checks leave them out

    // Of equally bad findings the one with the shorter script stays.
    void Convict(CheckStatus worse, std::string why, std::string shownBy = "");
};

// A folder for the files that a plug-in makes, gone in the end; in memory where the system has such
// a place: a check makes tens of thousands of files.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

// The plug-in under test, loaded when it is first asked for.
class Context {
  public:
    Context(std::string path, const CheckOptions& options, std::string scratchFolder,
            std::set<std::string> leftOut = {});

    const std::string& path() const { return path_; }
    const CheckOptions& options() const { return options_; }

    // The classes, and what their calls are made from. Throw LoadError.
    const std::vector<const Class*>& Classes();
    const Supply& TheSupply();

    // Members that are convicted already: what they do shows in every other check.
    const std::set<std::string>& LeftOut() const { return leftOut_; }

    // A job for RunInChildren with this check's limits.
    ChildrenJob Job() const;

  private:
    std::string path_;
    const CheckOptions& options_;
    std::string scratchFolder_;
    std::set<std::string> leftOut_;
    std::unique_ptr<Supply> supply_;
};

// Several entries may share one run, which then gives an outcome for each of their ids.
using Outcomes = std::map<std::string, Outcome>;

struct Check {
    constexpr Check(const Message& row, Outcomes (*function)(Context&))
        : id(row.text.data()), sentence(row.meaning.data()), run(function) {}

    const char* id;  // the texts of rows are literals, which end with a zero
    const char* sentence;
    Outcomes (*run)(Context&);
};

std::span<const Check> AllChecks();

}  // namespace host::check
