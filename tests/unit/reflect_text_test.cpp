#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "reflect/text_buffer.h"
#include "reflect/text_pieces.h"

namespace quorvane::reflect {
namespace {

TEST(TextBuffer, IsEmptyAtFirst) {
    const TextBuffer buffer;
    EXPECT_TRUE(buffer.View().empty());
}

TEST(TextBuffer, AppendsPiecesInOrder) {
    TextBuffer buffer;
    buffer.AppendIndent(2);
    buffer.Append("Name");
    buffer.Append(':');
    buffer.Append("");
    buffer.AppendUnsigned(7);
    buffer.AppendLineEnd();
    EXPECT_EQ(buffer.View(), "    Name:7\n");
}

TEST(TextBuffer, TakesAViewWithoutData) {
    TextBuffer buffer;
    buffer.Append(std::string_view());
    EXPECT_EQ(buffer.View(), "");
}

TEST(TextBuffer, WritesEverySizeOfNumber) {
    TextBuffer buffer;
    for (const std::uint32_t value : {0U, 9U, 10U, 99U, 100U, 999U, 1000U, 65535U, 4294967295U}) {
        buffer.AppendUnsigned(value);
        buffer.Append(' ');
    }
    EXPECT_EQ(buffer.View(), "0 9 10 99 100 999 1000 65535 4294967295 ");
}

TEST(TextBuffer, WritesSignedNumbers) {
    TextBuffer buffer;
    for (const std::int32_t value : {0, 999, 1000, -1, -1000, std::numeric_limits<int>::max(),
                                     std::numeric_limits<int>::min()}) {
        buffer.AppendSigned(value);
        buffer.Append(' ');
    }
    EXPECT_EQ(buffer.View(), "0 999 1000 -1 -1000 2147483647 -2147483648 ");
}

TEST(TextBuffer, AllNumbersBelowTheEndOfTheTableAreTheirDecimals) {
    for (std::uint32_t value = 0; value <= kReadyNumberCount; ++value) {
        TextBuffer buffer;
        buffer.AppendUnsigned(value);
        ASSERT_EQ(buffer.View(), std::to_string(value));
    }
}

TEST(TextBuffer, IndentsByTwoBlanksALevelAtAnyDepth) {
    for (const std::uint32_t levels : {0U, 1U, 15U, 16U, 17U, 100U}) {
        TextBuffer buffer;
        buffer.AppendIndent(levels);
        EXPECT_EQ(buffer.View(), std::string(2 * levels, ' '));
    }
}

TEST(TextBuffer, GrowsAndKeepsWhatItHas) {
    TextBuffer buffer;
    std::string expected;
    for (int line = 0; line < 5000; ++line) {
        const std::string text = "line " + std::to_string(line) + "\n";
        buffer.Append(text);
        expected += text;
    }
    EXPECT_EQ(buffer.View(), expected);
}

TEST(TextBuffer, TakesOneTextOfAnySize) {
    TextBuffer buffer;
    const std::string text(100000, 'x');
    buffer.Append(text);
    EXPECT_EQ(buffer.View(), text);
}

TEST(TextBuffer, ClearKeepsTheCapacity) {
    TextBuffer buffer;
    buffer.Append(std::string(10000, 'x'));
    const std::size_t capacity = buffer.GetCapacity();
    EXPECT_GE(capacity, 10000U);
    buffer.Clear();
    EXPECT_EQ(buffer.View(), "");
    EXPECT_EQ(buffer.GetCapacity(), capacity);
    buffer.Append("again");
    EXPECT_EQ(buffer.View(), "again");
}

TEST(TextBuffer, ClearGivesBackWhatIsTooLargeToKeep) {
    TextBuffer buffer;
    buffer.Append(std::string(TextBuffer::kMostKept + 1, 'x'));
    buffer.Clear();
    EXPECT_EQ(buffer.GetCapacity(), 0U);
    buffer.Append("again");
    EXPECT_EQ(buffer.View(), "again");
}

TEST(TextBuffer, RoomPromisesTheSlackAtEveryFill) {
    // The sanitizer sees any octet that is not there.
    for (std::size_t fill = 4000; fill < 4200; ++fill) {
        TextBuffer buffer;
        buffer.Append(std::string(fill, 'x'));
        char* at = buffer.Room(10);
        std::fill_n(at, 10 + TextBuffer::kSlack, 'y');
        buffer.Advance(at + 10);
        ASSERT_EQ(buffer.View(), std::string(fill, 'x') + std::string(10, 'y'));
    }
}

TEST(TextBuffer, WhatWentIntoTheSlackCounts) {
    for (std::size_t fill = 4000; fill < 4200; ++fill) {
        TextBuffer buffer;
        buffer.Append(std::string(fill, 'x'));
        char* at = buffer.Room(0);
        std::fill_n(at, TextBuffer::kSlack, 'y');
        buffer.Advance(at + TextBuffer::kSlack);
        buffer.Append("end");
        ASSERT_EQ(buffer.View(), std::string(fill, 'x') + std::string(64, 'y') + "end");
    }
}

TEST(TextPieces, PaddedTextsOfEverySizeAreCopied) {
    for (std::size_t size = 0; size <= 3 * kCopyStep; ++size) {
        std::string text;
        for (std::size_t index = 0; index < size; ++index) {
            text += static_cast<char>('a' + index % 26);
        }
        const std::string padded = text + std::string(kCopyStep, '#');
        std::string target(size + kCopyStep, '?');
        const char* end = PutPadded(target.data(), std::string_view(padded).substr(0, size));
        ASSERT_EQ(end, target.data() + size);
        ASSERT_EQ(target.substr(0, size), text);
    }
}

TEST(TextPieces, OctetsAreUpperCasePairsPartedByBlanks) {
    const std::uint8_t octets[] = {0x00, 0x0F, 0xA5, 0xFF};
    char target[16];
    EXPECT_EQ(std::string(target, PutHex(target, octets, 4)), "00 0F A5 FF");
    EXPECT_EQ(std::string(target, PutHex(target, octets + 1, 1)), "0F");
    EXPECT_EQ(PutHex(target, nullptr, 0), target);
}

}  // namespace
}  // namespace quorvane::reflect
