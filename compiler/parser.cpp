#include "compiler/parser.h"

#include <charconv>
#include <utility>

#include "compiler/token_stream.h"

namespace quorvane::compiler {
namespace {

class Parser {
  public:
    Parser(Reporter& reporter, std::uint32_t file, FamilySyntax& family)
        : reporter_(reporter), tokens_(reporter, file), family_(family) {}

    void Run() {
        tokens_.SkipLineEnds();
        while (!tokens_.AtEnd()) {
            ParseDeclaration();
            tokens_.SkipLineEnds();
        }
    }

  private:
    using Kind = DeclarationSyntax::Kind;

    // Types inside types are read by recursion: no text may use up the stack.
    static constexpr int kMostDepth = 50;
    // An identifier and as many octets as a length of two octets tells.
    static constexpr std::uint64_t kMostElementBits = 8 * 0x10002;

    void ParseDeclaration() {
        if (tokens_.Accept("family")) {
            ParseFamily();
        } else if (tokens_.Accept("specials")) {
            ParseSpecials();
        } else if (tokens_.Accept("skip")) {
            ParseSkipTable();
        } else if (tokens_.Accept("enum")) {
            ParseEnum();
        } else if (tokens_.Accept("struct")) {
            Declare(Kind::kStruct, family_.structs, ParseStruct());
        } else if (tokens_.Accept("union")) {
            Declare(Kind::kUnion, family_.unions, ParseUnion());
        } else if (tokens_.Accept("sequence")) {
            Declare(Kind::kSequence, family_.sequences, ParseSequence());
        } else if (tokens_.Accept("csn")) {
            const Name name = tokens_.ExpectName("the name of a CSN.1 structure");
            family_.declarations.push_back({Kind::kCsn, 0, name});
            tokens_.ExpectLineEnd();
        } else if (tokens_.Accept("header")) {
            family_.headers.push_back(ParseHeader());
        } else if (tokens_.Accept("message")) {
            Declare(Kind::kMessage, family_.messages, ParseMessage());
        } else if (tokens_.Accept("set")) {
            Declare(Kind::kSet, family_.sets, ParseSet());
        } else {
            tokens_.ErrorExpected(
                "a declaration (family, specials, skip, enum, struct, union, sequence, csn, "
                "header, message or set)");
            if (tokens_.At("}")) {
                tokens_.Next();
            }
            tokens_.SkipEntry();
        }
    }

    template <typename T>
    void Declare(Kind kind, std::vector<T>& list, T syntax) {
        family_.declarations.push_back({kind, list.size(), syntax.name});
        list.push_back(std::move(syntax));
    }

    void Once(bool first, Span place, const std::string& what) {
        if (!first) {
            tokens_.Error(place, what + " stands here already");
        }
    }

    /// Runs `entry` for each line of a block.
    template <typename Entry>
    void ParseBlock(Entry entry) {
        if (!tokens_.Expect("{")) {
            tokens_.SkipEntry();
            return;
        }
        tokens_.SkipLineEnds();
        while (!tokens_.AtEnd() && !tokens_.At("}")) {
            entry();
            tokens_.ExpectLineEnd();
        }
        tokens_.Expect("}");
    }

    void ParseFamily() {
        const Name name = tokens_.ExpectName("the family's name");
        if (!family_.family.text.empty() && family_.family.text != name.text) {
            tokens_.Error(name.place,
                          "the family is '" + family_.family.text +
                              "' in the other files; all files of a run are one family's");
        }
        family_.family = name;
        if (tokens_.Accept("diagnostics")) {
            tokens_.Expect("from");
            family_.firstNumber = tokens_.ExpectNumber("the first diagnostic number");
            if (tokens_.Accept("to")) {
                family_.lastNumber = tokens_.ExpectNumber("the last diagnostic number");
            }
        }
        tokens_.ExpectLineEnd();
    }

