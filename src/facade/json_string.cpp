#include "facade/json_string.h"

#include <algorithm>

#include "facade/utf8.h"
#include "reflect/text_pieces.h"

namespace quorvane::facade {
namespace {

char* PutEscaped(char* at, char character) {
    *at++ = '\\';
    switch (character) {
        case '"':
        case '\\':
            *at++ = character;
            return at;
        case '\n':
            *at++ = 'n';
            return at;
        case '\r':
            *at++ = 'r';
            return at;
        case '\t':
            *at++ = 't';
            return at;
        default:
            at = reflect::PutLiteral(at, "u00");
            return reflect::PutHexPair(at, static_cast<unsigned char>(character));
    }
}

}  // namespace

char* PutJsonCharacter(char* at, char character) {
    if (static_cast<unsigned char>(character) < 0x20 || character == '"' || character == '\\') {
        return PutEscaped(at, character);
    }
    *at++ = character;
    return at;
}

char* PutJsonString(char* at, std::string_view words) {
    *at++ = '"';
    for (const char character : words) {
        const auto value = static_cast<unsigned char>(character);
        if (value < 0x80) {
            at = PutJsonCharacter(at, character);
        } else {
            const auto utf8 = Utf8Of(value);
            at = std::copy(utf8.begin(), utf8.end(), at);
        }
    }
    *at++ = '"';
    return at;
}

}  // namespace quorvane::facade
