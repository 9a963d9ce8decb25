#pragma once

// What calls take besides time.

#include <cstddef>
#include <string>
#include <string_view>

#include "message_set.h"

namespace quorvane::benchmarks {

/// Heap allocations of a whole safe call in the steady state, on average over the set. The program
/// counts them in its operator new.
double AllocationsPerCall(const MessageSet& set);

/// The most octets of stack that a whole safe call of the set takes, with what starts the thread.
std::size_t StackOctets(const MessageSet& set);

/// Instructions of a whole safe call, on average over the set, as callgrind counts them when
/// `program` does nothing but DecodePasses; 0 without valgrind.
double InstructionsPerCall(const MessageSet& set, const std::string& program);

/// The same of one line of `quorvane batch`.
double BatchInstructionsPerLine(const MessageSet& set);

/// Decodes the messages of a file of WriteLines so many times. False if it cannot be read.
bool DecodePasses(const std::string& path, int passes);

/// Prints the microseconds of the decode, which must be the process's first. False if an argument
/// is wrong.
bool PrintFirstUse(std::string_view decoding, std::string_view hex);

/// Microseconds of a process's first call, over several that do nothing but PrintFirstUse with the
/// set's first message; 0 if they fail.
double FirstUseMicroseconds(const MessageSet& set, const std::string& program);

/// How many times as many messages two threads decode together as one alone.
double ThreadGain(const MessageSet& set);

}  // namespace quorvane::benchmarks