    void ParseSpecials() {
        SpecialsSyntax specials;
        if (tokens_.Peek().kind != Token::Kind::kText) {
            tokens_.ErrorExpected("a header in double quotes");
            tokens_.SkipEntry();
            return;
        }
        specials.header = tokens_.Next().text;
        ParseBlock([&] { ParseNames("the name of a C++ element", specials.names); });
        family_.specials.push_back(std::move(specials));
    }

    /// The names up to the end of the line, one at least.
    void ParseNames(std::string_view what, std::vector<Name>& names) {
        do {
            const Name name = tokens_.ExpectName(what);
            if (!name.text.empty()) {
                names.push_back(name);
            }
        } while (tokens_.AtWord());
    }

    /// The hexadecimal numbers up to the end of the line or to `stop`, one at least.
    std::vector<WideNumber> ParseHexadecimals(std::string_view what, std::string_view stop = "\n") {
        std::vector<WideNumber> numbers;
        do {
            const Span place = tokens_.Peek().place;
            const WideNumber number = tokens_.ExpectHexadecimal(what);
            if (tokens_.Peek().place.begin == place.begin) {
                tokens_.SkipEntry();
            } else {
                numbers.push_back(number);
            }
        } while (tokens_.AtWord() && !tokens_.At(stop));
        return numbers;
    }

    void ParseSkipTable() {
        ParseBlock([&] {
            SkipRowSyntax row;
            if (tokens_.Accept("TLV")) {
                row.size = -8;
                if (tokens_.Accept("-")) {
                    tokens_.Expect("E");
                    row.size = -16;
                }
            } else if (!tokens_.Accept("none")) {
                const WideNumber bits = tokens_.ExpectNumber("TLV, TLV-E, none or a size in bits");
                row.half = tokens_.Accept("half");
                row.size = Narrow<std::int32_t>(reporter_, bits,
                                                {8, row.half ? 8U : kMostElementBits,
                                                 "bits of an element, identifier included"});
            }
            tokens_.Expect(":");
            for (const WideNumber& tag : ParseHexadecimals("an identifier of two digits")) {
                row.tag = tag;
                family_.skipRows.push_back(row);
            }
        });
    }

    void ParseEnum() {
        EnumModel model;
        const Name name = tokens_.ExpectName("the enumeration's name");
        model.name = name.text;
        model.place = name.place;
        ParseEnumValues(model);
        family_.enums.push_back(std::move(model));
    }

    void ParseEnumValues(EnumModel& model) {
        ParseBlock([&] {
            if (tokens_.Accept("other")) {
                tokens_.Expect("=");
                model.otherText = ExpectText();
                return;
            }
            EnumModel::Value value;
            value.value = tokens_.ExpectNumber("a value, or 'other',");
            tokens_.Expect("=");
            value.text = ExpectText();
            value.unreachable = tokens_.Accept("unreachable");
            model.values.push_back(std::move(value));
        });
    }

    /// An enumeration that stands with its only user: it gets a name that no description can use.
    Name ParseInlineEnum() {
        EnumModel model;
        model.place = tokens_.Peek().place;
        model.name = "@" + std::to_string(family_.enums.size());
        ParseEnumValues(model);
        family_.enums.push_back(model);
        return {model.name, model.place};
    }

    std::string ExpectText() {
        if (tokens_.Peek().kind != Token::Kind::kText) {
            tokens_.ErrorExpected("a text in double quotes");
            tokens_.SkipEntry();
            return "";
        }
        const Token& token = tokens_.Next();
        return Unescaped(token);
    }

    /// A text's octets: \t is a tab, \xHH the octet HH, \\ a backslash.
    std::string Unescaped(const Token& token) {
        std::string result;
        const std::string_view text = token.text;
        for (std::size_t at = 0; at < text.size(); ++at) {
            if (text[at] != '\\') {
                result += text[at];
                continue;
            }
            const char form = at + 1 < text.size() ? text[at + 1] : '\0';
            unsigned octet = 0;
            const char* digits = text.data() + at + 2;
            if (form == 't' || form == '\\') {
                result += form == 't' ? '\t' : '\\';
                at += 1;
            } else if (form == 'x' && at + 4 <= text.size() &&
                       std::from_chars(digits, digits + 2, octet, 16).ptr == digits + 2) {
                result += static_cast<char>(octet);
                at += 3;
            } else {
                tokens_.Error(token.place,
                              "a backslash stands before 't', 'x' and two digits, or a backslash");
            }
        }
        return result;
    }

