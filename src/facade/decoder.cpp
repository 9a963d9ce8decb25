#include "facade/decoder.h"

#include <algorithm>
#include <cstddef>
#ifdef __MINGW32__
#include <cxxabi.h>
#endif

#include "reflect/render.h"
#include "reflect/text_pieces.h"

namespace quorvane {
namespace facade {
namespace {

using reflect::LineEnd;
using reflect::PutLineEnd;
using reflect::PutLiteral;
using reflect::PutPadded;

// The workspace that the thread keeps. Nothing runs at the end of these, so that they can be read
// as long as the thread runs.
constinit thread_local Workspace* threadWorkspace = nullptr;
constinit thread_local bool threadIsEnding = false;

struct ThreadWorkspace : Workspace {
    ThreadWorkspace() { threadWorkspace = this; }
    ThreadWorkspace(const ThreadWorkspace&) = delete;
    ThreadWorkspace& operator=(const ThreadWorkspace&) = delete;
    ~ThreadWorkspace() {
        threadWorkspace = nullptr;
        threadIsEnding = true;
    }
};

/// Null when the thread has given it back already.
Workspace* FindThreadWorkspace() {
    if (threadWorkspace == nullptr && !threadIsEnding) {
#if defined(__MINGW32__) && defined(__GLIBCXX__)
        // There the memory of a thread_local object is given back before its destructor runs.
        static const char inThisModule = 0;
        const auto destroy = [](void* made) { delete static_cast<ThreadWorkspace*>(made); };
        abi::__cxa_thread_atexit(destroy, new ThreadWorkspace, const_cast<char*>(&inThisModule));
#else
        thread_local ThreadWorkspace made;
#endif
    }
    return threadWorkspace;
}

template <LineEnd kEnd>
char* PutQuote(char* at) {
    if constexpr (kEnd == LineEnd::kJson) {
        return PutLiteral(at, "\\\"");
    } else {
        return PutLiteral(at, "\"");
    }
}

template <LineEnd kEnd>
char* PutQuoted(char* at, std::string_view name) {
    return PutQuote<kEnd>(std::copy(name.begin(), name.end(), PutQuote<kEnd>(at)));
}

template <LineEnd kEnd>
void AppendLineEnd(reflect::TextBuffer& text) {
    text.Advance(PutLineEnd<kEnd>(text.Room(0)));
}

template <LineEnd kEnd>
void AppendErrorLine(reflect::TextBuffer& text, bits::Code code) {
    text.Append("Decoder reported the following error: ");
    if (const std::string_view known = ErrorText(code); !known.empty()) {
        text.Append(known);
    } else {
        text.Append("UNKNOWN ERROR #");
        text.AppendSigned(static_cast<std::int32_t>(code));
    }
    text.Append(kEnd == LineEnd::kJson ? "\\r" : "\r");
    AppendLineEnd<kEnd>(text);
}

/// The record as text, in `text`, which is empty. Inline for the sake of DecodeMessage.
template <LineEnd kEnd>
inline Answer WriteText(reflect::TextBuffer& text, Decoding decoding, const DecodedRecord& decoded,
                        std::string_view diagnostics) {
    const std::string_view name = RowOf(decoding).textName;
    if (!decoded.Found()) {
        char* at = PutLiteral(text.Room(name.size()), "Failed to decode ");
        text.Advance(PutLiteral(PutQuoted<kEnd>(at, name), " message"));
        return {false, true, text.View(), diagnostics};
    }

    char* at = PutLiteral(text.Room(name.size()), "Decoded using ");
    text.Advance(PutLineEnd<kEnd>(PutLiteral(PutQuoted<kEnd>(at, name), ".")));
    if (decoded.outcome.Failed()) {
        AppendLineEnd<kEnd>(text);
        AppendErrorLine<kEnd>(text, decoded.outcome.Error());
        AppendLineEnd<kEnd>(text);
    }
    const std::uint16_t type = decoded.Type();
    const reflect::TypeTables& types = decoded.binding.family->types;
    const std::string_view typeName = types.NameOf(types.types[type]);
    at = PutLiteral(text.Room(typeName.size()), "MESSAGE: ");
    text.Advance(PutLineEnd<kEnd>(PutPadded(at, typeName)));
    const bool plain = reflect::AppendText(text, types, type, decoded.container.body, 0, kEnd);
    return {true, plain, text.View(), diagnostics};
}

}  // namespace

void Workspace::Clear() {
    arena.Reset();
    text.Clear();
    diagnostics.Clear();
}

CallMemory::CallMemory() : workspace_(FindThreadWorkspace()) {
    if (workspace_ == nullptr) {
        own_ = std::make_unique<Workspace>();
        workspace_ = own_.get();
    }
    workspace_->Clear();
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

Answer DecodeMessage(CallMemory& memory, Decoding decoding, const bits::BitReader& reader,
                     std::int64_t length) {
    DecodedRecord decoded;
    DecodeRecord(decoding, reader, length, memory->arena, memory->diagnostics, decoded);
    return WriteText<LineEnd::kPlain>(memory->text, decoding, decoded, memory->diagnostics.Lines());
}

Answer DecodeMessageForJson(CallMemory& memory, Decoding decoding, const bits::BitReader& reader,
                            std::int64_t length) {
    DecodedRecord decoded;
    DecodeRecord(decoding, reader, length, memory->arena, memory->diagnostics, decoded);
    const std::string_view diagnostics = memory->diagnostics.Lines();
    const Answer answer = WriteText<LineEnd::kJson>(memory->text, decoding, decoded, diagnostics);
    if (answer.plain) {
        return answer;
    }
    memory->text.Clear();
    return WriteText<LineEnd::kPlain>(memory->text, decoding, decoded, diagnostics);
}

Answer TextOf(CallMemory& memory, Decoding decoding, const DecodedRecord& decoded) {
    return WriteText<LineEnd::kPlain>(memory->text, decoding, decoded, {});
}

std::string ErrorLine(bits::Code code) {
    reflect::TextBuffer text;
    AppendErrorLine<LineEnd::kPlain>(text, code);
    return std::string(text.View());
}

}  // namespace facade
}  // namespace quorvane
