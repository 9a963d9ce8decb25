// quorvane: decodes messages on the command line and shows what the library knows.

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <iostream>

#include "tools/commands.h"
#include "tools/completion.h"
#include "tools/described_family.h"
#include "tools/help.h"

namespace quorvane::tool {
namespace {

/// What is wrong with `text` as a number without sign, or nothing: where it is read, a negative or
/// larger number wraps around.
std::string CountProblem(const std::string& text) {
    std::uint64_t number = 0;
    const char* end = text.data() + text.size();
    const auto [parsedEnd, status] = std::from_chars(text.data(), end, number);
    const bool good = status == std::errc() && parsedEnd == end;
    return good ? "" : "'" + text + "' is not a number from 0 to 18446744073709551615";
}

int Run(int argc, char** argv) {
    CLI::App app("Decodes cellular signalling messages into text.", "quorvane");
    app.set_version_flag("--version", VersionText,
                         "Show the version and what this build holds, and exit");
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // file names may begin with a slash

    const CLI::App* list = app.add_subcommand("list", "Show the decodings and what each is for");

    std::string function;
    OctetSource octets;
    CLI::App* decode =
        app.add_subcommand("decode",
                           "Decode one message. Exit status 1 if the octets start none, 3 if this "
                           "build does not describe the function's messages, 4 with --strict if "
                           "the message has faults");
    decode
        ->add_option("FUNCTION", function,
                     "A name that \"quorvane list\" shows, or auto, auto-downlink, auto-uplink")
        ->required();
    CLI::Option* hex = decode->add_option("HEX", octets.hex,
                                          "The octets as a log has them, as 0741, 07-41, 0x07, or "
                                          "lines of xxd; - for standard input");
    decode->add_option("--file", octets.file, "A file that holds the octets; - for standard input")
        ->type_name("FILE")
        ->excludes(hex);
    ShowOptions show;
    bool json = false;
    const auto addReading = [&](CLI::App* command) {
        CLI::Option* tolerant = command->add_flag(
            "--tolerant", show.decode.tolerant,
            "Set aside what a later release has added, and follow into protected NAS messages");
        command
            ->add_flag("--deciphered", show.decode.deciphered,
                       "Also behind headers that say \"ciphered\": the octets are plain")
            ->needs(tolerant);
    };
    const auto addOptions = [&](CLI::App* command, const std::string& jsonPurpose) {
        CLI::Option* asJson = command->add_flag("--json", json, jsonPurpose);
        command
            ->add_flag("--notes", show.notes,
                       "Show faults in the text too, each behind the field that it tells of")
            ->excludes(asJson);
        command->add_flag("--strict", show.strict, "Exit status 4 if a message has faults");
        addReading(command);
    };
    addOptions(decode, "Show the message as a JSON object on one line, with its faults");

    std::string file = "-";
    CLI::App* batch = app.add_subcommand(
        "batch",
        "Decode lines \"FUNCTION LENGTH HEX\" to JSON objects, one a line. LENGTH is the message's "
        "length in octets; it may be left out if HEX is the message. HEX is the readable buffer, "
        "which may be left out if LENGTH is 0. A line may also be a JSON object with fn, hex and "
        "perhaps length and id; blank lines and lines that begin with # are passed over. Answers "
        "of functions whose messages this build does not describe have \"described\":false. Exit "
        "status 1 if a line was bad; with --strict also if a function does not know its message, "
        "and 4 if none of these but a message has faults");
    std::vector<std::string> files = {"-"};
    batch->add_option("FILE", files, "Standard input if it is left out or -");
    addOptions(batch, "Answer with \"message\", an object, in place of text and diagnostics");
    bool summary = false;
    unsigned jobs = 1;
    const auto addJobs = [&jobs](CLI::App* command) {
        constexpr unsigned kMostJobs = 1024;
        command
            ->add_option("--jobs", jobs,
                         "How many threads decode; the answers keep their order. 0: one for each "
                         "core")
            ->check(CLI::Range(0U, kMostJobs));
    };
    addJobs(batch);
    batch->add_flag("--summary", summary, "Count messages, faults and types on standard error");

    CaptureOptions captureOptions;
    CLI::App* capture = app.add_subcommand(
        "capture",
        "Decode the messages that GSMTAP carries in a capture (pcap or pcapng, also compressed by "
        "gzip). What else it holds is counted on standard error. Exit status 1 if it ends ahead of "
        "its end");
    capture->add_option("FILE", captureOptions.file, "Standard input if it is left out or -");
    capture->add_option("--format", captureOptions.format, "text, json (an object a line) or csv")
        ->check(CLI::IsMember({"text", "json", "csv"}));
    capture->add_flag_callback(
        "--json", [&captureOptions] { captureOptions.format = "json"; },
        "The same as --format json");
    capture->add_option("--port", captureOptions.port, "The UDP port of GSMTAP, 4729 if left out")
        ->check(CLI::Range(0U, 65535U));
    const auto addFilter = [&](const std::string& name, std::vector<std::string>& values,
                               const std::string& purpose) {
        return capture->add_option(name, values, purpose)->allow_extra_args(false);
    };
    addFilter("--function", captureOptions.functions, "Messages of this function alone")
        ->type_name("FUNCTION");
    addFilter("--type", captureOptions.types, "Messages of this type alone");
    addFilter("--where", captureOptions.conditions,
              "Messages with such a field alone: PATH=VALUE, PATH!=VALUE or PATH. PATH is a "
              "field's name, or names joined by dots; VALUE a number, words or digits");
    addJobs(capture);
    addReading(capture);
    // Behind security headers it reads tolerantly in any case.
    capture->get_option("--deciphered")->remove_needs(capture->get_option("--tolerant"));

    CLI::App* encode = app.add_subcommand(
        "encode",
        "Write the octets of messages, a line of hexadecimal digits each. They are read from the "
        "JSON "
        "objects that \"decode --json\" prints, one a line, or one over many lines. Exit status 1 "
        "if "
        "one could not be written, 3 if this build does not describe the function's messages");
    encode->add_option("FUNCTION", function, "A name that \"quorvane list\" shows")->required();
    encode->add_option("FILE", file, "Standard input if it is left out or -");

    std::string before;
    std::string after;
    CLI::App* diff = app.add_subcommand("diff",
                                        "Show two messages field by field where they differ. Exit "
                                        "status 0 if they are the same, 1 if "
                                        "they differ, 2 if there is trouble");
    const std::string message =
        "A file with a line \"FUNCTION LENGTH HEX\" or a JSON object, - for standard input, or "
        "\"FUNCTION HEX\" itself";
    diff->add_option("A", before, message)->required()->type_name("FILE");
    diff->add_option("B", after, message)->required()->type_name("FILE");

    std::string family;
    CLI::App* catalogue = app.add_subcommand("catalogue", "Show the types of a message family");
    const auto addFamily = [&](CLI::App* command) {
        command->add_option("FAMILY", family, FamilyNames("or"))->required();
    };
    addFamily(catalogue);
    CLI::Option_group* forms = catalogue->add_option_group("Forms");
    bool census = false;
    bool elements = false;
    bool enumerations = false;
    forms->add_flag("--census", census, "Count the types by kind");
    forms->add_flag("--elements", elements, "One line for each element");
    forms->add_flag("--enumerations", enumerations, "One line for each value of an enumeration");
    forms->require_option(0, 1);

    std::string structure;
    CLI::App* disassemble =
        app.add_subcommand("disassemble", "Show the compiled CSN.1 descriptions of a family");
    addFamily(disassemble);
    disassemble->add_option("STRUCTURE", structure, "All if it is left out");

    GenerateOptions generate;
    CLI::App* generator = app.add_subcommand(
        "generate", "Print lines for \"batch\" of valid messages, drawn at random");
    generator->add_option("FUNCTION", generate.function, "A name that \"quorvane list\" shows")
        ->required();
    const CLI::Validator isCount(CountProblem, "");
    generator->add_option("COUNT", generate.count, "How many messages")->required()->check(isCount);
    generator->add_option("--seed", generate.seed, "The same seed gives the same messages")
        ->check(isCount);
    generator->add_option("--message", generate.message, "Of this type alone");

    std::string topic;
    CLI::App* help = app.add_subcommand("help", "Show what a command does and takes");
    help->add_option("COMMAND", topic, "The tool itself if it is left out");
    std::string shell;
    CLI::App* completion = app.add_subcommand(
        "completion", "Print the script by which a shell completes command lines of quorvane");
    completion->add_option("SHELL", shell, "The shell")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish"}));
    CompleteHelp(app);
    if (argc > 1 && *argv[1] != '-') {
        CommandNamed(app, argv[1]);  // the parser would miss a command, and not name the word
    }

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int status = app.exit(error);
        if (!std::cout.flush()) {
            throw CannotWrite();
        }
        return status == 0 ? kDone : kWrongUse;
    }
    if (list->parsed()) {
        return List();
    }
    if (help->parsed()) {
        Print(HelpOn(app, topic));
        return kDone;
    }
    if (completion->parsed()) {
        Print(CompletionScript(app, shell));
        return kDone;
    }
    show.form = json ? MessageForm::kJson : MessageForm::kText;
    if (decode->parsed()) {
        if (octets.hex == std::vector<std::string>{"-"}) {
            octets = {{}, "-"};
        } else if (octets.hex.empty() && octets.file.empty()) {
            throw UsageError("HEX or --file is required; - stands for standard input");
        }
        return Decode(function, octets, show);
    }
    if (batch->parsed()) {
        return Batch(files, {show, summary, jobs});
    }
    if (capture->parsed()) {
        captureOptions.jobs = jobs;
        captureOptions.decode = show.decode;
        return Capture(captureOptions);
    }
    if (encode->parsed()) {
        return Encode(function, file);
    }
    if (diff->parsed()) {
        return Diff(before, after);
    }
    if (generator->parsed()) {
        return Generate(generate);
    }
    if (catalogue->parsed()) {
        return Catalogue(family, census         ? CatalogueForm::kCensus
                                 : elements     ? CatalogueForm::kElements
                                 : enumerations ? CatalogueForm::kEnumerations
                                                : CatalogueForm::kDefinitions);
    }
    return Disassemble(family, structure);
}

}  // namespace

}  // namespace quorvane::tool

int main(int argc, char** argv) {
    try {
        return quorvane::tool::Run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quorvane: %s\n", error.what());
        return quorvane::tool::kWrongUse;
    }
}
