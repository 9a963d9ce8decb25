#pragma once

// What calls take besides time.

#include <cstddef>
#include <string>
#include <string_view>

#include "families/family.h"
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

/// Decodes the set of that name so many times. False if there is none.
bool DecodePasses(std::string_view name, int passes);

/// Microseconds that building the catalogue of a family takes.
double CatalogueMicroseconds(const families::Family& family);

/// Messages a second that this many threads decode together, in millions.
double MillionsPerSecond(const MessageSet& set, int threads);

}  // namespace quorvane::benchmarks
