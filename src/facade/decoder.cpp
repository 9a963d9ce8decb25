#include "facade/decoder.h"

#include <cstddef>

#include "bits/arena.h"
#include "facade/decodings.h"
#include "iecodec/message_container.h"
#include "reflect/render.h"
#include "reflect/text_buffer.h"

namespace quorvane {
namespace facade {
namespace {

/// What a thread keeps from call to call. Arena and text give back what a very large message made
/// them take; the diagnostics do so here.
struct Workspace {
    static constexpr std::size_t kMostDiagnosticsKept = std::size_t{1} << 16;

    bits::Arena arena;
    reflect::TextBuffer text;
    iecodec::Diagnostics diagnostics;

    void Clear() {
        arena.Reset();
        text.Clear();
        if (diagnostics.Lines().capacity() > kMostDiagnosticsKept) {
            diagnostics = iecodec::Diagnostics();
        }
        diagnostics.Clear();
    }
};

Workspace& ThreadWorkspace() {
    thread_local Workspace workspace;
    return workspace;
}

/// The text of `code`; empty if it has none.
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

}  // namespace

Answer DecodeMessage(Decoding decoding, const bits::BitReader& reader, std::int64_t length) {
    const DecodingRow& row = RowOf(decoding);
    const Binding binding = BindingOf(decoding);
    Workspace& workspace = ThreadWorkspace();
    workspace.Clear();
    reflect::TextBuffer& text = workspace.text;

    iecodec::MessageContainer container;
    bits::Outcome outcome = iecodec::kUnknownMessage;
    if (binding.set != nullptr) {
        iecodec::DecodeContext context{binding.family->codec, reader, workspace.arena,
                                       workspace.diagnostics};
        outcome = iecodec::DispatchMessage(context, *binding.set, row.BitsOf(length), container);
    }
    if (outcome == iecodec::kUnknownMessage) {
        text.Append("Failed to decode \"");
        text.Append(row.textName);
        text.Append("\" message");
        return {false, true, text.View(), workspace.diagnostics.Lines()};
    }

    text.Append("Decoded using \"");
    text.Append(row.textName);
    text.Append("\".\n");
    if (outcome.Failed()) {
        text.Append("\n");
        AppendErrorLine(text, outcome.Error());
        text.Append("\n");
    }
    const std::uint16_t type = binding.set->memberTypes[container.tag - 1];
    const reflect::TypeTables& types = binding.family->types;
    text.Append("MESSAGE: ");
    text.Append(types.types[type].name);
    text.Append("\n");
    const bool ascii = reflect::AppendText(text, types, type, container.body);
    return {true, ascii, text.View(), workspace.diagnostics.Lines()};
}

std::string ErrorLine(bits::Code code) {
    reflect::TextBuffer text;
    AppendErrorLine(text, code);
    return std::string(text.View());
}

}  // namespace facade
}  // namespace quorvane
