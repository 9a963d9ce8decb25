#include "facade/decoder.h"

#include <algorithm>
#include <cstddef>

#include "bits/arena.h"
#include "reflect/render.h"

namespace quorvane {
namespace facade {
namespace {

/// What a thread keeps from call to call. All give back what a very large message made them take.
struct Workspace {
    bits::Arena arena;
    reflect::TextBuffer text;
    iecodec::Diagnostics diagnostics;

    void Clear() {
        arena.Reset();
        text.Clear();
        diagnostics.Clear();
    }
};

Workspace& ThreadWorkspace() {
    thread_local Workspace workspace;
    return workspace;
}

void AppendErrorLine(reflect::TextBuffer& text, bits::Code code) {
    text.Append("Decoder reported the following error: ");
    if (const std::string_view known = ErrorText(code); !known.empty()) {
        text.Append(known);
    } else {
        text.Append("UNKNOWN ERROR #");
        text.AppendSigned(static_cast<std::int32_t>(code));
    }
    text.Append("\r\n");
}

/// The record as text, in `text`, which is empty. Inline for the sake of DecodeMessage.
inline Answer WriteText(reflect::TextBuffer& text, Decoding decoding, const DecodedRecord& decoded,
                        std::string_view diagnostics) {
    const std::string_view name = RowOf(decoding).textName;
    if (!decoded.Found()) {
        text.Append("Failed to decode \"");
        text.Append(name);
        text.Append("\" message");
        return {false, true, text.View(), diagnostics};
    }

    text.Append("Decoded using \"");
    text.Append(name);
    text.Append("\".\n");
    if (decoded.outcome.Failed()) {
        text.Append("\n");
        AppendErrorLine(text, decoded.outcome.Error());
        text.Append("\n");
    }
    const std::uint16_t type = decoded.Type();
    const reflect::TypeTables& types = decoded.binding.family->types;
    text.Append("MESSAGE: ");
    text.Append(types.types[type].name);
    text.Append("\n");
    const bool ascii = reflect::AppendText(text, types, type, decoded.container.body);
    return {true, ascii, text.View(), diagnostics};
}

}  // namespace

reflect::TextBuffer& ThreadText() {
    reflect::TextBuffer& text = ThreadWorkspace().text;
    text.Clear();
    return text;
}

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

bits::BitReader ReaderOf(const PaddedMessage& message) {
    const std::size_t farthest = static_cast<std::size_t>(std::max(message.length, 0)) + kReadAhead;
    return {message.octets, static_cast<std::int64_t>(std::min(message.capacity, farthest))};
}

void DecodeRecord(Decoding decoding, const bits::BitReader& reader, std::int64_t length,
                  bits::Arena& arena, iecodec::Diagnostics& diagnostics, DecodedRecord& decoded) {
    decoded.binding = BindingOf(decoding);
    decoded.outcome = iecodec::kUnknownMessage;
    if (decoded.binding.set != nullptr) {
        iecodec::DecodeContext context{decoded.binding.family->codec, reader, arena, diagnostics};
        decoded.outcome = iecodec::DispatchMessage(
            context, *decoded.binding.set, RowOf(decoding).BitsOf(length), decoded.container);
    }
}

Answer DecodeMessage(Decoding decoding, const bits::BitReader& reader, std::int64_t length) {
    Workspace& workspace = ThreadWorkspace();
    workspace.Clear();
    DecodedRecord decoded;
    DecodeRecord(decoding, reader, length, workspace.arena, workspace.diagnostics, decoded);
    return WriteText(workspace.text, decoding, decoded, workspace.diagnostics.Lines());
}

Answer TextOf(Decoding decoding, const DecodedRecord& decoded) {
    return WriteText(ThreadText(), decoding, decoded, {});
}

std::string ErrorLine(bits::Code code) {
    reflect::TextBuffer text;
    AppendErrorLine(text, code);
    return std::string(text.View());
}

}  // namespace facade
}  // namespace quorvane
