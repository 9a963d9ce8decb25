#include "compiler/csn/csn_parser.h"

#include <algorithm>
#include <utility>

#include "compiler/csn/csn_count_parser.h"
#include "compiler/token_stream.h"

namespace quorvane::compiler {
namespace {

using Kind = Token::Kind;
using NodeKind = CsnNode::Kind;

/// Most groups and fields in each other: far above any description, and bounds the recursion here
/// and in the passes behind.
constexpr int kMostDepth = 100;

class Parser {
  public:
    Parser(Reporter& reporter, std::uint32_t file, CsnSyntax& syntax)
        : reporter_(reporter),
          tokens_(reporter, file, kCsnNotation),
          counts_(reporter, tokens_, syntax.functions),
          syntax_(syntax) {}

    void File() {
        syntax_.sections.emplace_back().span = tokens_.Peek().span;
        while (!tokens_.AtEnd()) {
            tokens_.BeginEntry();
            if (tokens_.At("structure")) {
                Structure();
            } else if (tokens_.At("shared")) {
                NewSection();
                EndOfDeclaration();
            } else if (tokens_.Accept("common")) {
                common_ = true;
                EndOfDeclaration();
            } else if (tokens_.Accept("function")) {
                Function();
            } else if (tokens_.At(Kind::kReference)) {
                Rule();
            } else {
                tokens_.ErrorExpected("a rule, 'structure', 'shared', 'common' or 'function'");
                SkipDeclaration();
            }
        }
        std::erase_if(syntax_.sections, [](const CsnSection& section) {
            return !section.structure && section.rules.empty();
        });
    }

  private:
    void Structure() {
        CsnSection& section = NewSection();
        section.structure = tokens_.ExpectName("the name of a structure");
        if (tokens_.At(Kind::kText)) {
            section.citation = tokens_.Next().text;
        }
        if (tokens_.Accept("runs")) {
            section.runs = tokens_.ExpectName("the name of a structure");
        }
        if (section.citation.empty()) {
            tokens_.Error(section.span,
                          "the structure cites no clause; write \"TS ..., clause\" behind "
                          "its name");
        }
        EndOfDeclaration();
    }

    /// function p "families/header.h" Name most 122 ;
    void Function() {
        const Name name = tokens_.ExpectName("the name of a count");
        CsnFunction function;
        if (!tokens_.At(Kind::kText)) {
            tokens_.ErrorExpected("the C++ header of the function in quotation marks");
            return SkipDeclaration();
        }
        function.header = tokens_.Next().text;
        function.name = tokens_.ExpectName("the C++ name of the function").text;
        if (tokens_.Expect("most")) {
            function.most = counts_.Number(kMostIterations);
        }
        if (!syntax_.functions.emplace(name.text, std::move(function)).second) {
            reporter_.Error(name.span, "the function '" + name.text + "' is declared already");
        }
        EndOfDeclaration();
    }

    /// Begins a section with the word that heads it.
    CsnSection& NewSection() {
        CsnSection& section = syntax_.sections.emplace_back();
        section.span = tokens_.Next().span;
        section.common = common_;
        return section;
    }

    void Rule() {
        const Token& head = tokens_.Next();
        CsnRule& rule = syntax_.rules.emplace_back();
        rule.name = {head.text, head.span};
        rule.key = CsnRuleKey(head.text);
        rule.body = syntax_.NewNode(NodeKind::kNull, head.span);
        syntax_.sections.back().rules.push_back(&rule);
        if (tokens_.Expect("::=")) {
            rule.body = Expression();
        }
        EndOfDeclaration();
    }

    void EndOfDeclaration() {
        if (!tokens_.Expect(";")) {
            SkipDeclaration();
        }
    }

    /// Passes over the rest of a declaration, or up to where the next one clearly begins.
    void SkipDeclaration() {
        while (!tokens_.AtEnd() && !tokens_.Accept(";")) {
            const bool atStructure = tokens_.At("structure") && tokens_.Peek(2).kind == Kind::kText;
            if (atStructure || AtRule()) {
                return;
            }
            tokens_.Next();
        }
    }

    [[nodiscard]] bool AtRule() const {
        return tokens_.At(Kind::kReference) && tokens_.Peek(1).text == "::=";
    }

    // ---- Expressions, from the loosest binding to the tightest -----------------------------

    CsnNode* Expression() {
        const Span span = tokens_.Peek().span;
        if (++depth_ > kMostDepth) {
            tokens_.ErrorExpected("a rule of its own for what is nested so deeply");
            --depth_;
            return syntax_.NewNode(NodeKind::kNull, span);
        }
        CsnNode* node = Alternatives();
        while (tokens_.Accept("!")) {
            CsnNode* both = syntax_.NewNode(NodeKind::kError, span);
            both->readOnly = tokens_.Accept("read");
            both->children = {node, Concatenation()};
            node = Ended(both);
        }
        --depth_;
        return node;
    }

