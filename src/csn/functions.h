#pragma once

// What plain CSN.1 cannot express: the actions and value functions that an image calls by index.
// Each is a template over the constants of its use; the tables of an image hold pointers to
// instantiations. T is always a tag of the machine's store, N a count of bits; "the last N bits"
// are those that end at the machine's position.
//
// An action that limits what follows never opens it past the end of the run.
//
// Tests: tests/unit/csn_functions_test.cpp.

#include <algorithm>
#include <bit>
#include <cstdint>

#include "csn/machine.h"

namespace quorvane::csn {

namespace functions {

// Positions and tags are 32-bit numbers that wrap: a tag that was never set, -1, or a hostile
// length gives a useless but defined result.
constexpr std::int32_t Sum(std::int32_t left, std::int32_t right) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(left) +
                                     static_cast<std::uint32_t>(right));
}
constexpr std::int32_t Difference(std::int32_t left, std::int32_t right) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(left) -
                                     static_cast<std::uint32_t>(right));
}

inline std::uint32_t BitsAt(const CsnMachine& machine, std::int32_t position, std::int32_t count) {
    return machine.reader.Read(position, count);
}
inline std::uint32_t LastBits(const CsnMachine& machine, std::int32_t count) {
    return BitsAt(machine, machine.bitPos - count, count);
}

inline void SetPosition(CsnMachine& machine, std::int32_t position) {
    machine.bitPos = std::clamp(position, -kMostPosition, kMostPosition);
}

/// Where a decoder's run ends. An encoder has no end of its own.
inline std::int32_t RunEnd(const CsnMachine& machine) {
    if ((machine.flags & kFlagEncode) != 0) {
        return kMostPosition;
    }
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(std::int64_t{machine.startPos} + machine.bitLength,
                                 -std::int64_t{kMostPosition}, kMostPosition));
}

/// Sets the end of what may be read, which is within the run.
inline void SetEnd(CsnMachine& machine, std::int32_t position) {
    machine.scopeEnd = std::clamp(position, -kMostPosition, kMostPosition);
    machine.endPos = std::min(machine.scopeEnd, RunEnd(machine));
}

// Actions.

/// Notes the position: a length is written there later, or a span is measured from it.
template <std::int32_t T>
void NotePosition(CsnMachine& machine) {
    TagAdd(machine, T, machine.bitPos);
}

/// Notes the position N bits ahead.
template <std::int32_t T, std::int32_t N>
void NotePositionAhead(CsnMachine& machine) {
    TagAdd(machine, T, Sum(machine.bitPos, N));
}

/// Behind a length field of N bits: what follows is limited to the length, the end before is kept.
template <std::int32_t T, std::int32_t N>
void OpenScopeAtLengthEnd(CsnMachine& machine) {
    TagAdd(machine, T, machine.endPos);
    SetEnd(machine, Sum(machine.bitPos, static_cast<std::int32_t>(LastBits(machine, N))));
}

/// In front of a length field of N bits: the limit is the length plus `Extra` from here.
template <std::int32_t T, std::int32_t N, std::int32_t Extra>
void OpenScopeAtLengthStart(CsnMachine& machine) {
    TagAdd(machine, T, machine.endPos);
    const auto length = static_cast<std::int32_t>(BitsAt(machine, machine.bitPos, N));
    SetEnd(machine, Sum(machine.bitPos, length + Extra));
}

/// In front of a 6-bit length code whose values below 6 stand for lengths from 64 on.
template <std::int32_t T>
void OpenScopeAtCodedLength(CsnMachine& machine) {
    TagAdd(machine, T, machine.endPos);
    const auto code = static_cast<std::int32_t>(BitsAt(machine, machine.bitPos, 6));
    SetEnd(machine, Sum(machine.bitPos, code < 6 ? code + 65 : code + 1));
}

/// What follows is limited to N bits.
template <std::int32_t T, std::int32_t N>
void OpenFixedScope(CsnMachine& machine) {
    TagAdd(machine, T, machine.endPos);
    SetEnd(machine, Sum(machine.bitPos, N));
}

/// Takes back the limit of a scope that was opened under the same tag. If the scope reaches past
/// the run and all of the run was read, what is missing counts as read: the run's result is then
/// more than its length, and whoever compares the two refuses it.
template <std::int32_t T>
void CloseScope(CsnMachine& machine) {
    if (machine.bitPos == RunEnd(machine)) {
        machine.bitPos = std::max(machine.bitPos, machine.scopeEnd);
    }
    SetEnd(machine, TagValue(machine, T));
}

/// Encoding: writes the bits since the noted position, less D, into the N bits that begin E before
/// that position.
template <std::int32_t T, std::int32_t N, std::int32_t D, std::int32_t E>
void WriteBackLength(CsnMachine& machine) {
    if (machine.writer == nullptr) {
        return;
    }
    const std::int32_t noted = TagValue(machine, T);
    const std::int32_t length = Difference(Difference(machine.bitPos, noted), D);
    machine.writer->Write(std::int64_t{noted} - E, static_cast<std::uint32_t>(length), N);
}

/// Goes back to N bits behind the noted position if more than that were passed.
template <std::int32_t T, std::int32_t N>
void ClipToSpan(CsnMachine& machine) {
    const std::int32_t noted = TagValue(machine, T);
    if (Difference(machine.bitPos, noted) >= N + 1) {
        SetPosition(machine, Sum(noted, N));
    }
}

