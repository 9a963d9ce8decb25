#include <climits>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "quorvane/cstring.h"

namespace {

std::wstring Formatted(const wchar_t* format, ...) {
    CString text;
    va_list arguments;
    va_start(arguments, format);
    text.AppendFormatV(format, arguments);
    va_end(arguments);
    return text.GetString();
}

TEST(CStringTest, StartsEmpty) {
    const CString text;
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(text.GetLength(), 0);
    EXPECT_EQ(text, L"");
    EXPECT_EQ(CString(nullptr), L"");
}

TEST(CStringTest, FormatReplaces) {
    CString text(L"before");
    text.Format(L"Decoded using \"%s\".\n", L"X");
    EXPECT_EQ(text, L"Decoded using \"X\".\n");
}

TEST(CStringTest, FormatTakesItsOwnContents) {
    CString text(L"ab");
    text.Format(L"%s-%s", text.GetString(), text.GetString());
    EXPECT_EQ(text, L"ab-ab");
}

TEST(CStringTest, AppendFormatAppends) {
    CString text(L"a");
    text.AppendFormat(L"\n%s\n", L"b");
    text.AppendFormat(L"%s", text.GetString());
    EXPECT_EQ(text, L"a\nb\na\nb\n");
}

TEST(CStringTest, AppendsWideAndNarrow) {
    CString text;
    text += L"wide ";
    text += "narrow ";
    text += CString(L"own");
    text += L'!';
    text += static_cast<const wchar_t*>(nullptr);
    text += static_cast<const char*>(nullptr);
    EXPECT_EQ(text, L"wide narrow own!");
}

TEST(CStringTest, WidensEachOctetToItsOwnValue) {
    CString text;
    text += "GSM\xDFPLMNS\xFF";
    EXPECT_EQ(text, L"GSM\u00DFPLMNS\u00FF");
    EXPECT_EQ(text.GetLength(), 10);
    EXPECT_EQ(text.GetAt(3), L'\u00DF');
}

TEST(CStringTest, AppendsItself) {
    CString text(L"ab");
    text += text;
    EXPECT_EQ(text, L"abab");
}

TEST(CStringTest, CopiesAreDeep) {
    CString text(L"ab");
    CString copy = text;
    copy += L"c";
    EXPECT_EQ(text, L"ab");
    text = copy;
    copy.Empty();
    EXPECT_EQ(text, L"abc");
    EXPECT_TRUE(copy.IsEmpty());
}

TEST(CStringTest, IsAWidePointer) {
    const CString text(L"ab");
    const wchar_t* characters = text;
    EXPECT_EQ(std::wstring(characters), L"ab");
}

TEST(CStringTest, GivesItsBuffer) {
    CString text(L"abc");
    wchar_t* characters = text.GetBufferSetLength(5);
    for (int index = 0; index < 5; ++index) {
        characters[index] = static_cast<wchar_t>(L'v' + index);
    }
    EXPECT_EQ(text, L"vwxyz");
    text.GetBufferSetLength(2);
    EXPECT_EQ(text, L"vw");
}

TEST(WideFormat, Numbers) {
    EXPECT_EQ(Formatted(L"%d", -12), L"-12");
    EXPECT_EQ(Formatted(L"%d", INT_MIN), L"-2147483648");
    EXPECT_EQ(Formatted(L"%i|%u|%x|%X|%o", 1, 2U, 255U, 255U, 8U), L"1|2|ff|FF|10");
    EXPECT_EQ(Formatted(L"%ld|%lu", 3000000000L, 1UL), L"3000000000|1");
    EXPECT_EQ(Formatted(L"%lld", LLONG_MIN), L"-9223372036854775808");
    EXPECT_EQ(Formatted(L"%hd", 65537), L"1");
    EXPECT_EQ(Formatted(L"%.2f", 1.5), L"1.50");
}

TEST(WideFormat, FlagsWidthAndPrecision) {
    EXPECT_EQ(Formatted(L"[%5d][%-5d][%05d][%+d]", 42, 42, 42, 42), L"[   42][42   ][00042][+42]");
    EXPECT_EQ(Formatted(L"[%*d][%.*d]", 4, 7, 3, 7), L"[   7][007]");
    EXPECT_EQ(Formatted(L"[%*d]", -4, 7), L"[7   ]");
    EXPECT_EQ(Formatted(L"%#x", 255U), L"0xff");
    EXPECT_EQ(Formatted(L"[%5s][%-5s][%.2s]", L"abc", L"abc", L"abc"), L"[  abc][abc  ][ab]");
}

TEST(WideFormat, Strings) {
    EXPECT_EQ(Formatted(L"%s|%ls|%S|%hs", L"wide", L"long", "narrow", "short"),
              L"wide|long|narrow|short");
    EXPECT_EQ(Formatted(L"%S", "\xDF"), L"\u00DF");
    EXPECT_EQ(Formatted(L"%s", static_cast<const wchar_t*>(nullptr)), L"(null)");
    EXPECT_EQ(Formatted(L"%hs", static_cast<const char*>(nullptr)), L"(null)");
    EXPECT_EQ(Formatted(L"%c%c", L'a', L'\u00DF'), L"a\u00DF");
}

TEST(WideFormat, WhatIsNoConversionStandsForItself) {
    EXPECT_EQ(Formatted(L"100%%"), L"100%");
    EXPECT_EQ(Formatted(L"50%"), L"50%");
    EXPECT_EQ(Formatted(L"%-5y%d", 1), L"%-5y1");
}

TEST(WideFormat, EachConversionAtItsEnds) {
    EXPECT_EQ(Formatted(L"%d|%i", INT_MAX, INT_MIN), L"2147483647|-2147483648");
    EXPECT_EQ(Formatted(L"%u|%x|%X|%o", UINT_MAX, UINT_MAX, UINT_MAX, UINT_MAX),
              L"4294967295|ffffffff|FFFFFFFF|37777777777");
    EXPECT_EQ(Formatted(L"%llu|%llx|%lu", ULLONG_MAX, ULLONG_MAX, 4000000000UL),
              L"18446744073709551615|ffffffffffffffff|4000000000");
    EXPECT_EQ(Formatted(L"%hu|%hx", 0x1FFFFU, 0x1FFFFU), L"65535|ffff");
    EXPECT_EQ(Formatted(L"%e|%E|%g|%G", 1e300, 1e300, 1e300, 1e300),
              L"1.000000e+300|1.000000E+300|1e+300|1E+300");
    EXPECT_EQ(Formatted(L"%f|%F", -0.0, 0.5), L"-0.000000|0.500000");
    EXPECT_EQ(Formatted(L"%.0f", 1e22), L"10000000000000000000000");
    EXPECT_EQ(Formatted(L"%C|%-3c|%3c|", L'a', L'b', L'c'), L"a|b  |  c|");
    EXPECT_EQ(Formatted(L"%hS|%lS", "narrow", L"wide"), L"narrow|wide");
}

TEST(WideFormat, FlagsThatAConversionDoesNotHaveAreLeftOut) {
    int object = 0;
    const std::wstring pointer = Formatted(L"%p", &object);
    EXPECT_EQ(Formatted(L"%+#0.30p", &object), pointer);
    EXPECT_EQ(Formatted(L"%-40p|", &object),
              pointer + std::wstring(40 - pointer.size(), L' ') + L"|");
    EXPECT_EQ(Formatted(L"%#d|%#u", 7, 7U), L"7|7");
}

// What is given for * may be anything.
TEST(WideFormat, WidthsAndPrecisionsOfAnySize) {
    constexpr std::size_t kMost = 1U << 20;
    const std::wstring padding(kMost - 1, L' ');
    EXPECT_EQ(Formatted(L"%*d", INT_MIN, 5), L"5" + padding);
    EXPECT_EQ(Formatted(L"%*d", INT_MAX, 5), padding + L"5");
    EXPECT_EQ(Formatted(L"%*s", INT_MIN, L"x"), L"x" + padding);
    EXPECT_EQ(Formatted(L"%99999999999999999999s", L"x"), padding + L"x");
    EXPECT_EQ(Formatted(L"%.*d", INT_MAX, 5), std::wstring(kMost - 1, L'0') + L"5");
    EXPECT_EQ(Formatted(L"%.*d|%.*s", INT_MIN, 5, -1, L"xy"), L"5|xy");
    const std::wstring longText(kMost + 1, L'x');
    EXPECT_EQ(Formatted(L"%.*s", INT_MAX, longText.c_str()), longText);
    EXPECT_EQ(Formatted(L"%.99999999999999999999s", longText.c_str()), longText);
}

TEST(WideFormat, StringsAreReadNoFartherThanTheirPrecision) {
    const std::vector<wchar_t> wide = {L'a', L'b'};
    const std::vector<char> narrow = {'c', 'd'};
    EXPECT_EQ(Formatted(L"%.2s|%.*S", wide.data(), 2, narrow.data()), L"ab|cd");
    EXPECT_EQ(Formatted(L"[%.0s]", wide.data()), L"[]");
    EXPECT_EQ(Formatted(L"%.3s", static_cast<const wchar_t*>(nullptr)), L"(nu");
}

TEST(WideFormat, LongTexts) {
    const std::wstring piece(10000, L'x');
    EXPECT_EQ(Formatted(L"%s%s", piece.c_str(), piece.c_str()), piece + piece);
}

}  // namespace
