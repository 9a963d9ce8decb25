#pragma once

// What plain CSN.1 cannot express: the actions and value functions that an image calls by index.
// Each is a template over the constants of its use; the tables of an image hold pointers to
// instantiations. T is always a tag of the run's store, N a count of bits; "the last N bits"
// are those that end at its position.
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

inline std::uint32_t BitsAt(const CsnRun& run, std::int32_t position, std::int32_t count) {
    return run.reader.Read(position, count);
}
inline std::uint32_t LastBits(const CsnRun& run, std::int32_t count) {
    return BitsAt(run, run.bitPos - count, count);
}

inline void SetPosition(CsnRun& run, std::int32_t position) {
    run.bitPos = std::clamp(position, -kMostPosition, kMostPosition);
}

/// Where a decoder's run ends. An encoder has no end of its own.
inline std::int32_t RunEnd(const CsnRun& run) {
    return (run.flags & kFlagEncode) != 0 ? kMostPosition : EndOfBits(run);
}

/// Sets the end of what may be read, which is within the run.
inline void SetEnd(CsnRun& run, std::int32_t position) {
    run.scopeEnd = std::clamp(position, -kMostPosition, kMostPosition);
    run.endPos = std::min(run.scopeEnd, RunEnd(run));
}

// Actions.

/// Notes the position: a length is written there later, or a span is measured from it.
template <std::int32_t T>
void NotePosition(CsnRun& run) {
    TagAdd(run, T, run.bitPos);
}

/// Notes the position N bits ahead.
template <std::int32_t T, std::int32_t N>
void NotePositionAhead(CsnRun& run) {
    TagAdd(run, T, Sum(run.bitPos, N));
}

/// Behind a length field of N bits: what follows is limited to the length, the end before is kept.
template <std::int32_t T, std::int32_t N>
void OpenScopeAtLengthEnd(CsnRun& run) {
    TagAdd(run, T, run.endPos);
    SetEnd(run, Sum(run.bitPos, static_cast<std::int32_t>(LastBits(run, N))));
}

/// In front of a length field of N bits: the limit is the length plus `Extra` from here.
template <std::int32_t T, std::int32_t N, std::int32_t Extra>
void OpenScopeAtLengthStart(CsnRun& run) {
    TagAdd(run, T, run.endPos);
    const auto length = static_cast<std::int32_t>(BitsAt(run, run.bitPos, N));
    SetEnd(run, Sum(run.bitPos, length + Extra));
}

/// In front of a 6-bit length code whose values below 6 stand for lengths from 64 on.
template <std::int32_t T>
void OpenScopeAtCodedLength(CsnRun& run) {
    TagAdd(run, T, run.endPos);
    const auto code = static_cast<std::int32_t>(BitsAt(run, run.bitPos, 6));
    SetEnd(run, Sum(run.bitPos, code < 6 ? code + 65 : code + 1));
}

/// What follows is limited to N bits.
template <std::int32_t T, std::int32_t N>
void OpenFixedScope(CsnRun& run) {
    TagAdd(run, T, run.endPos);
    SetEnd(run, Sum(run.bitPos, N));
}

/// Takes back the limit of a scope that was opened under the same tag. If the scope reaches past
/// the run and all of the run was read, what is missing counts as read: the run's result is then
/// more than its length, and whoever compares the two refuses it.
template <std::int32_t T>
void CloseScope(CsnRun& run) {
    if (run.bitPos == RunEnd(run)) {
        run.bitPos = std::max(run.bitPos, run.scopeEnd);
    }
    SetEnd(run, TagValue(run, T));
}

/// Encoding: writes the bits since the noted position, less D, into the N bits that begin E before
/// that position.
template <std::int32_t T, std::int32_t N, std::int32_t D, std::int32_t E>
void WriteBackLength(CsnRun& run) {
    if (run.writer == nullptr) {
        return;
    }
    const std::int32_t noted = TagValue(run, T);
    const std::int32_t length = Difference(Difference(run.bitPos, noted), D);
    run.writer->Write(std::int64_t{noted} - E, static_cast<std::uint32_t>(length), N);
}

/// Goes back to N bits behind the noted position if more than that were passed.
template <std::int32_t T, std::int32_t N>
void ClipToSpan(CsnRun& run) {
    const std::int32_t noted = TagValue(run, T);
    if (Difference(run.bitPos, noted) >= N + 1) {
        SetPosition(run, Sum(noted, N));
    }
}

/// Goes behind an element that began at the noted position with its length in N bits; `Extra` is
/// what the length does not count.
template <std::int32_t T, std::int32_t N, std::int32_t Extra>
void JumpOverElement(CsnRun& run) {
    const std::int32_t noted = TagValue(run, T);
    const auto length = static_cast<std::int32_t>(BitsAt(run, noted, N));
    SetPosition(run, Sum(noted, length + Extra));
}