    // Types.

    /// Splits "int8" into its word and number.
    static bool Sized(const Name& word, std::string_view prefix, std::optional<WideNumber>& size) {
        if (!word.text.starts_with(prefix)) {
            return false;
        }
        Span place = word.place;
        place.begin += static_cast<std::uint32_t>(prefix.size());
        const std::string_view digits = std::string_view(word.text).substr(prefix.size());
        size = ParseDigits(digits, 10, place);
        return digits.empty() || size.has_value();
    }

    TypeSyntax ParseType() {
        TypeSyntax type;
        type.place = tokens_.Peek().place;
        if (depth_ >= kMostDepth) {
            tokens_.ErrorExpected("a declared type for what is nested so deeply");
            tokens_.SkipEntry();
            return type;
        }
        if (tokens_.Accept("[")) {
            type.kind = TypeSyntax::Kind::kSequence;
            type.size = tokens_.ExpectNumber("the most items of the sequence");
            tokens_.Expect("]");
            tokens_.Expect("of");
            ++depth_;
            type.item = std::make_unique<TypeSyntax>(ParseType());
            --depth_;
            return type;
        }
        if (tokens_.At("{")) {
            type.kind = TypeSyntax::Kind::kStruct;
            ++depth_;
            ParseBlock([&] { type.members.push_back(ParseMember()); });
            --depth_;
            return type;
        }
        const Name word = tokens_.ExpectName("a type");
        if (word.text.empty()) {
            tokens_.SkipEntry();
            return type;
        }
        if (word.text == "spare") {
            type.kind = TypeSyntax::Kind::kSpare;
        } else if (word.text == "binary") {
            type.kind = TypeSyntax::Kind::kBinary;
            type.size = tokens_.ExpectNumber("the most bits of the binary");
            type.fixed = tokens_.Accept("fixed");
        } else if (word.text != "int" && Sized(word, "int", type.size)) {
            type.kind = TypeSyntax::Kind::kInteger;
        } else if (Sized(word, "enum", type.size)) {
            type.kind = TypeSyntax::Kind::kEnumerated;
            type.name =
                tokens_.At("{") ? ParseInlineEnum() : tokens_.ExpectName("the enumeration's name");
        } else {
            type.kind = TypeSyntax::Kind::kNamed;
            type.name = word;
        }
        return type;
    }

    MemberSyntax ParseMember() {
        MemberSyntax member;
        if (tokens_.Accept("-")) {
            member.extent = MemberSyntax::Extent::kBits;
            member.name.place = tokens_.Peek().place;
            member.bits = tokens_.ExpectNumber("the number of unnamed bits");
            return member;
        }
        member.name = tokens_.ExpectName("a member's name, or '-' for unnamed bits,");
        if (member.name.text.empty()) {
            tokens_.SkipEntry();
            return member;
        }
        member.optional = tokens_.Accept("?");
        if (tokens_.Accept("counted")) {
            member.extent = MemberSyntax::Extent::kCounted;
        } else if (tokens_.Accept("rest")) {
            member.extent = MemberSyntax::Extent::kRest;
        } else if (const auto bits = tokens_.AcceptNumber()) {
            member.extent = MemberSyntax::Extent::kBits;
            member.bits = *bits;
        }
        if (!tokens_.Expect(":")) {
            tokens_.SkipEntry();
            return member;
        }
        member.type = ParseType();
        return member;
    }

