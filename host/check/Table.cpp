// All checks in the order in which they run, and where their files lie.
#include "host/check/Table.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "host/calls/PluginLoader.h"
#include "host/check/Checks.h"
#include "host/check/Startup.h"
#include "host/messages/CheckMessages.h"

namespace host::check {

namespace {

std::filesystem::path ScratchPlace() {
    const char* inMemory = "/dev/shm";
    return access(inMemory, W_OK) == 0 ? inMemory : std::filesystem::temp_directory_path();
}

// Entries that share a run stand side by side.
constexpr Check kChecks[] = {
    {kCheckSays.loading, &CheckLoading},
    {kCheckSays.exportedSymbols, &CheckExportedSymbols},
    {kCheckSays.linkedLibraries, &CheckLinkedLibraries},
    {kCheckSays.startUp, &CheckStartUp},
    {kCheckSays.hostNames, &CheckHostNames},
    {kCheckSays.declarations, &CheckDeclarations},
    {kCheckSays.classes, &CheckClasses},
    {kCheckSays.records, &CheckRecords},
    {kCheckSays.constants, &CheckConstants},
    {kCheckSays.fields, &CheckFields},
    {kCheckSays.overloads, &CheckOverloads},
    {kCheckSays.codePointers, &CheckCodePointers},
    {kCheckSays.events, &CheckEvents},
    {kCheckSays.calls, &CheckCalls},
    {kCheckSays.references, &CheckCalls},
    {kCheckSays.guardBytes, &CheckCalls},
    {kCheckSays.unaskedYields, &CheckCalls},
    {kCheckSays.exceptions, &CheckCalls},
    {kCheckSays.properties, &CheckProperties},
    {kCheckSays.repetition, &CheckRepetition},
    {kCheckSays.sources, &CheckSources},
    {kCheckSays.strayWrites, &CheckStrayWrites},
    {kCheckSays.hostFunctions, &CheckHostFunctions},
    {kCheckSays.allocation, &CheckAllocation},
    {kCheckSays.systemCalls, &CheckSystemCalls},
    {kCheckSays.askedYields, &CheckAskedYields},
    {kCheckSays.reEntry, &CheckReentry},
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
    if (!startup.problem.empty()) throw LoadError(Said::Again(startup.problem));
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
