#include "compiler/parser.h"

#include <algorithm>
#include <array>
#include <utility>

#include "compiler/pattern.h"
#include "compiler/type_parser.h"

namespace quorvane::compiler {
namespace {

/// The words of the formats, in the order of FieldFormat.
#define QUORVANE_FORMAT_WORD(name, word, identifier, length, end) word,
constexpr auto kFormatWords =
    std::to_array<std::string_view>({QUORVANE_FIELD_FORMATS(QUORVANE_FORMAT_WORD)});
#undef QUORVANE_FORMAT_WORD

class Parser : private TypeParser {
  public:
    using TypeParser::TypeParser;

    void Run() {
        tokens_.SkipLineEnds();
        while (!tokens_.AtEnd()) {
            tokens_.BeginEntry();
            errorsBefore_ = reporter_.ErrorCount();
            ParseDeclaration();
            if (tokens_.Broken()) {
                tokens_.SkipEntry();
                tokens_.Accept("}");
            }
            tokens_.SkipLineEnds();
        }
    }

  private:
    using Kind = DeclarationSyntax::Kind;

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
            Declare(ParseStruct());
        } else if (tokens_.Accept("union")) {
            Declare(ParseUnion());
        } else if (tokens_.Accept("sequence")) {
            Declare(ParseSequence());
        } else if (tokens_.Accept("pattern")) {
            ParsePattern();
        } else if (tokens_.Accept("take")) {
            ParseTake();
        } else if (tokens_.Accept("csn")) {
            const Name name = tokens_.ExpectName("the name of a CSN.1 structure");
            family_.declarations.push_back({Kind::kCsn, 0, name, false});
            tokens_.ExpectLineEnd();
        } else if (tokens_.Accept("header")) {
            family_.headers.push_back(ParseHeader());
        } else if (tokens_.Accept("message")) {
            Declare(Kind::kMessage, family_.messages, ParseMessage());
        } else if (tokens_.Accept("set")) {
            Declare(Kind::kSet, family_.sets, ParseSet());
        } else if (tokens_.Accept("decoding")) {
            Declare(Kind::kDecoding, family_.sets, ParseDecoding());
        } else {
            tokens_.ErrorExpected(
                "a declaration (family, specials, skip, enum, struct, union, sequence, csn, "
                "pattern, take, header, message, set or decoding)");
        }
    }

    template <typename T>
    void Declare(Kind kind, std::vector<T>& list, T syntax) {
        family_.declarations.push_back({kind, list.size(), syntax.name, IsBroken()});
        list.push_back(std::move(syntax));
    }

    void Declare(StructSyntax syntax) {
        Declare(Kind::kStruct, family_.structs, std::move(syntax));
    }
    void Declare(UnionSyntax syntax) { Declare(Kind::kUnion, family_.unions, std::move(syntax)); }
    void Declare(SequenceSyntax syntax) {
        Declare(Kind::kSequence, family_.sequences, std::move(syntax));
    }

    void ParsePattern() {
        PatternSyntax pattern;
        if (tokens_.Accept("struct")) {
            pattern = ParseStruct();
        } else if (tokens_.Accept("union")) {
            pattern = ParseUnion();
        } else if (tokens_.Accept("sequence")) {
            pattern = ParseSequence();
        } else {
            tokens_.ErrorExpected("a type (struct, union or sequence)");
            return;
        }
        const Name name = std::visit([](const auto& syntax) { return syntax.name; }, pattern);
        reporter_.ErrorIf(!family_.patterns.emplace(name.text, std::move(pattern)).second,
                          name.span, "the pattern '" + name.text + "' is declared already");
        if (IsBroken()) {
            family_.brokenPatterns.insert(name.text);
        }
    }

    void ParseTake() {
        const Name pattern = tokens_.ExpectName("the pattern's name");
        const Name name =
            tokens_.Accept("as") ? tokens_.ExpectName("the type's name in this family") : pattern;
        const auto found = family_.patterns.find(pattern.text);
        if (found == family_.patterns.end()) {
            tokens_.Error(pattern.span, "no pattern '" + pattern.text + "' is declared above");
        } else {
            family_.taken.emplace(pattern.text, name.text);
            std::visit([&](auto type) { Declare(Taken(std::move(type), name, family_.taken)); },
                       found->second);
            family_.declarations.back().broken = family_.brokenPatterns.count(pattern.text) != 0;
        }
        tokens_.ExpectLineEnd();
    }

    void ParseFamily() {
        const Name name = tokens_.ExpectName("the family's name");
        if (!family_.family.text.empty() && family_.family.text != name.text) {
            tokens_.Error(name.span,
                          "the family is '" + family_.family.text +
                              "' in the other files; all files of a run are one family's");
        }
        family_.family = name;
        const Span span = tokens_.Peek().span;
        if (tokens_.Accept("diagnostics")) {
            reporter_.ErrorIf(family_.firstNumber.has_value(), span,
                              "the family's diagnostic numbers are stated already");
            tokens_.Expect("from");
            family_.firstNumber = tokens_.ExpectNumber("the first diagnostic number");
            if (tokens_.Accept("to")) {
                family_.lastNumber = tokens_.ExpectNumber("the last diagnostic number");
            }
        }
        if (tokens_.Accept("items")) {
            family_.itemsLocated = tokens_.Expect("located");
        }
        tokens_.ExpectLineEnd();
    }

