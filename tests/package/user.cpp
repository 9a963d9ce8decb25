// Uses both public headers. Exits with 0 if the answers are right.

#include <cstdint>
#include <cstring>
#include <vector>

#include <quorvane/decode.h>
#include <quorvane/engine.h>
#include <quorvane/version.h>

int main() {
    // DEACTIVATE TEST MODE COMPLETE, TS 36.509.
    std::vector<std::uint8_t> octets = {0x0F, 0x87};
    const quorvane::Result result = quorvane::Decode(quorvane::Decoding::EPC_UE2SS, octets);

    octets.resize(octets.size() + quorvane::kReadAhead);
    CString text;
    const int value = quorvaneDecodeEPC_UE2SS(octets.data(), 2, text);

    const std::string expected =
        "Decoded using \"EPC_UE2SS\".\nMESSAGE: DEACTIVATE_TEST_MODE_COMPLETE\n{\n}\n";
    const bool right = result.found && result.text == expected && value == 1 &&
                       text.GetLength() == static_cast<int>(expected.size()) &&
                       std::strcmp(quorvane::Version(), "1.0.0") == 0;
    return right ? 0 : 1;
}
