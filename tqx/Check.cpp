// Tests a plug-in that nobody knows: one line a check.
#include "host/check/Check.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "host/check/Report.h"
#include "host/messages/CommandMessages.h"
#include "host/messages/LoadMessages.h"
#include "tqx/Commands.h"
#include "tqx/Output.h"
#include "tqx/ScriptWords.h"
#include "tqx/Signals.h"

namespace tqx {

namespace {

bool IsCheck(const std::string& id) {
    const auto checks = host::ListChecks();
    return std::any_of(checks.begin(), checks.end(), [&](const auto& check) { return check.id == id; });
}

void RequireCheck(const std::string& id) {
    if (!IsCheck(id)) throw WrongWords{kCommandSays.noCheck(id)};
}

int List() {
    for (const host::CheckEntry& check : host::ListChecks()) WriteLine(check.id + ": " + check.sentence);
    return 0;
}

host::CheckOptions OptionsFrom(const CheckSettings& check) {
    host::CheckOptions options;
    for (const std::string& id : check.only) {
        RequireCheck(id);
        options.only.insert(id);
    }
    for (const std::string& exception : check.except) {
        const std::size_t equals = exception.find('=');
        if (equals == std::string::npos || equals + 1 == exception.size()) throw WrongWords{kCommandSays.noReason()};
        RequireCheck(exception.substr(0, equals));
        options.except[exception.substr(0, equals)] = exception.substr(equals + 1);
    }
    options.seed = check.seed;
    options.inProcess = check.inProcess;
    options.stop = &EndIsAsked;
    if (!check.json)
        options.report = [](const host::CheckResult& result) {
            WriteOutput(host::CheckLine(result));
            std::fflush(stdout);
        };
    return options;
}

bool WriteJUnit(const std::string& file, const std::string& text) {
    std::ofstream stream(file, std::ios::binary);
    stream << text;
    stream.close();
    if (stream) return true;
    Complain("tqx check: " + kCommandSays.report.Text(file) + '\n');
    return false;
}

}  // namespace

int Check(const Settings& settings, const CheckSettings& check) {
    if (check.list) return List();
    const host::CheckOptions options = OptionsFrom(check);
    const std::string plugin = PluginPath(settings);
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(plugin, ignored)) {
        Complain("tqx: " + host::kLoadSays.none.Text(plugin) + '\n');
        return kCouldNotRun;
    }
    if (!check.inProcess) HandleSignals();
    if (!check.json) WriteLine("seed " + std::to_string(check.seed));
    const std::vector<host::CheckResult> results = host::CheckPlugin(plugin, options);
    if (EndIsAsked()) return EndAfterSignals(kCouldNotRun);
    WriteOutput(check.json ? host::ChecksAsJson(plugin, check.seed, results) : host::CheckSummary(results));
    if (!check.junit.empty() && !WriteJUnit(check.junit, host::ChecksAsJUnit(plugin, check.seed, results)))
        return kCouldNotRun;
    const bool findings = std::any_of(results.begin(), results.end(),
                                      [](const host::CheckResult& result) { return host::IsFinding(result.status); });
    return findings ? 1 : 0;
}

}  // namespace tqx
