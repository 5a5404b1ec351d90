// All checks in the order in which they run, and where their files lie.
#include "host/check/Table.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "host/calls/PluginLoader.h"
#include "host/check/Checks.h"
#include "host/check/Startup.h"

namespace host::check {

namespace {

std::filesystem::path ScratchPlace() {
    const char* inMemory = "/dev/shm";
    return access(inMemory, W_OK) == 0 ? inMemory : std::filesystem::temp_directory_path();
}

// Entries that share a run stand side by side.
constexpr Check kChecks[] = {
    {"loading", "The library loads, and its entry point offers classes.", &CheckLoading},
    {"exported-symbols", "Nothing but the entry point is exported.", &CheckExportedSymbols},
    {"linked-libraries", "No library is needed beyond the C++ and C libraries.", &CheckLinkedLibraries},
    {"start-up", "The resolver is asked for first, then the version is stated, then classes are registered.",
     &CheckStartUp},
    {"host-names", "Every host function that is asked for is one that hosts have.", &CheckHostNames},
    {"declarations", "Every declaration can be read, and reads the same when it is written out.", &CheckDeclarations},
    {"classes", "The host takes every class.", &CheckClasses},
    {"records", "Flags, names and types go together.", &CheckRecords},
    {"constants", "Every constant has a value.", &CheckConstants},
    {"fields", "Fields of instances are aligned and don't overlap.", &CheckFields},
    {"overloads", "No call fits two overloads equally well.", &CheckOverloads},
    {"code-pointers", "Every function of a record lies in the plug-in.", &CheckCodePointers},
    {"events", "Every event can be raised, and its handler gets what was passed.", &CheckEvents},
    {"calls", "Nothing that scripts can do crashes or hangs.", &CheckCalls},
    {"references", "Nothing is left alive, and nothing is given up twice.", &CheckCalls},
    {"guard-bytes", "Nothing is written beside memory of the host.", &CheckCalls},
    {"unasked-yields", "Nothing yields without being asked to.", &CheckCalls},
    {"exceptions", "Exceptions have a class that is known and a text that can be shown.", &CheckCalls},
    {"properties", "What is assigned to a property is what it then has.", &CheckProperties},
    {"repetition", "The same call with the same input gives the same bytes.", &CheckRepetition},
    {"sources", "What a call only reads is the same afterwards.", &CheckSources},
    {"stray-writes", "Only the channels and pixels of a picture are written.", &CheckStrayWrites},
    {"host-functions", "Each host function may fail.", &CheckHostFunctions},
    {"allocation", "Each allocation may fail.", &CheckAllocation},
    {"system-calls", "Each call of the system for files and mappings may fail.", &CheckSystemCalls},
    {"asked-yields", "What is asked to yield does, at its interval.", &CheckAskedYields},
    {"re-entry", "Scripts may do anything while a call yields.", &CheckReentry},
};

}  // namespace

std::span<const Check> AllChecks() { return kChecks; }

void Outcome::Convict(CheckStatus worse, std::string why, std::string shownBy) {
    if (worse < status || (worse == status && shownBy.size() >= script.size())) return;
    status = worse;
    detail = std::move(why);
    script = std::move(shownBy);
}

ScratchFolder::ScratchFolder() {
    std::string path = (ScratchPlace() / "tqx-check-XXXXXX").string();
    if (!mkdtemp(path.data())) throw std::filesystem::filesystem_error("no folder for scratch files", {});
    path_ = path;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

Context::Context(std::string path, const CheckOptions& options, std::string scratchFolder,
                 std::set<std::string> leftOut)
    : path_(std::move(path)),
      options_(options),
      scratchFolder_(std::move(scratchFolder)),
      leftOut_(std::move(leftOut)) {}

const std::vector<const Class*>& Context::Classes() {
    const Startup& startup = StartRecorded(path_);
    if (!startup.problem.empty()) throw LoadError(startup.problem);
    return startup.classes;
}

const Supply& Context::TheSupply() {
    if (supply_) return *supply_;
    supply_ = std::make_unique<Supply>(MakeSupply(Classes(), scratchFolder_, options_.seed));
    supply_->leftOut = leftOut_;
    return *supply_;
}

ChildrenJob Context::Job() const {
    ChildrenJob job;
    job.secondsPerCase = options_.secondsPerCall;
    job.inProcess = options_.inProcess;
    return job;
}

}  // namespace host::check
