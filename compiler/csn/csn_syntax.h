#pragma once

// CSN.1 descriptions as the parser reads them. The notation is described in
// docs/csn1-notation.md. Every node knows its span in the source.

#include <cstdint>
#include <deque>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "compiler/reporter.h"

namespace quorvane::compiler {

struct CsnRule;
struct CsnVariable;

/// Most iterations of a repetition with a constant count; one more means no bound to the machine.
inline constexpr std::uint32_t kMostIterations = 0x3FFE;
/// Stands for a count without an upper bound.
inline constexpr std::uint32_t kUnbounded = 0xFFFFFFFF;

/// A count that C++ works out: a function from a number to a number.
struct CsnFunction {
    std::string header;
    std::string name;        // in C++
    std::uint32_t most = 0;  // that it gives
};

/// By their names in descriptions.
using CsnFunctions = std::map<std::string, CsnFunction>;

/// A number of bits or of iterations: a constant, or a value function of the machine.
struct CsnCount {
    enum class Form {
        kNumber,      // number
        kValue,       // val(NAME) + number; the number may be negative
        kRest,        // number - val(NAME)
        kTimes,       // number * val(NAME)
        kOnes,        // how many of the last `number` or val(NAME) bits are set
        kOctetEnd,    // bits up to the next octet boundary
        kLeft,        // bits left of `number` bits from the position NAME
        kLeftOrNone,  // the same, but 0 once they are passed
        kLeftOrZero,  // as kLeft, counted from bit 0 if NAME is not set
        kUntil,       // bits left up to the position NAME, 0 if it is passed
        kDeclared,    // what `function` makes of val(NAME)
    };

    Form form = Form::kNumber;
    std::int64_t number = 0;
    Name name;  // of the field or position; empty if the form has none
    Span span;
    const CsnFunction* function = nullptr;
    CsnVariable* variable = nullptr;  // set by the resolver
};

/// What the brackets of a field say.
struct CsnAnnotations {
    enum class Type { kByRule, kInteger, kBinary, kFixedBinary };

    std::optional<Name> memberName;     // as NAME
    std::optional<Name> enumeration;    // enum NAME
    Type type = Type::kByRule;          // integer N, binary N, fixed N
    std::uint32_t typeSize = 0;         // bits
    std::optional<std::uint32_t> most;  // most N: a sequence of that bound
    bool single = false;                // single: no sequence
    std::optional<bool> optional;       // optional, mandatory
    bool sized = false;                 // sized: an encoder gives the whole field at once
    Span span;
};

/// An argument of an action: a variable or a count, which may be a number.
struct CsnArgument {
    Name name;  // of a variable; empty for a count
    std::optional<CsnCount> count;
    Span span;
    CsnVariable* variable = nullptr;  // set by the resolver
};

struct CsnNode {
    enum class Kind {
        kNull,          // the empty string
        kBits,          // `text`: fixed bits 0, 1, L, H
        kAnyBits,       // `width` bits of any value
        kConcat,        // the children one after another
        kChoice,        // one of the children
        kError,         // child 0, or else child 1
        kRepeat,        // child 0, `repetition`
        kTruncate,      // the children, as far as there are bits
        kIntersection,  // child 0, read again as child 1
        kExclude,       // child 0 unless child 1 matches its bits
        kSend,          // child 0 when reading, child 1 when writing
        kRange,         // child 0, its bits a number from `low` to `high`
        kField,         // `name`: child 0, with `annotations`
        kReference,     // the rule `name`
        kAction,        // `name` with `arguments`
    };

    struct Repetition {
        enum class Form {
            kCount,       // `count` times
            kAny,         // any number of times
            kRange,       // `low` to `high` times
            kWriteCount,  // any number of times when reading, `count` times when writing
        };

        Form form = Form::kAny;
        CsnCount count;
        bool leftOut = false;  // not written at all
    };

    enum class Direction { kBoth, kReading, kWriting };

    Kind kind = Kind::kNull;
    Span span;
    std::vector<CsnNode*> children;
    Name name;                               // kField, kReference, kAction
    std::string text;                        // kBits
    std::uint32_t width = 0;                 // kAnyBits
    Repetition repetition;                   // kRepeat
    std::uint32_t low = 0;                   // kRange, kRepeat
    std::uint32_t high = 0;                  // the same; kRepeat: kUnbounded for no bound
    bool inOrder = false;                    // kChoice: branches are tried as they stand
    bool readOnly = false;                   // kError: child 1 is never written
    Direction direction = Direction::kBoth;  // kAction
    std::vector<CsnArgument> arguments;      // kAction
    CsnAnnotations annotations;              // kField

    // Set by the resolver.
    CsnRule* rule = nullptr;          // kReference: the rule that it means
    CsnVariable* variable = nullptr;  // kField: the variable that keeps its value, or null
};

/// A value or position that the byte-code keeps under a tag.
struct CsnVariable {
    std::string name;
    std::uint32_t tag = 0;  // from 1, over all of the image
};

struct CsnRule {
    Name name;
    std::string key;  // the name as it is looked up
    CsnNode* body = nullptr;
    std::size_t section = 0;
    bool broken = false;  // it, or what it refers to, has a mistake

    // Set by the resolver.
    std::uint32_t references = 0;  // places that refer to it
    bool called = false;           // has code of its own; otherwise it stands where it is used
    bool recursive = false;        // refers to itself, directly or through others
    bool hasFields = false;        // fields are delivered in it or in rules that it refers to
    bool mayBeEmpty = false;       // matches the empty string when reading
    std::optional<std::uint64_t> width;  // bits that it always takes
    bool keepsTags = false;              // a variable that it sets is used outside of it
};

/// A run of rules: those of one structure, whose first rule is the structure's, or shared ones.
struct CsnSection {
    Span span;            // of its head
    bool broken = false;  // as of a rule
    std::optional<Name> structure;
    std::string citation;      // the standard's clause
    std::optional<Name> runs;  // the structure whose rule this one runs
    bool common = false;       // of several families: what is not used is left out
    std::vector<CsnRule*> rules;

    const CsnRule* entry = nullptr;  // where the structure begins; set by the resolver
};

/// The descriptions of a family; owns all nodes.
struct CsnSyntax {
    std::vector<CsnSection> sections;
    std::deque<CsnNode> nodes;
    std::list<CsnRule> rules;
    std::list<CsnRule> leftOut;  // those of common files that are not used
    std::list<CsnRule> dropped;  // the broken ones: no pass looks at them any more
    std::size_t errorsSeen = 0;  // by DropBroken
    std::deque<CsnVariable> variables;
    CsnFunctions functions;
    std::uint32_t lastTag = 0;  // the highest of the variables' tags; set by the resolver

    CsnNode* NewNode(CsnNode::Kind kind, Span span) {
        CsnNode& node = nodes.emplace_back();
        node.kind = kind;
        node.span = span;
        return &node;
    }
};

/// Takes the rules and structures out that errors since the last call stand in, and all that refer
/// to them, so that the passes behind go on with the rest and tell no follow-ups. Shared rules stay
/// known by name. Returns whether there were any.
bool DropBroken(const Reporter& reporter, CsnSyntax& syntax);

/// A name as the catalogue spells it: each run of characters other than letters, digits and
/// underscore becomes one underscore, a leading digit gets one in front.
[[nodiscard]] std::string CsnSpelling(const std::string& name);

/// What rules are looked up by: the spelling in small letters, as the standards do not keep to one
/// way to write a rule's name.
[[nodiscard]] std::string CsnRuleKey(const std::string& name);

}  // namespace quorvane::compiler
