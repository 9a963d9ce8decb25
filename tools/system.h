#pragma once

// What the operating system has to be asked for: files, terminals, interrupts.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane::tool {

inline constexpr int kStandardInput = 0;
inline constexpr int kStandardOutput = 1;
inline constexpr int kStandardError = 2;

/// Opens a file to be read; below 0 with errno if it cannot be.
int OpenToRead(const std::string& name);
void Close(int descriptor);

/// How many octets a regular file has; nothing for others.
std::optional<std::uint64_t> SizeOfFile(const std::string& name);
std::optional<std::uint64_t> SizeOfFile(int descriptor);

/// Reads at most `size` octets and returns how many, 0 at the end. Below 0 with errno if it cannot
/// be read, with EINTR if the process was interrupted (CatchInterrupts).
std::int64_t ReadSome(int descriptor, char* octets, std::size_t size);

/// Writes all; false with errno if it cannot be written. A file then ends with a whole line.
bool WriteAll(int descriptor, std::string_view octets);

bool IsTerminal(int descriptor);

/// From here on the first request to end the process is only noted, and ends ReadSome; the next
/// one ends the process.
void CatchInterrupts();

/// The number of the signal that asked the process to end, or 0.
int InterruptSignal();

}  // namespace quorvane::tool