    void ParseSpecials() {
        SpecialsSyntax specials;
        if (!tokens_.At(Token::Kind::kText)) {
            tokens_.ErrorExpected("a header in double quotes");
            return;
        }
        specials.header = tokens_.Next().text;
        ParseBlock([&] { ParseNames("the name of a C++ element", specials.names); });
        family_.specials.push_back(std::move(specials));
    }

    /// The hexadecimal numbers up to the end of the line or to the word `stop`, if it names one;
    /// one at least.
    std::vector<WideNumber> ParseHexadecimals(std::string_view what, std::string_view stop = {}) {
        std::vector<WideNumber> numbers;
        do {
            numbers.push_back(tokens_.ExpectHexadecimal(what));
        } while (!tokens_.Broken() && tokens_.AtWord() && !tokens_.At(stop));
        return numbers;
    }

    void ParseSkipTable() {
        ParseBlock([&] {
            SkipRowSyntax row;
            row.unknown = tokens_.Accept("unknown");
            if (tokens_.Accept("TLV")) {
                row.size = -8;
                if (tokens_.Accept("-")) {
                    tokens_.Expect("E");
                    row.size = -16;
                }
            } else if (row.unknown) {
                tokens_.Expect("TLV");
            } else if (!tokens_.Accept("none")) {
                const WideNumber bits =
                    tokens_.ExpectNumber("TLV, TLV-E, none, unknown or a size in bits");
                row.half = tokens_.Accept("half");
                row.size = Narrow<std::int32_t>(reporter_, bits,
                                                {8, row.half ? 8U : kMostElementBits,
                                                 "bits of an element, identifier included"});
            }
            tokens_.Expect(":");
            for (const WideNumber& iei : ParseHexadecimals("an identifier of two digits")) {
                row.iei = iei;
                family_.skipRows.push_back(row);
            }
        });
    }

    HeaderSyntax ParseHeader() {
        using Item = HeaderItemSyntax::Kind;
        HeaderSyntax header;
        header.name = tokens_.ExpectName("the header's name");
        ParseBlock([&] {
            HeaderItemSyntax item;
            item.span = tokens_.Peek().span;
            if (AcceptRecord("a member of the header", header.record)) {
                return;
            }
            if (tokens_.Accept("=")) {
                item.kind = Item::kConstant;
                item.constant = tokens_.ExpectNumber("the constant");
                item.bits = tokens_.ExpectNumber("its width in bits");
            } else if (tokens_.Accept("type")) {
                item.kind = Item::kMessageType;
                item.bits = tokens_.ExpectNumber("its width in bits");
            } else if (tokens_.Accept("pseudo")) {
                tokens_.Expect("length");
                item.kind = Item::kPseudoLength;
                item.bits = tokens_.ExpectNumber("its width in bits");
            } else {
                const bool afterBody = tokens_.Accept("after") && tokens_.Expect("body");
                item.kind = afterBody ? Item::kFieldAfterBody : Item::kField;
                item.name = tokens_.ExpectName(
                    "a member, '=', 'type', 'pseudo length', 'after body' or 'record'");
                item.kind = tokens_.Accept("extended") ? Item::kExtendedIdentifier : item.kind;
                item.bits = tokens_.ExpectNumber("its width in bits");
                tokens_.Expect(":");
                item.type = ParseType();
            }
            header.items.push_back(std::move(item));
        });
        header.broken = IsBroken();
        return header;
    }

    /// The format whose word stands here, half octets not looked at.
    std::optional<FieldSyntax::Format> FormatHere() {
        const bool extended = tokens_.Peek(1).text == "-" && tokens_.Peek(2).text == "E";
        const auto found = std::find(kFormatWords.begin(), kFormatWords.end(),
                                     tokens_.Peek().text + (extended ? "-E" : ""));
        const auto format = static_cast<FieldSyntax::Format>(found - kFormatWords.begin());
        return tokens_.AtWord() && found != kFormatWords.end() ? std::optional(format)
                                                               : std::nullopt;
    }

    MessageSyntax ParseMessage() {
        MessageSyntax message;
        message.name = tokens_.ExpectName("the message's name");
        message.header = tokens_.ExpectName("the header's name");
        message.code = tokens_.AcceptNumber();
        ParseBlock([&] {
            const Span span = tokens_.Peek().span;
            if (tokens_.Accept("pseudo")) {
                tokens_.Expect("length");
                tokens_.Expect("ends");
                Once(!message.countedFields, span, "the end of the pseudo length");
                message.countedFields = message.fields.size();
                message.countedEnd = span;
            } else {
                message.fields.push_back(ParseField());
            }
        });
        return message;
    }

