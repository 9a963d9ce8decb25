#pragma once

// The byte-code of an image made ready for decoding: one step an instruction, its operands read and
// its jumps turned into indices, with what often stands together taken in one step. A plan does
// what the machine does with the byte-code when it decodes without a callback, see csn/runner.h;
// the byte-code stays what a description means, and what encoding runs. docs/byte-code.md says what
// a plan is good for.
//
// Tests: tests/unit/csn_plan_test.cpp.

#include <cstdint>

#include "bits/named_enum.h"

namespace quorvane::csn {

// Operands of a step stand behind its name as width, a, b, c. "Goes back" means: on at the nearest
// choice point.
QUORVANE_NAMED_ENUM(PlanOp,
                    kNone,     // nothing, also of what encoding alone does
                    kBack,     // goes back
                    kBit0,     // the bit 0
                    kBit1,     // the bit 1
                    kBitL,     // the padding bit
                    kBitH,     // its inverse
                    kLiteral,  // `width` bits of the value a
                    kSkip,     // `width` bits of any value
                    kField,    // a field of c bits with the tag a; b: how many steps of kField, and
                               // kCommit behind one, follow
                    kFieldOf,  // a field of c bits, whose tag field identifier a tells
                    kFieldLiteral,  // the same with the value b in `width` bits
                    kBegin,         // opens the field a
                    kEnd,           // closes a field
                    kEndTag,        // closes a field and keeps its bits as a number under the tag a
                    kAlt,           // a choice point that leads to a
                    kAlt0,          // kAlt and kBit0, without choice point where that goes back; b:
                    kAlt1,          //   where to go on behind the group that ends with them; 0:
                    kAltL,          //   it does not; width: 1 if the step at a is the one of them
                    kAltH,          //   that begins with the inverse bit
                    kAltLiteral,    // the same with `width` bits of the value c
                    kJump,          // to a
                    kPop,           // closes a group of alternatives
                    kJumpPop,       // kJump to a kPop, on at a, b more times behind the first
                    kCommit,        // moves the nearest choice point up to here
                    kCall,          // calls the rule at a
                    kReturn,        // ends a rule, or the run
                    kReturnTags,    // the same, and drops the tags of its rule
                    kAct,           // calls action a
                    kTagPosition,   // keeps the position under the tag a
                    kRepeat,        // least b, at most c times, on at a; `width`: the body is a
                                    // kSkip of that many bits; 0: it is not
                    kRepeatBit,     // as often as the bit c behind the position of tag b says
                    kRepeatTag,     // as often as tag b says
                    kRepeatFunction,  // as often as value function b says
                    kLoop,            // ends an iteration; the body begins at a
                    kCount,           // sets the iterations still required to a
                    kCountFunction,   // sets them to what value function a says
                    kMark,            // remembers the position for a second reading
                    kExclude,         // reads from the mark on again; its failure goes on at a
                    kExcludeEnd,      // what was excluded has matched
                    kRescan,          // reads from the mark to here again
                    kRescanEnd,       // ends the second reading
                    kCompare,  // goes back unless the number from tag a to here is between b and c,
                               // to which the next step adds the upper 16 bits of each
                    kCompareFunction,   // unless it is what value function b says
                    kCompareFunctions,  // unless it is between what b and c say
                    kAtEnd)             // goes back unless all bits are used

struct PlanStep {
    PlanOp op;
    std::uint8_t width;
    std::uint16_t a;
    std::uint16_t b;
    std::uint16_t c;
};
static_assert(sizeof(PlanStep) == 8);

}  // namespace quorvane::csn