    StructSyntax ParseStruct() {
        using Shape = StructSyntax::Shape;
        StructSyntax result;
        result.name = tokens_.ExpectName("the struct's name");
        if (tokens_.Accept("fixed")) {
            result.shape = Shape::kFixed;
        } else if (tokens_.Accept("truncatable")) {
            result.shape = Shape::kTruncatable;
        } else if (tokens_.Accept("serial")) {
            result.shape = Shape::kSerial;
        } else if (tokens_.Accept("extension")) {
            result.shape = Shape::kExtension;
        } else if (tokens_.Accept("special")) {
            result.shape = Shape::kSpecial;
            result.special = tokens_.ExpectName("the name of the C++ element");
        } else {
            tokens_.ErrorExpected(
                "the wire form (fixed, truncatable, serial, extension or special)");
        }
        result.unlocated = tokens_.Accept("unlocated");
        if (result.shape == Shape::kExtension) {
            ParseBlock([&] { ParseExtensionPart(result); });
        } else {
            ParseBlock([&] { result.members.push_back(ParseMember()); });
        }
        return result;
    }

    void ParseExtensionPart(StructSyntax& owner) {
        const Span place = tokens_.Peek().place;
        if (tokens_.Accept("remainder")) {
            owner.remainder = ParseMember();
            return;
        }
        if (!tokens_.Expect("group")) {
            tokens_.SkipEntry();
            return;
        }
        GroupSyntax group;
        group.place = place;
        group.number = tokens_.ExpectNumber("the octet number of the group");
        group.optional = tokens_.Accept("optional");
        ParseBlock([&] {
            OctetSyntax octet;
            octet.place = tokens_.Peek().place;
            tokens_.Expect("octet");
            ParseBlock([&] { octet.members.push_back(ParseMember()); });
            group.octets.push_back(std::move(octet));
        });
        owner.groups.push_back(std::move(group));
    }

    UnionSyntax ParseUnion() {
        UnionSyntax result;
        result.name = tokens_.ExpectName("the union's name");
        if (tokens_.Accept("choice")) {
            result.selectorOffset = tokens_.ExpectNumber("the selector's offset in bits");
            result.selectorWidth = tokens_.ExpectNumber("the selector's width in bits");
        } else if (tokens_.Accept("messages")) {
            result.shape = UnionSyntax::Shape::kMessages;
            tokens_.Expect("octet");
            result.selectorOffset = tokens_.ExpectNumber("the octet of the message type");
            result.selectorWidth.value = 8;
        } else if (tokens_.Accept("special")) {
            result.shape = UnionSyntax::Shape::kSpecial;
            result.special = tokens_.ExpectName("the name of the C++ element");
        } else {
            tokens_.ErrorExpected("the way to choose (choice, messages or special)");
        }
        ParseBlock([&] {
            AlternativeSyntax alternative;
            alternative.name = tokens_.ExpectName("an alternative's name");
            tokens_.Expect(":");
            alternative.type = tokens_.ExpectName("the alternative's type");
            if (tokens_.Accept("when")) {
                alternative.selector = tokens_.ExpectNumber("the selector's value");
            }
            alternative.isDefault = tokens_.Accept("default");
            result.alternatives.push_back(std::move(alternative));
        });
        return result;
    }

    SequenceSyntax ParseSequence() {
        SequenceSyntax result;
        result.name = tokens_.ExpectName("the sequence's name");
        result.type = ParseType();
        if (result.type.kind != TypeSyntax::Kind::kSequence) {
            tokens_.Error(result.type.place, "a sequence is '[most] of type'");
            result.type.kind = TypeSyntax::Kind::kSequence;
            result.type.size = WideNumber{1, result.type.place};
            result.type.item = std::make_unique<TypeSyntax>();
        }
        if (tokens_.Accept("special")) {
            result.special = true;
            result.specialName = tokens_.ExpectName("the name of the C++ element");
        }
        tokens_.ExpectLineEnd();
        return result;
    }

    // Messages.

