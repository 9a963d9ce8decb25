#pragma once

// The tool's commands. Each returns its exit status and reports wrong use by UsageError, which
// main prints.

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "quorvane/message.h"

namespace quorvane::tool {

enum ExitStatus : int {
    kDone = 0,
    kNotFound = 1,      // decode: no message; batch, encode: a bad line; diff: they differ;
                        // capture: it ends ahead of its end
    kWrongUse = 2,      // also what cannot be read or written
    kNotDescribed = 3,  // decode, encode: this build does not describe the function's messages
    kFaulty = 4,        // decode, batch with --strict: a message has faults
    kSignal = 128,      // and the number of the signal that interrupted a run over many messages
};

/// What is wrong and where, in words for the user.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The decoding of that name; throws UsageError if there is none.
Decoding DecodingNamed(const std::string& function);

/// What to say of a function whose messages this build does not describe.
std::string NotDescribed(std::string_view function);

/// Prints the decodings and what each is for.
int List();

/// How decoded messages are shown.
enum class MessageForm { kText, kJson };

/// Where the octets of a message stand: in arguments, or in a file if it has a name.
struct OctetSource {
    std::vector<std::string> hex;
    std::string file;  // -: standard input
};

struct ShowOptions {
    MessageForm form = MessageForm::kText;
    DecodeOptions decode;
    bool notes = false;   // the faults beside the fields, in the text
    bool strict = false;  // a message with faults is an exit status
};

/// Prints one message.
int Decode(const std::string& function, const OctetSource& source, const ShowOptions& options);

struct BatchOptions {
    ShowOptions show;
    bool summary = false;  // on standard error, at the end
    unsigned jobs = 1;     // threads; 0: one for each core
};

/// Answers the lines of the files, of standard input for the name "-", with JSON objects, one a
/// line.
int Batch(const std::vector<std::string>& files, const BatchOptions& options);

/// Writes the octets of the JSON objects in the file, of standard input if its name is "-", as
/// lines of hexadecimal digits.
int Encode(const std::string& function, const std::string& file);

/// Prints what is different in two messages, each the name of a file with a line "FUNCTION LENGTH
/// HEX" or a JSON object, or "FUNCTION HEX" itself.
int Diff(const std::string& before, const std::string& after);

enum class CatalogueForm { kDefinitions, kCensus, kElements, kEnumerations };

/// Prints the types of a family.
int Catalogue(const std::string& family, CatalogueForm form);

/// Prints the compiled CSN.1 structures of a family, or the one of that name.
int Disassemble(const std::string& family, const std::string& structure);

struct CaptureOptions {
    std::string file = "-";
    std::string format = "text";  // or json, csv
    std::uint16_t port = 4729;
    unsigned jobs = 1;                   // 0: as many as there are cores
    std::vector<std::string> functions;  // those alone; empty: all
    std::vector<std::string> types;      // the same of messages
    std::vector<std::string> conditions;
    DecodeOptions decode;
};

/// Whether this build has Capture.
extern const bool kReadsCaptures;

/// Prints the messages in a capture, and on standard error what else it holds.
int Capture(const CaptureOptions& options);

struct GenerateOptions {
    std::string function;
    std::uint64_t count = 0;
    std::uint64_t seed = 1;
    std::string message;  // empty: any of the function's
};

/// Prints lines for Batch of messages drawn at random.
int Generate(const GenerateOptions& options);

/// What to throw when standard output takes no more; errno has the reason.
UsageError CannotWrite();

/// Writes to standard output; throws CannotWrite if that fails.
void Print(std::string_view text);

/// Says on standard error behind which place the process was interrupted. Returns the exit status.
int Interrupted(const std::string& place);

}  // namespace quorvane::tool