/// Goes behind an element that began at the noted position with its length in N bits; `Extra` is
/// what the length does not count.
template <std::int32_t T, std::int32_t N, std::int32_t Extra>
void JumpOverElement(CsnMachine& machine) {
    const std::int32_t noted = TagValue(machine, T);
    const auto length = static_cast<std::int32_t>(BitsAt(machine, noted, N));
    SetPosition(machine, Sum(noted, length + Extra));
}

/// Keeps the last N bits as a number.
template <std::int32_t T, std::int32_t N>
void KeepCount(CsnMachine& machine) {
    TagAdd(machine, T, static_cast<std::int32_t>(LastBits(machine, N)));
}

/// Keeps the result of the value function `Count`.
template <std::int32_t T, CsnValueFunction Count>
void SetCount(CsnMachine& machine) {
    TagAdd(machine, T, static_cast<std::int32_t>(Count(machine)));
}

/// Adds the result of the value function `Count` to the number kept.
template <std::int32_t T, CsnValueFunction Count>
void AddCount(CsnMachine& machine) {
    TagUpdate(machine, T, Sum(TagValue(machine, T), static_cast<std::int32_t>(Count(machine))));
}

/// Raises a running maximum to the last N bits.
template <std::int32_t T, std::int32_t N>
void RaiseMaximum(CsnMachine& machine) {
    const auto value = static_cast<std::int32_t>(LastBits(machine, N));
    if (value > TagValue(machine, T)) {
        TagUpdate(machine, T, value);
    }
}

/// Refuses the last N bits if they are all 0.
template <std::int32_t N>
void RejectZero(CsnMachine& machine) {
    if (LastBits(machine, N) == 0) {
        machine.flags |= kFlagRefused;
    }
}

/// Refuses the last N bits if they are all 0 or all 1.
template <std::int32_t N>
void RejectZeroAndOnes(CsnMachine& machine) {
    const std::uint32_t value = LastBits(machine, N);
    if (value == 0 || value == (1U << N) - 1) {
        machine.flags |= kFlagRefused;
    }
}

// Value functions. A result of 16384 or more is no count; a negative one comes out as such.

/// Bits up to the next octet boundary, 0 to 7.
inline std::uint32_t BitsToOctetBoundary(CsnMachine& machine) {
    return -static_cast<std::uint32_t>(machine.bitPos) & 7U;
}

/// The number K itself.
template <std::uint32_t K>
std::uint32_t Constant(CsnMachine& /*machine*/) {
    return K;
}

/// How many of the last N bits are set.
template <std::int32_t N>
std::uint32_t Ones(CsnMachine& machine) {
    return static_cast<std::uint32_t>(std::popcount(LastBits(machine, N)));
}

/// How many of the last bits are set, of as many as the noted number says, up to 32.
template <std::int32_t T>
std::uint32_t OnesOf(CsnMachine& machine) {
    const std::int32_t count = std::clamp(TagValue(machine, T), 0, 32);
    return static_cast<std::uint32_t>(std::popcount(LastBits(machine, count)));
}

/// The noted number plus K, which may be negative.
template <std::int32_t T, std::int32_t K>
std::uint32_t TagPlus(CsnMachine& machine) {
    return static_cast<std::uint32_t>(Sum(TagValue(machine, T), K));
}

/// What the noted number leaves of K.
template <std::int32_t T, std::int32_t K>
std::uint32_t RestOf(CsnMachine& machine) {
    return static_cast<std::uint32_t>(Difference(K, TagValue(machine, T)));
}

/// The noted number of octets, in bits.
template <std::int32_t T>
std::uint32_t OctetsToBits(CsnMachine& machine) {
    return static_cast<std::uint32_t>(TagValue(machine, T)) * 8U;
}

/// Bits left of a span of N bits that began at the noted position.
template <std::int32_t T, std::int32_t N>
std::uint32_t BitsLeftInSpan(CsnMachine& machine) {
    const std::int32_t end = Sum(TagValue(machine, T), N);
    return static_cast<std::uint32_t>(Difference(end, machine.bitPos));
}

/// The same with the span at bit 0 if no position was noted.
template <std::int32_t T, std::int32_t N>
std::uint32_t BitsLeftInSpanOrZeroBased(CsnMachine& machine) {
    const std::int32_t end = Sum(TagValueOrZero(machine, T), N);
    return static_cast<std::uint32_t>(Difference(end, machine.bitPos));
}

/// The same, and 0 once the span is passed.
template <std::int32_t T, std::int32_t N>
std::uint32_t BitsLeftInSpanIfAny(CsnMachine& machine) {
    const std::int32_t passed = Difference(machine.bitPos, TagValue(machine, T));
    return passed > N ? 0 : BitsLeftInSpan<T, N>(machine);
}

/// Bits left up to the noted end, 0 if it is passed or was never noted.
template <std::int32_t T>
std::uint32_t BitsLeftToEnd(CsnMachine& machine) {
    const std::int32_t end = TagValueOrZero(machine, T);
    return end > machine.bitPos ? static_cast<std::uint32_t>(Difference(end, machine.bitPos)) : 0;
}

/// What a function that a description declares makes of the noted number.
template <std::int32_t T, std::uint32_t (*Function)(std::int32_t)>
std::uint32_t Declared(CsnMachine& machine) {
    return Function(TagValue(machine, T));
}

}  // namespace functions
}  // namespace quorvane::csn