    HeaderSyntax ParseHeader() {
        using Item = HeaderItemSyntax::Kind;
        HeaderSyntax header;
        header.name = tokens_.ExpectName("the header's name");
        ParseBlock([&] {
            HeaderItemSyntax item;
            item.place = tokens_.Peek().place;
            if (tokens_.Accept("record")) {
                Once(header.record.empty(), item.place, "a line 'record'");
                ParseNames("a member of the header", header.record);
                return;
            }
            if (tokens_.Accept("=")) {
                item.kind = Item::kConstant;
                item.constant = tokens_.ExpectNumber("the constant");
                item.bits = tokens_.ExpectNumber("its width in bits");
            } else if (tokens_.Accept("type")) {
                item.kind = Item::kMessageType;
                item.bits = tokens_.ExpectNumber("its width in bits");
            } else {
                item.kind = tokens_.Accept("late") ? Item::kLateField : Item::kField;
                item.name = tokens_.ExpectName("a member, '=', 'type' or 'record'");
                if (item.name.text.empty()) {
                    tokens_.SkipEntry();
                    return;
                }
                if (tokens_.Accept("extended")) {
                    item.kind = Item::kExtendedIdentifier;
                }
                item.bits = tokens_.ExpectNumber("its width in bits");
                tokens_.Expect(":");
                item.type = ParseType();
            }
            header.items.push_back(std::move(item));
        });
        return header;
    }

    MessageSyntax ParseMessage() {
        MessageSyntax message;
        message.name = tokens_.ExpectName("the message's name");
        message.header = tokens_.ExpectName("the header's name");
        message.code = tokens_.AcceptNumber();
        ParseBlock([&] {
            if (std::optional<FieldSyntax> field = ParseField()) {
                message.fields.push_back(std::move(*field));
            }
        });
        return message;
    }

    static bool IsFormat(std::string_view word) {
        for (const std::string_view format : {"V", "LV", "TV", "TLV", "T", "rest", "mark"}) {
            if (word == format) {
                return true;
            }
        }
        return false;
    }

    std::optional<FieldSyntax> ParseField() {
        FieldSyntax field;
        field.name = tokens_.ExpectName("a field's name");
        if (tokens_.AtWord() && !IsFormat(tokens_.Peek().text)) {
            ParseTag(field);
        }
        if (!ParseFormat(field)) {
            return std::nullopt;
        }
        field.mandatory = tokens_.Accept("mandatory");
        field.again = tokens_.Accept("again");
        if (tokens_.Accept("if")) {
            FieldSyntax::Condition condition;
            condition.member = tokens_.ExpectName("the member that decides");
            if (tokens_.Accept("&")) {
                condition.mask = tokens_.ExpectNumber("the mask");
            }
            tokens_.Expect("=");
            condition.value = tokens_.ExpectNumber("the value");
            field.condition = std::move(condition);
        }
        using ValueEnd = iecodec::FieldFormatInfo::ValueEnd;
        if (InfoOf(field.format).valueEnd != ValueEnd::kNoValue) {
            if (!tokens_.Expect(":")) {
                tokens_.SkipEntry();
                return std::nullopt;
            }
            field.type = ParseType();
        }
        return field;
    }

    void ParseTag(FieldSyntax& field) {
        const Token tag = tokens_.Peek();
        field.tag = tokens_.ExpectHexadecimal("an identifier of two digits, or of one and '-',");
        field.halfTag = tokens_.Accept("-");
        if (tag.text.size() != (field.halfTag ? 1U : 2U)) {
            tokens_.Error(tag.place,
                          "an identifier has two hexadecimal digits, or one with '-' behind it");
        }
        if (field.halfTag) {
            field.tag->value = field.tag->value << 4 & 0xFFU;
        }
        if (tokens_.Peek().place.begin == tag.place.begin) {
            tokens_.Next();
        }
    }

