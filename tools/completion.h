#pragma once

// Completion of the tool's command lines by shells.
//
// Tests: tests/tool/completion_test.cpp.

#include <CLI/CLI.hpp>
#include <string>

namespace quorvane::tool {

/// A script by which `shell` (bash, zsh or fish) completes the commands of `app`, their options,
/// and the names of functions, families and files.
std::string CompletionScript(const CLI::App& app, const std::string& shell);

}  // namespace quorvane::tool
