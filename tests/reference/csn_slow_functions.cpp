#include "reference/csn_slow_functions.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace quorvane::reference {
namespace {

/// Numbers wrap: a tag that was never set or a hostile length gives a useless but defined result.
std::int32_t Wrapped(std::int64_t number) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number));
}

std::uint32_t CountOf(std::int64_t number) {
    return static_cast<std::uint32_t>(number);
}

/// A name taken apart: what stands before '<', and the constants behind it.
struct Call {
    std::string function;
    std::vector<std::string> constants;

    [[nodiscard]] std::int32_t Number(std::size_t index) const {
        return static_cast<std::int32_t>(std::stoll(constants.at(index)));
    }
    [[nodiscard]] std::uint32_t Tag() const { return static_cast<std::uint32_t>(Number(0)); }
};

Call Parse(std::string name) {
    for (const std::string_view prefix : {"&", "csn::", "functions::"}) {
        if (name.starts_with(prefix)) {
            name.erase(0, prefix.size());
        }
    }
    Call call;
    const std::size_t open = name.find('<');
    call.function = name.substr(0, open);
    if (open == std::string::npos) {
        return call;
    }
    std::string constant;
    int depth = 0;
    for (std::size_t at = open + 1; at + 1 < name.size(); ++at) {
        const char letter = name[at];
        depth += letter == '<' ? 1 : letter == '>' ? -1 : 0;
        if (letter == ',' && depth == 0) {
            call.constants.push_back(constant);
            constant.clear();
        } else if (letter != ' ') {
            constant += letter;
        }
    }
    call.constants.push_back(constant);
    return call;
}

/// A decoder reads nothing of a scope behind its run.
void SetEnd(SlowMachine& m, std::int64_t end) {
    m.scopeEnd = std::clamp(Wrapped(end), -SlowMachine::kFarthest, SlowMachine::kFarthest);
    m.endPos = m.scopeEnd;
    if (!m.encode) {
        m.endPos = std::min(m.endPos, m.startPos + m.bitLength);
    }
}

void SetPosition(SlowMachine& m, std::int32_t position) {
    m.bitPos = std::clamp(position, -SlowMachine::kFarthest, SlowMachine::kFarthest);
}

std::uint32_t OnesIn(std::uint32_t bits) {
    std::uint32_t ones = 0;
    for (; bits != 0; bits >>= 1U) {
        ones += bits & 1U;
    }
    return ones;
}

// By the number of cells, from one cell on.
std::uint32_t FddCellInfoBits(std::int32_t cells) {
    constexpr std::uint32_t kBits[] = {10, 19, 28, 36, 44,  52,  60,  67,
                                       74, 81, 88, 95, 102, 109, 116, 122};
    return cells >= 1 && cells <= 16 ? kBits[cells - 1] : 0;
}

std::uint32_t TddCellInfoBits(std::int32_t cells) {
    constexpr std::uint32_t kBits[] = {9,  17, 25, 32, 39,  46,  53,  59,  65,  71,
                                       77, 83, 89, 95, 101, 106, 111, 116, 121, 126};
    return cells >= 1 && cells <= 20 ? kBits[cells - 1] : 0;
}

std::uint32_t (*DeclaredNamed(const std::string& name))(std::int32_t) {
    if (name == "FddCellInfoBits") {
        return FddCellInfoBits;
    }
    if (name == "TddCellInfoBits") {
        return TddCellInfoBits;
    }
    if (name == "Few") {  // of random images
        return [](std::int32_t number) { return CountOf(number) & 3U; };
    }
    throw std::invalid_argument("no declared function " + name);
}

}  // namespace

