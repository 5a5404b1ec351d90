#include "host/check/Check.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "host/check/Checks.h"
#include "host/check/Records.h"

namespace host {

namespace {

using namespace check;

// In memory where the system has such a place: a check makes tens of thousands of files.
std::filesystem::path ScratchPlace() {
    const char* inMemory = "/dev/shm";
    return access(inMemory, W_OK) == 0 ? inMemory : std::filesystem::temp_directory_path();
}

// A folder for the files that a plug-in makes, gone in the end.
class ScratchFolder {
  public:
    ScratchFolder() {
        std::string path = (ScratchPlace() / "tqx-check-XXXXXX").string();
        if (!mkdtemp(path.data())) throw std::filesystem::filesystem_error("no folder for scratch files", {});
        path_ = path;
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

CheckResult FromFindings(const char* name, const RecordFindings& findings, const std::string& praise) {
    CheckResult result{name, findings.faults.empty(), findings.looked, praise, ""};
    if (result.ok) return result;
    result.detail = findings.faults.front();
    if (findings.faults.size() > 1) result.detail += " (and " + std::to_string(findings.faults.size() - 1) + " more)";
    return result;
}

}  // namespace

std::vector<CheckResult> CheckPlugin(const Plugin& plugin, const CheckOptions& options) {
    std::vector<CheckResult> results;
    const auto add = [&](CheckResult result) {
        if (options.report) options.report(result);
        results.push_back(std::move(result));
    };
    const RecordFindings declarations = CheckDeclarations(plugin.classes);
    add(FromFindings("declarations", declarations, std::to_string(declarations.looked / 2) + " can be read"));
    add(FromFindings("records", CheckConsistency(plugin.classes), "flags, names and types go together"));
    const RecordFindings constants = CheckConstants(plugin.classes);
    add(FromFindings("constants", constants, std::to_string(constants.looked / 2) + " have a value"));
    const ScratchFolder scratch;
    const Supply supply = MakeSupply(plugin.classes, scratch.path());
    for (CheckResult& result : CheckCalls(supply, options.secondsPerCall)) add(std::move(result));
    add(CheckRepetition(supply, options.secondsPerCall));
    add(CheckFailingHost(supply, options.secondsPerCall));
    add(CheckAskedYields(supply, options.secondsPerCall));
    add(CheckReentry(supply, options.secondsPerCall));
    return results;
}

std::string CheckLine(const CheckResult& result) {
    constexpr std::size_t kNameWidth = 16;
    std::string line = (result.ok ? "ok      " : "FAILED  ") + result.name;
    line.append(result.name.size() < kNameWidth ? kNameWidth - result.name.size() : 1, ' ');
    line += result.detail + "\n";
    for (std::size_t at = 0; at < result.script.size();) {
        const std::size_t end = result.script.find('\n', at);
        line += "          " + result.script.substr(at, end - at) + "\n";
        at = end == std::string::npos ? result.script.size() : end + 1;
    }
    return line;
}

std::string ChecksAsJson(const Plugin& plugin, const std::vector<CheckResult>& results) {
    using Json = nlohmann::ordered_json;
    Json json = {{"plugin", plugin.path}, {"checks", Json::array()}};
    for (const CheckResult& result : results)
        json["checks"].push_back({{"name", result.name},
                                  {"ok", result.ok},
                                  {"cases", result.cases},
                                  {"detail", result.detail},
                                  {"script", result.script.empty() ? Json() : Json(result.script)}});
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace host
