#include "quorvane/cstring.h"

#if defined(QUORVANE_OWN_CSTRING)

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

/// The characters of `text`, of which only the first `most` may be readable; -1: up to its null.
template <typename Character>
std::basic_string_view<Character> Bounded(const Character* text, int most) {
    std::size_t length = 0;
    while ((most < 0 || length < static_cast<std::size_t>(most)) && text[length] != Character()) {
        ++length;
    }
    return {text, length};
}

// Formats one conversion after the other. The platform's own wide printf is of no use here: what
// it makes of %s differs between systems, and of characters outside ASCII between locales.
// std::format has another syntax and takes no va_list.
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

        [[nodiscard]] bool Has(char flag) const { return flags.find(flag) != std::string::npos; }
    };

    // More is a mistake in the format.
    static constexpr int kMostPadding = 1 << 20;

    void Convert(const wchar_t* start) {
        Directive directive;
        for (; *next_ != L'\0' && std::wcschr(L"-+ #0", *next_) != nullptr; ++next_) {
            directive.flags += static_cast<char>(*next_);
        }
        const int width = std::clamp(ReadNumber(), -kMostPadding, kMostPadding);
        if (width < 0) {
            directive.flags += '-';
        }
        directive.width = std::abs(width);
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
        } else if (isOneOf(L"di")) {
            AppendInteger<int, long, long long>(directive, static_cast<char>(conversion));
        } else if (isOneOf(L"uxXo")) {
            AppendInteger<unsigned, unsigned long, unsigned long long>(
                directive, static_cast<char>(conversion));
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
        std::int64_t number = 0;
        for (; *next_ >= L'0' && *next_ <= L'9'; ++next_) {
            number = std::min<std::int64_t>(INT_MAX, number * 10 + (*next_ - L'0'));
        }
        return static_cast<int>(number);
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

    template <typename Int, typename Long, typename LongLong>
    void AppendInteger(const Directive& directive, char conversion) {
        switch (directive.size) {
            case Size::kLong:
                return AppendNumber(directive, conversion, va_arg(arguments_, Long), "l");
            case Size::kLongLong:
                return AppendNumber(directive, conversion, va_arg(arguments_, LongLong), "ll");
            case Size::kShort:
                return AppendNumber(directive, conversion, va_arg(arguments_, Int), "h");
            case Size::kDefault:
                return AppendNumber(directive, conversion, va_arg(arguments_, Int));
        }
    }

    /// The flags that printf defines for the conversion.
    static std::string_view FlagsOf(char conversion) {
        return conversion == 'p'                           ? "-"
               : std::strchr("diu", conversion) != nullptr ? "-+ 0"
                                                           : "-+ #0";
    }

    // Numbers are ASCII in every system's narrow printf.
    template <typename Number>
    void AppendNumber(const Directive& directive, char conversion, Number number,
                      const char* size = "") {
        std::string narrow = "%";
        for (const char flag : FlagsOf(conversion)) {
            if (directive.Has(flag)) {
                narrow += flag;
            }
        }
        if (directive.width > 0) {
            narrow += std::to_string(directive.width);
        }
        if (directive.precision >= 0 && conversion != 'p') {
            narrow += "." + std::to_string(std::min(directive.precision, kMostPadding));
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
            AppendPadded(directive,
                         Widened(Bounded(text == nullptr ? "(null)" : text, directive.precision)));
        } else {
            const wchar_t* text = va_arg(arguments_, const wchar_t*);
            AppendPadded(directive,
                         Bounded(text == nullptr ? L"(null)" : text, directive.precision));
        }
    }

    void AppendPadded(const Directive& directive, std::wstring_view text) {
        const auto width = static_cast<std::size_t>(directive.width);
        const std::size_t padding = width > text.size() ? width - text.size() : 0;
        const bool left = directive.Has('-');
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
