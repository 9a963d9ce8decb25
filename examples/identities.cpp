// Lists the IMSIs, cell identities and causes in messages: lines "FUNCTION LENGTH HEX" on standard
// input, such as `quorvane generate` writes.

#include <iostream>
#include <string>
#include <vector>

#include <quorvane/message.h>

/// `name` is the field's own, or that of the list that it is an item of.
void List(const quorvane::Field& field, const std::string& name) {
    const auto has = [&](const char* word) { return name.find(word) != name.npos; };
    if (field.Status() != quorvane::FieldStatus::kDecoded)
        return;
    if (name == "IMSI" || field.Find("IdentityType").Words() == "IMSI") {
        std::cout << "IMSI ";
        for (const auto digit : field.Find("IdentityDigit"))
            std::cout << digit.Number();
        std::cout << "\n";
    } else if (field.Kind() <= quorvane::FieldKind::kEnumerated &&
               (has("ause") || has("CAUSE") || has("CellId") || has("Cell_Id"))) {
        std::cout << name << " " << field.Number() << "\t" << field.Words() << "\n";
    }
    for (const auto child : field)
        List(child, std::string(child.Name().empty() ? name : child.Name()));
}

int main() {
    quorvane::Message message;
    for (std::string function, length, hex; std::cin >> function >> length >> hex;) {
        std::vector<std::uint8_t> octets;
        for (std::size_t at = 0; at + 1 < hex.size(); at += 2)
            octets.push_back(static_cast<std::uint8_t>(std::stoul(hex.substr(at, 2), nullptr, 16)));
        const auto decoding = quorvane::FindDecoding(function);
        if (decoding && message.Decode(*decoding, octets))
            List(message.Root(), "");
    }
}
