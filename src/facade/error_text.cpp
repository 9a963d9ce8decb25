#include "facade/error_text.h"

namespace quorvane::facade {

std::string_view ErrorText(bits::Code code) {
    switch (code) {
        case bits::Code::kSyntaxError:
            return "SYNTAX ERROR";
        case bits::Code::kUnknownMessage:
            return "UNKNOWN MESSAGE";
        case bits::Code::kUnknownIei:
            return "UNKNOWN IEI";
        case bits::Code::kMessageTooShort:
            return "MESSAGE TOO SHORT";
        case bits::Code::kMissingConditional:
            return "MISSING REQUIRED CONDITIONAL IE";
        case bits::Code::kUnexpectedConditional:
            return "FOUND UNEXPECTED CONDITIONAL IE";
        case bits::Code::kMandatoryError:
            return "MANDATORY IE SYNTAX ERROR";
        case bits::Code::kConditionalError:
            return "CONDITIONAL IE SYNTAX ERROR";
        case bits::Code::kOptionalError:
            return "OPTIONAL IE SYNTAX ERROR";
        case bits::Code::kFieldOutOfRange:
            return "FIELD OUT OF RANGE";
        case bits::Code::kMissingOptional:
            return "MISSING OPTIONAL";
        case bits::Code::kSizeError:
        case bits::Code::kSizeOutOfRange:
            break;
    }
    return {};
}

}  // namespace quorvane::facade
