#pragma once

// What the tool says of itself: the help of its commands, with an example of each, and its version.
//
// Tests: tests/tool/help_test.cpp.

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>

namespace quorvane::tool {

/// The first sentence of a command's or option's description.
std::string_view Summary(std::string_view description);

/// Adds examples to the help of the commands, and lists each command with its summary alone.
void CompleteHelp(CLI::App& app);

/// The command of that name; throws UsageError with those that there are if it is none.
const CLI::App& CommandNamed(const CLI::App& app, const std::string& name);

/// The help of the command of that name, of the tool if it is empty.
std::string HelpOn(const CLI::App& app, const std::string& command);

/// The version, the families of this build and those that it leaves out, and whether it reads
/// captures.
std::string VersionText();

}  // namespace quorvane::tool