    CsnNode* Alternatives() {
        const Span span = tokens_.Peek().span;
        const bool inOrder = InOrder();
        CsnNode* first = Concatenation();
        if (!tokens_.At("|")) {
            return first;
        }
        CsnNode* choice = syntax_.NewNode(NodeKind::kChoice, span);
        choice->inOrder = inOrder;
        choice->children.push_back(first);
        while (tokens_.Accept("|")) {
            choice->children.push_back(Concatenation());
        }
        return Ended(choice);
    }

    bool InOrder() {
        if (!tokens_.At("[") || tokens_.Peek(1).text != "in") {
            return false;
        }
        tokens_.Next();
        tokens_.Next();
        if (!tokens_.Accept("order")) {
            tokens_.ErrorExpected("'order'");
        }
        tokens_.Expect("]");
        return true;
    }

    CsnNode* Concatenation() {
        const Span span = tokens_.Peek().span;
        std::vector<CsnNode*> items;
        while (AtItem() && !tokens_.Broken()) {
            items.push_back(Item());
        }
        if (items.empty()) {
            tokens_.ErrorExpected("bits, a field, a rule or a group");
            return syntax_.NewNode(NodeKind::kNull, span);
        }
        if (items.size() == 1) {
            return items.front();
        }
        CsnNode* node = syntax_.NewNode(NodeKind::kConcat, span);
        node->children = std::move(items);
        return Ended(node);
    }

    [[nodiscard]] bool AtItem() const {
        const Token& token = tokens_.Peek();
        switch (token.kind) {
            case Kind::kField:
            case Kind::kDigits:
            case Kind::kWord:
                return true;
            case Kind::kReference:
                return !AtRule();  // the next one, behind a missing ';'
            case Kind::kSign:
                return token.text == "{" || token.text == "<" || token.text == "@";
            case Kind::kValue:
            case Kind::kText:
            case Kind::kLineEnd:
            case Kind::kEnd:
                break;
        }
        return false;
    }

    CsnNode* Item() {
        const Span span = tokens_.Peek().span;
        const bool isGroup = tokens_.At("{");
        CsnNode* node = Primary();
        bool plain = isGroup;  // the group in braces and nothing behind it so far
        while (true) {
            if (tokens_.At("//")) {
                node = Truncation(node, plain);
            } else if (tokens_.At("*") || tokens_.At("**")) {
                node = Repetition(node, span);
            } else if (tokens_.Accept("&")) {
                node = Pair(NodeKind::kIntersection, node, span);
            } else if (tokens_.Accept("-") || tokens_.Accept("exclude")) {
                node = Pair(NodeKind::kExclude, node, span);
            } else if (tokens_.Accept("==")) {
                node = Equality(node);
            } else if (tokens_.Accept("=")) {
                node = Sending(node, span);
            } else if (tokens_.Accept("in")) {
                node = Range(node, span);
            } else {
                return node;
            }
            plain = false;
        }
    }

    CsnNode* Truncation(CsnNode* group, bool allowed) {
        const Span span = tokens_.Next().span;
        if (!allowed) {
            tokens_.Error(span,
                          "'//' stands behind a group in braces; put what may be truncated "
                          "between { and }");
            return group;
        }
        CsnNode* node = syntax_.NewNode(NodeKind::kTruncate, group->span);
        if (group->kind == NodeKind::kConcat) {
            node->children = group->children;
        } else {
            node->children = {group};
        }
        return Ended(node);
    }

    CsnNode* Repetition(CsnNode* body, Span span) {
        CsnNode* node = syntax_.NewNode(NodeKind::kRepeat, span);
        node->children = {body};
        if (tokens_.Accept("**")) {
            if (tokens_.Accept("write")) {
                node->repetition.form = CsnNode::Repetition::Form::kWriteCount;
                tokens_.Expect("(");
                node->repetition.count = counts_.Expression();
                tokens_.Expect(")");
            }
            return Ended(node);
        }
        tokens_.Next();
        if (tokens_.At("(") && tokens_.Peek(2).text == "..") {
            tokens_.Next();
            node->repetition.form = CsnNode::Repetition::Form::kRange;
            node->low = counts_.Number(kMostIterations);
            tokens_.Next();
            node->high = tokens_.At(")") ? kUnbounded : counts_.Number(kMostIterations);
            tokens_.Expect(")");
        } else {
            node->repetition.form = CsnNode::Repetition::Form::kCount;
            node->repetition.count = counts_.Operand();
        }
        return Ended(node);
    }

