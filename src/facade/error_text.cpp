#include "facade/error_text.h"

#include "iecodec/codec_context.h"

namespace quorvane::facade {

std::string_view ErrorText(std::int64_t code) {
    switch (code) {
        case iecodec::kSyntaxError:
            return "SYNTAX ERROR";
        case iecodec::kUnknownMessage:
            return "UNKNOWN MESSAGE";
        case iecodec::kUnknownIei:
            return "UNKNOWN IEI";
        case iecodec::kMessageTooShort:
            return "MESSAGE TOO SHORT";
        case iecodec::kMandatoryError:
            return "MANDATORY IE SYNTAX ERROR";
        case iecodec::kConditionalError:
            return "CONDITIONAL IE SYNTAX ERROR";
        case iecodec::kMissingOptional:
            return "MISSING OPTIONAL";
        // No decoder gives these.
        case -5:
            return "MISSING REQUIRED CONDITIONAL IE";
        case -6:
            return "FOUND UNEXPECTED CONDITIONAL IE";
        case -9:
            return "OPTIONAL IE SYNTAX ERROR";
        case -10:
            return "FIELD OUT OF RANGE";
        default:
            return {};
    }
}

}  // namespace quorvane::facade