    /// False, with the rest of the line passed over, if there is none.
    bool ParseFormat(FieldSyntax& field) {
        using Format = FieldSyntax::Format;
        const auto extended = [&] {
            return tokens_.At("-") && tokens_.Peek(1).text == "E" &&
                   (tokens_.Next(), tokens_.Next(), true);
        };
        if (tokens_.Accept("V")) {
            field.format = Format::kV;
        } else if (tokens_.Accept("LV")) {
            field.format = extended() ? Format::kLvE : Format::kLv;
        } else if (tokens_.Accept("TV")) {
            field.format = Format::kTv;
        } else if (tokens_.Accept("TLV")) {
            field.format = extended() ? Format::kTlvE : Format::kTlv;
        } else if (tokens_.Accept("T")) {
            field.format = Format::kT;
        } else if (tokens_.Accept("rest")) {
            field.format = Format::kRest;
        } else if (tokens_.Accept("mark")) {
            field.format = Format::kMark;
        } else {
            tokens_.ErrorExpected("a format (V, LV, LV-E, TV, TLV, TLV-E, T, rest or mark)");
            tokens_.SkipEntry();
            return false;
        }
        field.half = tokens_.Accept("half");
        if (field.half) {
            field.format = field.format == Format::kTv ? Format::kTvHalf : field.format;
        } else {
            field.least = tokens_.AcceptNumber();
            field.most = field.least;
            if (field.least && tokens_.Accept("-")) {
                field.most = tokens_.ExpectNumber("the most octets");
            }
        }
        return true;
    }

    SetSyntax ParseSet() {
        SetSyntax set;
        set.name = tokens_.ExpectName("the message set's name");
        ParseBlock([&] {
            const Span place = tokens_.Peek().place;
            if (tokens_.Accept("key")) {
                Once(!set.keyForm, place, "a line 'key'");
                ParseKeyForm(set);
            } else if (tokens_.Accept("shows")) {
                Once(!set.typeOctet, place, "a line 'shows'");
                tokens_.Expect("octet");
                set.typeOctet = tokens_.ExpectNumber("the octet shown as message type");
            } else if (tokens_.Accept("mask")) {
                set.attempts.push_back(ParseAttempt());
            } else {
                SetSyntax::Message message;
                message.name = tokens_.ExpectName("a message's name");
                tokens_.Expect("=");
                message.keys = ParseHexadecimals("a key in hexadecimal");
                set.messages.push_back(std::move(message));
            }
        });
        return set;
    }

    void ParseKeyForm(SetSyntax& set) {
        set.keyForm = iecodec::KeyForm::kTwoOctets;
        if (tokens_.Accept("octets")) {
            set.highOctet = tokens_.ExpectNumber("the key's upper octet");
            set.lowOctet = tokens_.ExpectNumber("the key's lower octet");
        } else if (tokens_.Accept("bits")) {
            tokens_.Expect("6");
            set.keyForm = iecodec::KeyForm::kSixBits;
        } else if (tokens_.Accept("extended")) {
            set.keyForm = iecodec::KeyForm::kExtendedIdentifier;
        } else {
            tokens_.ErrorExpected("the form of the key (octets, bits 6 or extended)");
            tokens_.SkipEntry();
        }
    }

    KeyAttemptSyntax ParseAttempt() {
        KeyAttemptSyntax attempt;
        attempt.mask = tokens_.ExpectHexadecimal("a mask in hexadecimal");
        while (tokens_.Accept("if")) {
            const Span place = tokens_.Peek().place;
            const bool high = tokens_.Accept("high");
            if (!high) {
                tokens_.Expect("low");
            }
            std::uint16_t& set = high ? attempt.highNibbles : attempt.lowNibbles;
            Once(set == 0xFFFF, place, high ? "a condition 'high'" : "a condition 'low'");
            const std::vector<WideNumber> nibbles = ParseHexadecimals("a half octet", "if");
            set = nibbles.empty() ? set : std::uint16_t{0};
            for (const WideNumber& nibble : nibbles) {
                const auto bit = WithinRange(reporter_, nibble, {0, 15, "of a half octet"});
                set = static_cast<std::uint16_t>(set | 1U << bit);
            }
        }
        return attempt;
    }

    Reporter& reporter_;
    TokenStream tokens_;
    FamilySyntax& family_;
    int depth_ = 0;  // types that are being read
};

}  // namespace

void ParseDescription(Reporter& reporter, std::uint32_t file, FamilySyntax& family) {
    Parser(reporter, file, family).Run();
}

}  // namespace quorvane::compiler