/// Keeps the last N bits as a number.
template <std::int32_t T, std::int32_t N>
void KeepCount(CsnRun& run) {
    TagAdd(run, T, static_cast<std::int32_t>(LastBits(run, N)));
}

/// Keeps the result of the value function `Count`.
template <std::int32_t T, CsnValueFunction Count>
void SetCount(CsnRun& run) {
    TagAdd(run, T, static_cast<std::int32_t>(Count(run)));
}

/// Adds the result of the value function `Count` to the number kept.
template <std::int32_t T, CsnValueFunction Count>
void AddCount(CsnRun& run) {
    TagUpdate(run, T, Sum(TagValue(run, T), static_cast<std::int32_t>(Count(run))));
}

/// Raises a running maximum to the last N bits.
template <std::int32_t T, std::int32_t N>
void RaiseMaximum(CsnRun& run) {
    const auto value = static_cast<std::int32_t>(LastBits(run, N));
    if (value > TagValue(run, T)) {
        TagUpdate(run, T, value);
    }
}

/// Refuses the last N bits if they are all 0.
template <std::int32_t N>
void RejectZero(CsnRun& run) {
    if (LastBits(run, N) == 0) {
        run.flags |= kFlagRefused;
    }
}

/// Refuses the last N bits if they are all 0 or all 1.
template <std::int32_t N>
void RejectZeroAndOnes(CsnRun& run) {
    const std::uint32_t value = LastBits(run, N);
    if (value == 0 || value == (1U << N) - 1) {
        run.flags |= kFlagRefused;
    }
}

// Value functions. A result of 16384 or more is no count; a negative one comes out as such.

/// Bits up to the next octet boundary, 0 to 7.
inline std::uint32_t BitsToOctetBoundary(CsnRun& run) {
    return -static_cast<std::uint32_t>(run.bitPos) & 7U;
}

/// The number K itself.
template <std::uint32_t K>
std::uint32_t Constant(CsnRun& /*run*/) {
    return K;
}

/// How many of the last N bits are set.
template <std::int32_t N>
std::uint32_t Ones(CsnRun& run) {
    return static_cast<std::uint32_t>(std::popcount(LastBits(run, N)));
}

/// How many of the last bits are set, of as many as the noted number says, up to 32.
template <std::int32_t T>
std::uint32_t OnesOf(CsnRun& run) {
    const std::int32_t count = std::clamp(TagValue(run, T), 0, 32);
    return static_cast<std::uint32_t>(std::popcount(LastBits(run, count)));
}

/// The noted number plus K, which may be negative.
template <std::int32_t T, std::int32_t K>
std::uint32_t TagPlus(CsnRun& run) {
    return static_cast<std::uint32_t>(Sum(TagValue(run, T), K));
}

/// What the noted number leaves of K.
template <std::int32_t T, std::int32_t K>
std::uint32_t RestOf(CsnRun& run) {
    return static_cast<std::uint32_t>(Difference(K, TagValue(run, T)));
}

/// The noted number of octets, in bits.
template <std::int32_t T>
std::uint32_t OctetsToBits(CsnRun& run) {
    return static_cast<std::uint32_t>(TagValue(run, T)) * 8U;
}

/// Bits left of a span of N bits that began at the noted position.
template <std::int32_t T, std::int32_t N>
std::uint32_t BitsLeftInSpan(CsnRun& run) {
    const std::int32_t end = Sum(TagValue(run, T), N);
    return static_cast<std::uint32_t>(Difference(end, run.bitPos));
}

/// The same with the span at bit 0 if no position was noted.
template <std::int32_t T, std::int32_t N>
std::uint32_t BitsLeftInSpanOrZeroBased(CsnRun& run) {
    const std::int32_t end = Sum(TagValueOrZero(run, T), N);
    return static_cast<std::uint32_t>(Difference(end, run.bitPos));
}

/// The same, and 0 once the span is passed.
template <std::int32_t T, std::int32_t N>
std::uint32_t BitsLeftInSpanIfAny(CsnRun& run) {
    const std::int32_t passed = Difference(run.bitPos, TagValue(run, T));
    return passed > N ? 0 : BitsLeftInSpan<T, N>(run);
}

/// Bits left up to the noted end, 0 if it is passed or was never noted.
template <std::int32_t T>
std::uint32_t BitsLeftToEnd(CsnRun& run) {
    const std::int32_t end = TagValueOrZero(run, T);
    return end > run.bitPos ? static_cast<std::uint32_t>(Difference(end, run.bitPos)) : 0;
}

/// What a function that a description declares makes of the noted number.
template <std::int32_t T, std::uint32_t (*Function)(std::int32_t)>
std::uint32_t Declared(CsnRun& run) {
    return Function(TagValue(run, T));
}

}  // namespace functions
}  // namespace quorvane::csn
