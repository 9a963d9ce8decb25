// No entry point reads outside what it was given, and what it was given is all that counts.

#include <algorithm>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>
#include <vector>

#include "quorvane/decode.h"
#include "support/entry_points.h"
#include "support/guarded_buffer.h"
#include "support/random_messages.h"

namespace quorvane {
namespace {

constexpr int kMessages = 3000;

class QuietStderr {
  public:
    QuietStderr() { testing::internal::CaptureStderr(); }
    ~QuietStderr() { testing::internal::GetCapturedStderr(); }
};

TEST(Bounds, ASpanIsReadUpToItsEnd) {
    const test::GuardedBuffer buffer(4096);
    test::RandomMessages messages(1);
    std::string text;
    std::string diagnostics;
    for (int round = 0; round < kMessages; ++round) {
        const auto message = messages.Next();
        if (message.octets.size() > 4096) {
            continue;
        }
        const std::span<std::uint8_t> guarded = buffer.Last(message.octets.size());
        std::copy(message.octets.begin(), message.octets.end(), guarded.begin());
        DecodeInto(message.decoding, guarded, text, diagnostics);
    }
}

TEST(Bounds, BehindASpanStandZeros) {
    test::RandomMessages messages(2);
    for (int round = 0; round < kMessages; ++round) {
        const auto message = messages.Next();
        std::vector<std::uint8_t> padded = message.octets;
        padded.resize(message.octets.size() + kReadAhead);
        const auto length = static_cast<std::int32_t>(message.octets.size());
        const Result ofSpan = Decode(message.decoding, message.octets);
        const Result ofPadded =
            Decode(message.decoding, PaddedMessage(padded.data(), length, padded.size()));
        ASSERT_EQ(ofSpan.found, ofPadded.found);
        ASSERT_EQ(ofSpan.text, ofPadded.text);
        ASSERT_EQ(ofSpan.diagnostics, ofPadded.diagnostics);
    }
}

TEST(Bounds, BehindACapacityStandZeros) {
    test::RandomMessages messages(3);
    for (int round = 0; round < kMessages; ++round) {
        const auto message = messages.Next();
        std::vector<std::uint8_t> padded = message.octets;
        padded.resize(message.octets.size() + kReadAhead);
        const auto length = static_cast<std::int32_t>(messages.Below(message.octets.size() + 1));
        const Result shorter = Decode(
            message.decoding, PaddedMessage(message.octets.data(), length, message.octets.size()));
        const Result longer =
            Decode(message.decoding, PaddedMessage(padded.data(), length, padded.size()));
        ASSERT_EQ(shorter.text, longer.text);
        ASSERT_EQ(shorter.diagnostics, longer.diagnostics);
    }
}

// The promise of the plain functions: max(length, 0) + kReadAhead readable octets are enough.
TEST(Bounds, PlainFunctionsReadTheReadAheadAndNoMore) {
    constexpr std::size_t kMostOctets = 512;
    const test::GuardedBuffer buffer(kMostOctets + kReadAhead);
    test::RandomMessages messages(4);
    const QuietStderr quiet;
    CString text;
    for (const test::EntryPoint& entry : test::EntryPoints()) {
        for (int round = 0; round < 300; ++round) {
            const std::size_t length = messages.Below(kMostOctets);
            const std::span<std::uint8_t> guarded = buffer.Last(length + kReadAhead);
            const std::vector<std::uint8_t> noise = messages.Noise(guarded.size());
            std::copy(noise.begin(), noise.end(), guarded.begin());
            const bool negative = length == 0 && messages.Below(2) == 0;
            entry.plain(guarded.data(), negative ? -1 : static_cast<std::int32_t>(length), text);
        }
    }
    for (int round = 0; round < kMessages; ++round) {
        const auto message = messages.Next();
        const std::size_t length = messages.Below(std::min(kMostOctets, message.octets.size() + 1));
        const std::span<std::uint8_t> guarded = buffer.Last(length + kReadAhead);
        const std::vector<std::uint8_t> noise = messages.Noise(guarded.size());
        std::copy(noise.begin(), noise.end(), guarded.begin());
        std::copy_n(message.octets.begin(), std::min(message.octets.size(), guarded.size()),
                    guarded.begin());
        const auto& entry = test::EntryPoints()[static_cast<std::size_t>(message.decoding)];
        entry.plain(guarded.data(), static_cast<std::int32_t>(length), text);
    }
}

// The derivation of kReadAhead: nothing farther than 2475 octets behind the length ever shows.
TEST(Bounds, WhatLiesBehindTheFarthestLookNeverShows) {
    constexpr std::size_t kFarthestLook = 2475;
    test::RandomMessages messages(5);
    for (int round = 0; round < kMessages; ++round) {
        const auto message = messages.Next();
        const std::size_t length = messages.Below(message.octets.size() + 1);
        std::vector<std::uint8_t> buffer =
            messages.Noise(std::max(message.octets.size(), length + kReadAhead));
        std::copy(message.octets.begin(), message.octets.end(), buffer.begin());
        const PaddedMessage whole(buffer.data(), static_cast<std::int32_t>(length), buffer.size());
        const PaddedMessage cut(buffer.data(), whole.length, length + kFarthestLook);
        const Result ofWhole = Decode(message.decoding, whole);
        const Result ofCut = Decode(message.decoding, cut);
        ASSERT_EQ(ofWhole.text, ofCut.text);
        ASSERT_EQ(ofWhole.diagnostics, ofCut.diagnostics);
    }
}

TEST(Bounds, LengthsAtTheEdgesAreDefined) {
    constexpr std::size_t kMapped = std::size_t{INT_MAX} + kReadAhead;
    void* memory = mmap(nullptr, kMapped, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    auto* octets = static_cast<std::uint8_t*>(memory);
    test::RandomMessages messages(6);
    const QuietStderr quiet;
    for (int round = 0; round < 200; ++round) {
        const auto message = messages.Next();
        std::copy(message.octets.begin(), message.octets.end(), octets);
        const auto& entry = test::EntryPoints()[static_cast<std::size_t>(message.decoding)];
        for (const std::int32_t length : {INT_MIN, INT_MIN + 1, INT_MIN / 8, -1, 0, INT_MAX / 8,
                                          INT_MAX / 8 + 1, INT_MAX - 1, INT_MAX}) {
            CString first;
            CString second;
            const int value = entry.plain(octets, length, first);
            ASSERT_EQ(entry.plain(octets, length, second), value);
            ASSERT_EQ(first, second);
        }
        std::memset(octets, 0, message.octets.size());
    }
    munmap(memory, kMapped);
}

// Whatever the type: a length in bits that wraps around would be a long message.
TEST(Bounds, LengthsFarBelowZeroAreNone) {
    std::vector<std::uint8_t> octets(24 + kReadAhead);
    for (int first = 0; first < 256; ++first) {
        octets[0] = static_cast<std::uint8_t>(first);
        for (const Decoding decoding : {Decoding::RRSPD, Decoding::RRUplink, Decoding::L3Uplink,
                                        Decoding::RLC_MACDownlink, Decoding::EPS_MMUplink}) {
            const auto resultAt = [&](std::int32_t length) {
                return Decode(decoding, PaddedMessage(octets.data(), length, octets.size()));
            };
            const Result of = resultAt(-1'000'000);
            for (const std::int32_t length : {-300'000'000, -1'566'525'415, INT32_MIN}) {
                const Result far = resultAt(length);
                ASSERT_EQ(far.text, of.text) << first << " " << length;
                ASSERT_EQ(far.diagnostics, of.diagnostics) << first << " " << length;
            }
        }
    }
}

}  // namespace
}  // namespace quorvane
