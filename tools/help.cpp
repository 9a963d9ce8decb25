#include "tools/help.h"

#include <memory>

#include "families/family.h"
#include "quorvane/version.h"
#include "tools/commands.h"

namespace quorvane::tool {
namespace {

struct Example {
    const char* command;
    const char* line;
};

constexpr Example kExamples[] = {
    {"list", "quorvane list"},
    {"decode", "quorvane decode EPC_UE2SS 0F 87"},
    {"batch", "printf 'EPC_UE2SS 0F87\\n' | quorvane batch --summary"},
    {"capture", "quorvane capture log.pcap --where EMMCause=15"},
    {"encode", "quorvane decode --json EPC_UE2SS 0F87 | quorvane encode EPC_UE2SS"},
    {"diff", "quorvane diff \"EPS_SMUplink 0201D031\" \"EPS_SMUplink 0201D011\""},
    {"catalogue", "quorvane catalogue eps --census"},
    {"disassemble", "quorvane disassemble eps EPS_QOS"},
    {"generate", "quorvane generate EPS_MMUplink 3 --seed 1"},
    {"help", "quorvane help decode"},
    {"completion", "quorvane completion bash"},
};

class Formatter : public CLI::Formatter {
  public:
    std::string make_subcommand(const CLI::App* command) const override {
        std::stringstream out;
        CLI::detail::format_help(out, command->get_name(),
                                 std::string(Summary(command->get_description())),
                                 get_column_width());
        return out.str();
    }
};

}  // namespace

std::string_view Summary(std::string_view description) {
    return description.substr(0, description.find(". "));
}

void CompleteHelp(CLI::App& app) {
    app.formatter(std::make_shared<Formatter>());
    app.footer("\"quorvane help COMMAND\" says more of a command and gives an example.");
    for (const Example& example : kExamples) {
        app.get_subcommand(example.command)->footer(std::string("Example:\n  $ ") + example.line);
    }
}

std::string HelpOn(const CLI::App& app, const std::string& command) {
    // App::help would go on to the command that was parsed.
    const std::string name = app.get_name();
    if (command.empty()) {
        return app.get_formatter()->make_help(&app, name, CLI::AppFormatMode::Normal);
    }
    return CommandNamed(app, command).help(name);
}

const CLI::App& CommandNamed(const CLI::App& app, const std::string& name) {
    std::string names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        if (command->get_name() == name) {
            return *command;
        }
        names += (names.empty() ? "" : ", ") + command->get_name();
    }
    throw UsageError("unknown command '" + name + "'; the commands are " + names);
}

std::string VersionText() {
    std::string built;
    std::string leftOut;
    for (const families::FamilyInfo& family : families::KnownFamilies()) {
        std::string& list = family.tables == nullptr ? leftOut : built;
        list += (list.empty() ? "" : ", ") + std::string(family.name);
    }
    return std::string("quorvane ") + Version() + "\nfamilies: " + built +
           (leftOut.empty() ? "" : "\nfamilies left out: " + leftOut) +
           "\ncaptures: " + (kReadsCaptures ? "read" : "left out");
}

}  // namespace quorvane::tool