    CsnNode* Pair(NodeKind kind, CsnNode* first, Span span) {
        CsnNode* node = syntax_.NewNode(kind, span);
        node->children = {first, Primary()};
        return Ended(node);
    }

    /// `bit (n) == bits`, which is the bits themselves.
    CsnNode* Equality(CsnNode* node) {
        CsnNode* bits = Bits();
        const std::size_t width =
            node->kind == NodeKind::kAnyBits ? node->width : bits->text.size() + 1;
        if (bits->kind == NodeKind::kBits && width != bits->text.size()) {
            tokens_.Error(bits->span,
                          "'==' compares as many bits as stand behind it with those "
                          "of 'bit (n)' in front of it");
        }
        return bits;
    }

    CsnNode* Sending(CsnNode* node, Span span) {
        const bool nothing = tokens_.At(Kind::kReference) && tokens_.Peek().text == "no string";
        if (nothing && node->kind == NodeKind::kRepeat &&
            node->repetition.form == CsnNode::Repetition::Form::kAny) {
            tokens_.Next();
            node->repetition.leftOut = true;
            return Ended(node);
        }
        return Pair(NodeKind::kSend, node, span);
    }

    CsnNode* Range(CsnNode* first, Span span) {
        CsnNode* node = syntax_.NewNode(NodeKind::kRange, span);
        node->children = {first};
        node->low = counts_.Number();
        tokens_.Expect("..");
        node->high = counts_.Number();
        if (node->low > node->high) {
            tokens_.Error(span, "the range ends before it begins");
        }
        return Ended(node);
    }

    CsnNode* Primary() {
        const Token& token = tokens_.Peek();
        switch (token.kind) {
            case Kind::kField:
                return Field();
            case Kind::kReference:
                return Reference();
            case Kind::kDigits:
                return Bits();
            case Kind::kWord:
                return Word();
            case Kind::kSign:
                if (token.text == "{" || token.text == "<") {
                    return Group(token.text == "{" ? "}" : ">");
                }
                if (token.text == "@") {
                    return Action();
                }
                break;
            case Kind::kValue:
            case Kind::kText:
            case Kind::kLineEnd:
            case Kind::kEnd:
                break;
        }
        tokens_.ErrorExpected("bits, a field, a rule or a group");
        return syntax_.NewNode(NodeKind::kNull, token.span);
    }

    CsnNode* Group(std::string_view close) {
        const Span span = tokens_.Next().span;
        CsnNode* inner = Expression();
        if (!tokens_.Expect(close)) {
            return inner;
        }
        inner->span = tokens_.SpanFrom(span);
        return inner;
    }

    CsnNode* Field() {
        const Token& head = tokens_.Next();
        CsnNode* node = syntax_.NewNode(NodeKind::kField, head.span);
        node->name = {head.text, head.span};
        node->children = {Expression()};
        if (tokens_.At("[")) {
            Annotations(node->annotations);
        }
        tokens_.Expect(">");
        return Ended(node);
    }

    CsnNode* Reference() {
        const Token& token = tokens_.Next();
        if (token.text == "null" || token.text == "no string") {
            return syntax_.NewNode(NodeKind::kNull, token.span);
        }
        if (token.text == "bit" || token.text == "octet") {
            return AnyBits(token.text == "bit" ? 1 : 8, token.span, false);
        }
        CsnNode* node = syntax_.NewNode(NodeKind::kReference, token.span);
        node->name = {token.text, token.span};
        return node;
    }

    CsnNode* Word() {
        const Token& token = tokens_.Peek();
        if (token.text == "null") {
            return syntax_.NewNode(NodeKind::kNull, tokens_.Next().span);
        }
        if (token.text == "bit" || token.text == "octet") {
            tokens_.Next();
            return AnyBits(token.text == "bit" ? 1 : 8, token.span, true);
        }
        if (token.text.find_first_not_of("LH") == std::string::npos) {
            return Bits();
        }
        tokens_.ErrorExpected("bits, a field, a rule or a group",
                              "; for the rule of that name write < " + token.text + " >");
        tokens_.Next();
        return syntax_.NewNode(NodeKind::kNull, token.span);
    }

    CsnNode* Bits() {
        const Token& token = tokens_.Peek();
        const bool digits = token.kind == Kind::kDigits;
        const bool letters =
            token.kind == Kind::kWord && token.text.find_first_not_of("LH") == std::string::npos;
        if (!digits && !letters) {
            tokens_.ErrorExpected("bits");
            return syntax_.NewNode(NodeKind::kNull, token.span);
        }
        tokens_.Next();
        CsnNode* node = syntax_.NewNode(NodeKind::kBits, token.span);
        node->text = token.text;
        if (digits && token.text.find_first_not_of("01") != std::string::npos) {
            tokens_.Error(token.span, "'" + token.text +
                                          "' stands where bits belong, and bits "
                                          "are 0 or 1");
        }
        return node;
    }

