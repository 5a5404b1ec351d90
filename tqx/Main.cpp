// The command: runs scripts, prints what plug-ins offer, and tests them.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "host/calls/Runtime.h"
#include "host/framework/Framework.h"
#include "tqx/Commands.h"

#ifndef TQX_VERSION
#error "the build sets TQX_VERSION"
#endif

int main(int argc, char** argv) {
    CLI::App app{
        "Runs scripts that work on pictures through a plug-in.\n\n"
        "  tqx run SCRIPT [ARG...]     run a script\n"
        "  tqx members [CLASS]         what the plug-in offers to scripts\n"
        "  tqx check                   test the plug-in as a stranger would"};
    app.name("tqx");
    app.set_version_flag("--version", "tqx " TQX_VERSION);
    app.require_subcommand(1);

    tqx::Settings settings;
    app.add_option("--plugin", settings.plugin, "Use this plug-in instead of the one beside the command")
        ->envname("TQX_PLUGIN")
        ->take_last()
        ->type_name("PATH");

    CLI::App* run = app.add_subcommand("run", "Run a script");
    tqx::RunSettings runSettings;
    run->add_option("SCRIPT", runSettings.script, "The script's file")->required()->type_name("");
    run->add_option("ARG", runSettings.arguments, "Arguments that the script reads with App.Arguments")->type_name("");
    run->add_flag("--explain", runSettings.explain, "Tell why calls of the plug-in gave nothing");
    run->add_option("--max-pixels", runSettings.maxPixels, "Refuse picture files of more pixels; 0 reads any")
        ->type_name("COUNT")
        ->capture_default_str()
        ->check(CLI::NonNegativeNumber);
    run->add_flag("--no-orientation", runSettings.noOrientation, "Don't turn pictures upright");
    run->positionals_at_end();
    run->prefix_command();

    CLI::App* members = app.add_subcommand("members", "Print the members of the plug-in's classes");
    tqx::MembersSettings membersSettings;
    members->add_option("CLASS", membersSettings.wanted, "Only this class, or one member of it: Class.Member")
        ->type_name("");
    members->add_flag("--json", membersSettings.json, "For programs: everything, as JSON");

    CLI::App* check = app.add_subcommand("check", "Test the plug-in: everything that it registers is called");
    tqx::CheckSettings checkSettings;
    check->add_flag("--json", checkSettings.json, "For programs: all results, as JSON");

    CLI11_PARSE(app, argc, argv);
    host::RegisterFramework(host::Runtime::Get());
    if (run->parsed()) {
        for (const std::string& argument : run->remaining()) runSettings.arguments.push_back(argument);
        return tqx::Run(settings, runSettings);
    }
    if (check->parsed()) return tqx::Check(settings, checkSettings);
    return tqx::Members(settings, membersSettings);
}
