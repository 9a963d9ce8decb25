#include "quorvane/cstring.h"

#if defined(QUORVANE_OWN_CSTRING)

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <string_view>
#include <utility>

namespace {

/// Each octet as the wide character of the same value.
std::wstring Widened(std::string_view octets) {
    std::wstring wide;
    for (const char octet : octets) {
        wide += static_cast<wchar_t>(static_cast<unsigned char>(octet));
    }
    return wide;
}

// Formats one conversion after the other. The platform's own wide printf is of no use here: what
// it makes of %s differs between systems, and of characters outside ASCII between locales.
class WideFormatter {
  public:
    WideFormatter(const wchar_t* format, va_list arguments) : next_(format) {
        va_copy(arguments_, arguments);
    }
    WideFormatter(const WideFormatter&) = delete;
    WideFormatter& operator=(const WideFormatter&) = delete;
    ~WideFormatter() { va_end(arguments_); }

    std::wstring Run() {
        while (*next_ != L'\0') {
            if (*next_ != L'%') {
                output_ += *next_++;
                continue;
            }
            const wchar_t* start = next_++;
            Convert(start);
        }
        return std::move(output_);
    }

  private:
    enum class Size { kDefault, kShort, kLong, kLongLong };

    struct Directive {
        std::string flags;
        int width = 0;
        int precision = -1;  // none
        Size size = Size::kDefault;
    };

    void Convert(const wchar_t* start) {
        Directive directive;
        for (; *next_ != L'\0' && std::wcschr(L"-+ #0", *next_) != nullptr; ++next_) {
            directive.flags += static_cast<char>(*next_);
        }
        directive.width = ReadNumber();
        if (directive.width < 0) {
            directive.flags += '-';
            directive.width = -directive.width;
        }
        if (*next_ == L'.') {
            ++next_;
            directive.precision = ReadNumber();
        }
        directive.size = ReadSize();
        const wchar_t conversion = *next_;
        if (conversion != L'\0') {
            ++next_;
        }
        const auto isOneOf = [conversion](std::wstring_view letters) {
            return letters.find(conversion) != std::wstring_view::npos;
        };
        if (conversion == L'%') {
            output_ += L'%';
        } else if (isOneOf(L"diuxXo")) {
            AppendInteger(directive, static_cast<char>(conversion));
        } else if (isOneOf(L"eEfFgG")) {
            AppendNumber(directive, static_cast<char>(conversion), va_arg(arguments_, double));
        } else if (conversion == L'p') {
            AppendNumber(directive, 'p', va_arg(arguments_, void*));
        } else if (isOneOf(L"cC")) {
            const auto character = static_cast<wchar_t>(va_arg(arguments_, int));
            AppendPadded(directive, std::wstring_view(&character, 1));
        } else if (conversion == L's') {
            AppendString(directive, directive.size == Size::kShort);
        } else if (conversion == L'S') {
            AppendString(directive, directive.size != Size::kLong);
        } else {
            // Not a conversion: it stands for itself.
            output_.append(start, next_);
        }
    }

    int ReadNumber() {
        if (*next_ == L'*') {
            ++next_;
            return va_arg(arguments_, int);
        }
        constexpr int kMost = 1 << 20;  // more is a mistake in the format
        int number = 0;
        for (; *next_ >= L'0' && *next_ <= L'9'; ++next_) {
            number = std::min(kMost, number * 10 + static_cast<int>(*next_ - L'0'));
        }
        return number;
    }

    Size ReadSize() {
        Size size = Size::kDefault;
        for (;; ++next_) {
            if (*next_ == L'h') {
                size = Size::kShort;
            } else if (*next_ == L'l') {
                size = size == Size::kLong ? Size::kLongLong : Size::kLong;
            } else {
                return size;
            }
        }
    }

    void AppendInteger(const Directive& directive, char conversion) {
        switch (directive.size) {
            case Size::kLong:
                return AppendNumber(directive, conversion, va_arg(arguments_, long), "l");
            case Size::kLongLong:
                return AppendNumber(directive, conversion, va_arg(arguments_, long long), "ll");
            case Size::kShort:
                return AppendNumber(directive, conversion, va_arg(arguments_, int), "h");
            case Size::kDefault:
                return AppendNumber(directive, conversion, va_arg(arguments_, int));
        }
    }

    // Numbers are ASCII in every system's narrow printf.
    template <typename Number>
    void AppendNumber(const Directive& directive, char conversion, Number number,
                      const char* size = "") {
        std::string narrow = "%" + directive.flags;
        if (directive.width > 0) {
            narrow += std::to_string(directive.width);
        }
        if (directive.precision >= 0) {
            narrow += "." + std::to_string(directive.precision);
        }
        narrow += size;
        narrow += conversion;
        const int length = std::snprintf(nullptr, 0, narrow.c_str(), number);
        if (length <= 0) {
            return;
        }
        std::string text(static_cast<std::size_t>(length) + 1, '\0');
        std::snprintf(text.data(), text.size(), narrow.c_str(), number);
        output_.append(text.begin(), text.end() - 1);
    }

    void AppendString(const Directive& directive, bool narrow) {
        if (narrow) {
            const char* text = va_arg(arguments_, const char*);
            AppendPadded(directive, Widened(text == nullptr ? "(null)" : text));
        } else {
            const wchar_t* text = va_arg(arguments_, const wchar_t*);
            AppendPadded(directive, text == nullptr ? L"(null)" : text);
        }
    }

    void AppendPadded(const Directive& directive, std::wstring_view text) {
        if (directive.precision >= 0) {
            text = text.substr(0, static_cast<std::size_t>(directive.precision));
        }
        const auto width = static_cast<std::size_t>(directive.width);
        const std::size_t padding = width > text.size() ? width - text.size() : 0;
        const bool left = directive.flags.find('-') != std::string::npos;
        output_.append(left ? 0 : padding, L' ');
        output_ += text;
        output_.append(left ? padding : 0, L' ');
    }

    const wchar_t* next_;
    va_list arguments_;
    std::wstring output_;
};

}  // namespace

CString::CString(const wchar_t* text) : text_(text == nullptr ? L"" : text) {}

void CString::Format(const wchar_t* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    text_ = WideFormatter(format, arguments).Run();
    va_end(arguments);
}

void CString::AppendFormat(const wchar_t* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    AppendFormatV(format, arguments);
    va_end(arguments);
}

void CString::AppendFormatV(const wchar_t* format, va_list arguments) {
    text_ += WideFormatter(format, arguments).Run();
}

CString& CString::operator+=(const CString& text) {
    text_ += text.text_;
    return *this;
}

CString& CString::operator+=(const wchar_t* text) {
    if (text != nullptr) {
        text_ += text;
    }
    return *this;
}

CString& CString::operator+=(const char* text) {
    if (text != nullptr) {
        text_ += Widened(text);
    }
    return *this;
}

CString& CString::operator+=(wchar_t character) {
    text_ += character;
    return *this;
}

int CString::GetLength() const noexcept {
    return static_cast<int>(text_.size());
}

wchar_t* CString::GetBufferSetLength(int length) {
    text_.resize(static_cast<std::size_t>(std::max(length, 0)));
    return text_.data();
}

#endif