    /// Behind `bit` or `octet`: how many of them, if it is stated.
    CsnNode* AnyBits(std::uint32_t unit, Span span, bool mayCount) {
        CsnNode* node = syntax_.NewNode(NodeKind::kAnyBits, span);
        node->width = unit;
        if (!mayCount || !tokens_.At("(")) {
            return node;
        }
        CsnNode* repeat = syntax_.NewNode(NodeKind::kRepeat, span);
        repeat->children = {node};
        if (tokens_.Peek(1).text == "*" || tokens_.Peek(1).text == "**") {
            tokens_.Next();
            tokens_.Next();
            tokens_.Expect(")");
            return Ended(repeat);
        }
        const CsnCount count = counts_.Operand();
        if (count.form != CsnCount::Form::kNumber) {
            repeat->repetition.form = CsnNode::Repetition::Form::kCount;
            repeat->repetition.count = count;
            return Ended(repeat);
        }
        if (tokens_.Broken()) {
            return node;
        }
        if (count.number < 1 || count.number > kMostBits) {
            tokens_.Error(count.span, "a number of bits from 1 to " + std::to_string(kMostBits) +
                                          " is expected here");
        } else {
            node->width *= static_cast<std::uint32_t>(count.number);
        }
        return Ended(node);
    }

    CsnNode* Action() {
        CsnNode* node = syntax_.NewNode(NodeKind::kAction, tokens_.Next().span);
        if (tokens_.Accept("reading")) {
            node->direction = CsnNode::Direction::kReading;
        } else if (tokens_.Accept("writing")) {
            node->direction = CsnNode::Direction::kWriting;
        }
        node->name = tokens_.ExpectName("the name of an action");
        if (tokens_.Expect("(") && !tokens_.Accept(")")) {
            do {
                node->arguments.push_back(counts_.Argument());
            } while (tokens_.Accept(","));
            tokens_.Expect(")");
        }
        return Ended(node);
    }

    void Annotations(CsnAnnotations& annotations) {
        annotations.span = tokens_.Next().span;
        do {
            const Name word = tokens_.ExpectName("an annotation");
            if (word.text == "as") {
                annotations.memberName = tokens_.ExpectName("the name of the member");
            } else if (word.text == "enum") {
                annotations.enumeration = tokens_.ExpectName("the name of an enumeration");
            } else if (word.text == "most") {
                annotations.most = counts_.Number();
            } else if (word.text == "single") {
                annotations.single = true;
            } else if (word.text == "integer") {
                ForceType(annotations, CsnAnnotations::Type::kInteger, 32);
            } else if (word.text == "binary") {
                ForceType(annotations, CsnAnnotations::Type::kBinary, kMostBits);
            } else if (word.text == "fixed") {
                ForceType(annotations, CsnAnnotations::Type::kFixedBinary, kMostBits);
            } else if (word.text == "optional" || word.text == "mandatory") {
                annotations.optional = word.text == "optional";
            } else if (word.text == "sized") {
                annotations.sized = true;
            } else if (!word.text.empty()) {
                tokens_.Fail(word.span,
                             "'" + word.text +
                                 "' is no annotation; there are as, enum, most, "
                                 "single, integer, binary, fixed, optional, mandatory and sized");
            }
        } while (tokens_.Accept(","));
        tokens_.Expect("]");
        annotations.span = tokens_.SpanFrom(annotations.span);
    }

    void ForceType(CsnAnnotations& annotations, CsnAnnotations::Type type, std::uint32_t most) {
        annotations.type = type;
        annotations.typeSize = counts_.Number(most);
    }

    CsnNode* Ended(CsnNode* node) {
        node->span = tokens_.SpanFrom(node->span);
        return node;
    }

    Reporter& reporter_;
    TokenStream tokens_;
    CsnCountParser counts_;
    CsnSyntax& syntax_;
    int depth_ = 0;        // of groups and fields in each other
    bool common_ = false;  // the file is one of several families
};

}  // namespace

void ParseCsn(Reporter& reporter, std::uint32_t file, CsnSyntax& syntax) {
    Parser(reporter, file, syntax).File();
}

std::string CsnSpelling(const std::string& name) {
    std::string result;
    bool inRun = false;
    for (const char c : name) {
        const bool keeps =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        if (keeps) {
            if (result.empty() && c >= '0' && c <= '9') {
                result = "_";
            }
            result += c;
        } else if (!inRun) {
            result += '_';
        }
        inRun = !keeps;
    }
    return result;
}

std::string CsnRuleKey(const std::string& name) {
    std::string key = CsnSpelling(name);
    for (char& c : key) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return key;
}

}  // namespace quorvane::compiler
