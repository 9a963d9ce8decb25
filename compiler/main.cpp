// quorvane_describe OUTPUT DESCRIPTION...
//
// Compiles the descriptions of one message family (.qd files, and .csn1 files for its CSN.1
// structures) to a C++ file of constant tables. Exit status 1 after mistakes in the descriptions,
// which go to standard error; 2 for wrong use or files that cannot be read or written.

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "compiler/describe.h"

namespace {

bool ReadFile(const std::string& name, std::string& text) {
    std::ifstream in(name, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    text = content.str();
    return in.good() || (in.eof() && !in.bad());
}

}  // namespace

int main(int argc, char** argv) {
    using quorvane::compiler::Source;
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() < 2) {
        std::cerr << "usage: quorvane_describe OUTPUT DESCRIPTION...\n";
        return 2;
    }
    std::vector<Source> sources;
    for (std::size_t index = 1; index < arguments.size(); ++index) {
        Source source{arguments[index], ""};
        if (!ReadFile(source.name, source.text)) {
            std::cerr << "quorvane_describe: cannot read " << source.name << "\n";
            return 2;
        }
        sources.push_back(source);
    }
    const quorvane::compiler::Description result = quorvane::compiler::Describe(sources);
    std::cerr << result.errors;
    if (!result.errors.empty()) {
        return 1;
    }
    std::ofstream out(arguments[0], std::ios::binary);
    out << result.code;
    if (!out.flush()) {
        std::cerr << "quorvane_describe: cannot write " << arguments[0] << "\n";
        return 2;
    }
    return 0;
}
