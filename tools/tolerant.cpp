#include "tools/tolerant.h"

#include <array>

#include "tools/hex.h"

namespace quorvane::tool {
namespace {

void AppendSecurity(const SecurityHeader& header, std::string& text) {
    std::array<std::uint8_t, 4> code{};
    for (std::size_t index = 0; index < code.size(); ++index) {
        code[index] = static_cast<std::uint8_t>(header.authenticationCode >> (24 - 8 * index));
    }
    text.append("Behind a security header: type ").append(std::to_string(header.type));
    text.append(", message authentication code ").append(ToHex(code, ""));
    text.append(", sequence number ").append(std::to_string(header.sequenceNumber)).append("\n");
}

void AppendSurplus(const Message& message, const Surplus& surplus, std::string& text) {
    text.append("Set aside: LOC:[").append(std::to_string(surplus.place.offset)).append(",");
    text.append(std::to_string(surplus.place.length)).append("] ");
    text.append(ToHex(surplus.octets, " "));
    std::string path;
    message.AppendPath(surplus.field, path);
    if (surplus.kind == Surplus::Kind::kElement) {
        text.append(", element").append(path.empty() ? "" : " in ").append(path);
    } else if (surplus.field) {
        text.append(", rest of ").append(path);
    } else {
        text.append(", no whole element");
    }
    if (surplus.iei) {
        text.append(" (IEI ").append(ToHex({&*surplus.iei, 1}, "")).append(")");
    }
    text.append("\n");
}

}  // namespace

bool DecodeAsText(Message& message, Decoding decoding, PaddedMessage octets, DecodeOptions options,
                  std::string& text, std::string& diagnostics) {
    const bool found = message.Decode(decoding, octets, options);
    ShowAsText(message, text, diagnostics);
    return found;
}

void ShowAsText(const Message& message, std::string& text, std::string& diagnostics) {
    text.clear();
    message.AppendText(text);
    if (const auto header = message.Security()) {
        AppendSecurity(*header, text);
    }
    for (std::size_t index = 0; index < message.SurplusCount(); ++index) {
        AppendSurplus(message, message.GetSurplus(index), text);
    }
    diagnostics.clear();
    for (std::size_t index = 0; index < message.FaultCount(); ++index) {
        const Fault fault = message.GetFault(index);
        diagnostics.append("<ERRID:").append(std::to_string(fault.number)).append("> ");
        diagnostics.append(fault.words).append("\n");
    }
}

bool IsFaulty(const Message& message) {
    return message.Code() != 0 || message.FaultCount() > 0;
}

}  // namespace quorvane::tool
