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

char* PutJsonString(char* at, std::string_view words) {
    *at++ = '"';
    for (const char character : words) {
        const auto value = static_cast<unsigned char>(character);
        if (value >= 0x80) {
            at = std::ranges::copy(Utf8Of(value), at).out;
        } else if (value < 0x20 || character == '"' || character == '\\') {
            at = PutEscaped(at, character);
        } else {
            *at++ = character;
        }
    }
    *at++ = '"';
    return at;
}

}  // namespace quorvane::facade