SlowAction SlowActionNamed(const std::string& name) {
    const Call call = Parse(name);
    const std::uint32_t tag = call.function.starts_with("Reject") ? 0 : call.Tag();
    const auto number = [&](std::size_t index) { return call.Number(index); };
    if (call.function == "NotePosition") {
        return [=](SlowMachine& m) { m.TagAdd(tag, m.bitPos); };
    }
    if (call.function == "NotePositionAhead") {
        return [=, bits = number(1)](SlowMachine& m) {
            m.TagAdd(tag, Wrapped(std::int64_t{m.bitPos} + bits));
        };
    }
    if (call.function == "OpenScopeAtLengthEnd") {
        return [=, bits = number(1)](SlowMachine& m) {
            m.TagAdd(tag, m.endPos);
            SetEnd(m, std::int64_t{m.bitPos} + m.LastBits(bits));
        };
    }
    if (call.function == "OpenScopeAtLengthStart") {
        return [=, bits = number(1), more = number(2)](SlowMachine& m) {
            m.TagAdd(tag, m.endPos);
            SetEnd(m, std::int64_t{m.Read(m.bitPos, bits)} + m.bitPos + more);
        };
    }
    if (call.function == "OpenScopeAtCodedLength") {
        return [=](SlowMachine& m) {
            m.TagAdd(tag, m.endPos);
            const std::uint32_t length = m.Read(m.bitPos, 6);
            SetEnd(m, std::int64_t{m.bitPos} + length + (length < 6 ? 65 : 1));
        };
    }
    if (call.function == "OpenFixedScope") {
        return [=, bits = number(1)](SlowMachine& m) {
            m.TagAdd(tag, m.endPos);
            SetEnd(m, std::int64_t{m.bitPos} + bits);
        };
    }
    if (call.function == "CloseScope") {
        return [=](SlowMachine& m) {
            const bool readAll = !m.encode && m.bitPos == m.startPos + m.bitLength;
            if (readAll && m.scopeEnd > m.bitPos) {
                m.bitPos = m.scopeEnd;
            }
            SetEnd(m, m.TagValue(tag));
        };
    }
    if (call.function == "WriteBackLength") {
        return [=, bits = number(1), less = number(2), before = number(3)](SlowMachine& m) {
            if (m.encode) {
                const std::int64_t noted = m.TagValue(tag);
                m.Write(noted - before, CountOf(m.bitPos - noted - less), bits);
            }
        };
    }
    if (call.function == "ClipToSpan") {
        return [=, bits = number(1)](SlowMachine& m) {
            const std::int32_t noted = m.TagValue(tag);
            if (Wrapped(std::int64_t{m.bitPos} - noted) >= bits + 1) {
                SetPosition(m, Wrapped(std::int64_t{noted} + bits));
            }
        };
    }
    if (call.function == "JumpOverElement") {
        return [=, bits = number(1), more = number(2)](SlowMachine& m) {
            const std::int32_t noted = m.TagValue(tag);
            SetPosition(m, Wrapped(std::int64_t{m.Read(noted, bits)} + noted + more));
        };
    }
    if (call.function == "KeepCount") {
        return [=, bits = number(1)](SlowMachine& m) { m.TagAdd(tag, Wrapped(m.LastBits(bits))); };
    }
    if (call.function == "SetCount") {
        return [=, count = SlowValueFunctionNamed(call.constants.at(1))](SlowMachine& m) {
            m.TagAdd(tag, Wrapped(count(m)));
        };
    }
    if (call.function == "AddCount") {
        return [=, count = SlowValueFunctionNamed(call.constants.at(1))](SlowMachine& m) {
            m.TagUpdate(tag, Wrapped(std::int64_t{m.TagValue(tag)} + count(m)));
        };
    }
    if (call.function == "RaiseMaximum") {
        return [=, bits = number(1)](SlowMachine& m) {
            const std::int32_t last = Wrapped(m.LastBits(bits));
            if (last > m.TagValue(tag)) {
                m.TagUpdate(tag, last);
            }
        };
    }
    if (call.function == "RejectZero") {
        return [bits = number(0)](SlowMachine& m) {
            if (m.LastBits(bits) == 0) {
                m.Backtrack();
            }
        };
    }
    if (call.function == "RejectZeroAndOnes") {
        return [bits = number(0)](SlowMachine& m) {
            const std::uint32_t last = m.LastBits(bits);
            if (last == 0 || OnesIn(last) == static_cast<std::uint32_t>(bits)) {
                m.Backtrack();
            }
        };
    }
    throw std::invalid_argument("no action " + name);
}

SlowValueFunction SlowValueFunctionNamed(const std::string& name) {
    const Call call = Parse(name);
    if (call.function == "BitsToOctetBoundary") {
        return [](SlowMachine& m) { return CountOf(-std::int64_t{m.bitPos}) & 7U; };
    }
    const std::uint32_t first = call.Tag();
    const auto number = [&](std::size_t index) { return call.Number(index); };
    if (call.function == "Constant") {
        return [=](SlowMachine&) { return first; };
    }
    if (call.function == "Ones") {
        return [bits = number(0)](SlowMachine& m) { return OnesIn(m.LastBits(bits)); };
    }
    if (call.function == "OnesOf") {
        return [=](SlowMachine& m) {
            return OnesIn(m.LastBits(std::clamp(m.TagValue(first), 0, 32)));
        };
    }
    if (call.function == "TagPlus") {
        return [=, more = number(1)](SlowMachine& m) {
            return CountOf(std::int64_t{m.TagValue(first)} + more);
        };
    }
    if (call.function == "RestOf") {
        return [=, whole = number(1)](SlowMachine& m) {
            return CountOf(std::int64_t{whole} - m.TagValue(first));
        };
    }
    if (call.function == "OctetsToBits") {
        return [=](SlowMachine& m) { return CountOf(std::int64_t{m.TagValue(first)} * 8); };
    }
    if (call.function == "BitsLeftInSpan") {
        return [=, bits = number(1)](SlowMachine& m) {
            return CountOf(std::int64_t{m.TagValue(first)} + bits - m.bitPos);
        };
    }
    if (call.function == "BitsLeftInSpanOrZeroBased") {
        return [=, bits = number(1)](SlowMachine& m) {
            return CountOf(std::int64_t{m.TagValueOrZero(first)} + bits - m.bitPos);
        };
    }
    if (call.function == "BitsLeftInSpanIfAny") {
        return [=, bits = number(1)](SlowMachine& m) {
            const std::int64_t noted = m.TagValue(first);
            return Wrapped(m.bitPos - noted) > bits ? 0 : CountOf(noted + bits - m.bitPos);
        };
    }
    if (call.function == "BitsLeftToEnd") {
        return [=](SlowMachine& m) {
            const std::int64_t left = std::int64_t{m.TagValueOrZero(first)} - m.bitPos;
            return left > 0 ? CountOf(left) : 0;
        };
    }
    if (call.function == "Declared") {
        return [=, declared = DeclaredNamed(call.constants.at(1))](SlowMachine& m) {
            return declared(m.TagValue(first));
        };
    }
    throw std::invalid_argument("no value function " + name);
}

}  // namespace quorvane::reference
