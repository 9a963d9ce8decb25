#pragma once

// CString, the wide string that CQuorvaneEngine writes its result to.
//
// With the Microsoft Foundation Classes this is their class; define QUORVANE_OWN_CSTRING to do
// without them there. Everywhere else it is the class below, which has the part of that class that
// the library and most of its users need, with the same meaning.

#if defined(_MSC_VER) && !defined(QUORVANE_OWN_CSTRING) && __has_include(<afxstr.h>)

#include <afxstr.h>
#if !defined(_UNICODE)
#error "quorvane/engine.h needs wide CStrings: build with _UNICODE, or define QUORVANE_OWN_CSTRING"
#endif

#else

#if !defined(QUORVANE_OWN_CSTRING)
#define QUORVANE_OWN_CSTRING
#endif

#include <cstdarg>
#include <string>

#include "quorvane/export.h"

/// A wide string. Copies are deep; positions and lengths count wide characters. Operations that
/// need memory throw std::bad_alloc if there is none.
class QUORVANE_API CString {
  public:
    CString() = default;
    /// A copy of `text`; null gives an empty string.
    CString(const wchar_t* text);  // NOLINT(google-explicit-constructor): as in the class it is for

    /// Replaces the contents by `format` with its arguments in place.
    ///
    /// As in printf, with these conversions: %d %i %u %x %X %o and %c take numbers, with the sizes
    /// h, l and ll; %f %e %g (and upper case) a double; %p a pointer; %s a wide string, %S a narrow
    /// one, and %ls and %hs say so explicitly; %% is a per cent sign. Width and precision are
    /// numbers or *; padding ends at 2^20 characters, and a string is read no farther
    /// than its precision. What is no conversion stands for itself.
    void Format(const wchar_t* format, ...);
    /// The same, behind the contents.
    void AppendFormat(const wchar_t* format, ...);
    void AppendFormatV(const wchar_t* format, va_list arguments);

    CString& operator+=(const CString& text);
    CString& operator+=(const wchar_t* text);
    /// Each octet becomes the wide character of the same value. Null appends nothing.
    CString& operator+=(const char* text);
    CString& operator+=(wchar_t character);

    [[nodiscard]] int GetLength() const noexcept;
    [[nodiscard]] bool IsEmpty() const noexcept { return text_.empty(); }
    void Empty() noexcept { text_.clear(); }
    /// Ends in a null character. Valid until the string is changed.
    [[nodiscard]] const wchar_t* GetString() const noexcept { return text_.c_str(); }
    operator const wchar_t*() const noexcept { return GetString(); }  // NOLINT(google-explicit-*)
    /// `index` is in 0 .. GetLength().
    [[nodiscard]] wchar_t GetAt(int index) const { return GetString()[index]; }

    /// Makes the string `length` characters long and gives its characters for writing, until the
    /// next other call. Those that are not written are undefined.
    wchar_t* GetBufferSetLength(int length);

    friend bool operator==(const CString& left, const CString& right) noexcept {
        return left.text_ == right.text_;
    }
    friend bool operator==(const CString& left, const wchar_t* right) {
        return left.text_ == right;
    }

  private:
    std::wstring text_;
};

#endif