    FieldSyntax ParseField() {
        FieldSyntax field;
        field.name = tokens_.ExpectName("a field's name");
        if (tokens_.AtWord() && !FormatHere()) {
            ParseIei(field);
        }
        ParseFormat(field);
        field.unchecked = tokens_.Accept("unchecked");
        field.mandatory = tokens_.Accept("mandatory");
        field.again = tokens_.Accept("again");
        if (tokens_.Accept("if")) {
            FieldSyntax::Condition condition;
            condition.field = tokens_.ExpectName("the field that decides");
            if (tokens_.Accept(".")) {
                condition.member = tokens_.ExpectName("the member of the field that decides");
            }
            if (tokens_.Accept("&")) {
                condition.mask = tokens_.ExpectNumber("the mask");
            }
            tokens_.Expect("=");
            condition.value = tokens_.ExpectNumber("the value");
            field.condition = std::move(condition);
        }
        using ValueEnd = iecodec::FieldFormatInfo::ValueEnd;
        if (InfoOf(field.format).valueEnd != ValueEnd::kNoValue) {
            tokens_.Expect(":");
            field.type = ParseType();
        }
        return field;
    }

    void ParseIei(FieldSyntax& field) {
        const Token iei = tokens_.Peek();
        field.iei = tokens_.ExpectHexadecimal("an identifier of two digits, or of one and '-',");
        field.halfIei = tokens_.Accept("-");
        if (iei.text.size() != (field.halfIei ? 1U : 2U)) {
            tokens_.Fail(iei.span,
                         "an identifier has two hexadecimal digits, or one with '-' behind it");
        }
        if (field.halfIei) {
            field.iei->value = field.iei->value << 4 & 0xFFU;
        }
        if (tokens_.Peek().span.begin == iei.span.begin) {
            tokens_.Next();
        }
    }

    void ParseFormat(FieldSyntax& field) {
        using Format = FieldSyntax::Format;
        if (const auto format = FormatHere()) {
            field.format = *format;
            const auto word = kFormatWords[static_cast<std::size_t>(*format)];
            for (int left = word.ends_with("-E") ? 3 : 1; left > 0; --left) {
                tokens_.Next();
            }
        } else {
            std::string words;
            for (const std::string_view word : kFormatWords) {
                if (word.find(' ') == std::string_view::npos) {
                    words += words.empty() ? "" : word == kFormatWords.back() ? " or " : ", ";
                    words += word;
                }
            }
            tokens_.ErrorExpected("a format (" + words + ")");
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
    }

    SetSyntax ParseSet() {
        SetSyntax set;
        set.name = tokens_.ExpectName("the message set's name");
        ParseBlock([&] {
            const Span span = tokens_.Peek().span;
            if (tokens_.Accept("key")) {
                Once(!set.keyForm, span, "a line 'key'");
                ParseKeyForm(set);
            } else if (tokens_.Accept("shows")) {
                Once(!set.typeOctet, span, "a line 'shows'");
                tokens_.Expect("octet");
                set.typeOctet = tokens_.ExpectNumber("the octet shown as message type");
            } else if (tokens_.Accept("mask")) {
                set.masks.push_back(ParseMask());
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

    /// A set of one message that needs no key.
    SetSyntax ParseDecoding() {
        SetSyntax set;
        set.keyForm = iecodec::KeyForm::kKeyless;
        set.name = tokens_.ExpectName("the decoding's name");
        tokens_.Expect(":");
        set.messages.push_back({tokens_.ExpectName("its message or struct"), {}});
        tokens_.ExpectLineEnd();
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
        }
    }

    KeyMaskSyntax ParseMask() {
        KeyMaskSyntax row;
        row.mask = tokens_.ExpectHexadecimal("a mask in hexadecimal");
        while (tokens_.Accept("if")) {
            const Span span = tokens_.Peek().span;
            const bool high = tokens_.Accept("high");
            if (!high) {
                tokens_.Expect("low");
            }
            std::uint16_t& set = high ? row.highNibbles : row.lowNibbles;
            Once(set == 0xFFFF, span, high ? "a condition 'high'" : "a condition 'low'");
            const std::vector<WideNumber> nibbles = ParseHexadecimals("a half octet", "if");
            set = nibbles.empty() ? set : std::uint16_t{0};
            for (const WideNumber& nibble : nibbles) {
                const auto bit = WithinRange(reporter_, nibble, {0, 15, "of a half octet"});
                set = static_cast<std::uint16_t>(set | 1U << bit);
            }
        }
        return row;
    }
};

}  // namespace

void ParseDescription(Reporter& reporter, std::uint32_t file, FamilySyntax& family) {
    Parser(reporter, file, family).Run();
}

}  // namespace quorvane::compiler
