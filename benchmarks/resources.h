#pragma once

// What calls take besides time.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "message_set.h"

namespace quorvane::benchmarks {

/// Heap allocations of a whole safe call in the steady state, on average over the set. The program
/// counts them in its operator new.
double AllocationsPerCall(const MessageSet& set);

/// The most octets of stack that a whole safe call of the set takes, with what starts the thread.
std::size_t StackOctets(const MessageSet& set);

/// A whole safe call, or dispatch and decode alone.
enum class PassKind : std::uint8_t { kCall, kDecode };

/// Instructions, on average over the set, as callgrind counts them when `program` does nothing but
/// RunPasses; 0 without valgrind.
double InstructionsPerCall(const MessageSet& set, const std::string& program, PassKind kind);

/// Instructions of one line of `quorvane batch`.
double BatchInstructionsPerLine(const MessageSet& set);

/// Decodes the messages of a file of WriteLines so many times. False if it cannot be read.
bool RunPasses(PassKind kind, const std::string& path, int passes);

/// Prints the microseconds of the decode, which must be the process's first. False if an argument
/// is wrong.
bool PrintFirstUse(std::string_view decoding, std::string_view hex);

/// Microseconds of a process's first call, over several that do nothing but PrintFirstUse with the
/// set's first message; 0 if they fail.
double FirstUseMicroseconds(const MessageSet& set, const std::string& program);

/// How many times as many messages two threads decode together as one alone.
double ThreadGain(const MessageSet& set);

}  // namespace quorvane::benchmarks
