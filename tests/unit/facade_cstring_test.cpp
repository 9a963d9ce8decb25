#include <climits>
#include <gtest/gtest.h>
#include <string>

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
    EXPECT_EQ(Formatted(L"%c%c", L'a', L'\u00DF'), L"a\u00DF");
}

TEST(WideFormat, WhatIsNoConversionStandsForItself) {
    EXPECT_EQ(Formatted(L"100%%"), L"100%");
    EXPECT_EQ(Formatted(L"50%"), L"50%");
    EXPECT_EQ(Formatted(L"%-5y%d", 1), L"%-5y1");
}

TEST(WideFormat, LongTexts) {
    const std::wstring piece(10000, L'x');
    EXPECT_EQ(Formatted(L"%s%s", piece.c_str(), piece.c_str()), piece + piece);
}

}  // namespace
