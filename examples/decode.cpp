// Shows one message: its text, what is wrong with it, and the same as JSON.

#include <iostream>
#include <string>

#include <quorvane/decode.h>
#include <quorvane/json.h>
#include <quorvane/message.h>

int main() {
    const std::uint8_t octets[] = {0x02, 0x01, 0xD0, 0x31};  // TS 24.301, 8.3.20
    const auto decoding = quorvane::Decoding::EPS_SMUplink;

    const quorvane::Result result = quorvane::Decode(decoding, octets);
    std::cout << result.text << result.diagnostics;

    quorvane::Message message;
    if (!message.Decode(decoding, octets))
        return 1;
    std::string json;
    quorvane::AppendJson(message, json);
    std::cout << json << "\n";
}
