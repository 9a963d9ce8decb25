// quorvane_describe OUTPUT DESCRIPTION...
//
// Compiles the descriptions of one message family (.qd files, and .csn1 files for its CSN.1
// structures) to a C++ file of constant tables. Exit status 1 after mistakes in the descriptions,
// which go to standard error; 2 for wrong use or files that cannot be read or written.

#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "compiler/describe.h"
#include "compiler/description_files.h"

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() < 2) {
        std::cerr << "usage: quorvane_describe OUTPUT DESCRIPTION...\n";
        return 2;
    }
    const std::string& output = arguments.front();
    std::vector<quorvane::compiler::Source> sources;
    const std::string problem = quorvane::compiler::ReadDescriptions(
        output, {arguments.begin() + 1, arguments.end()}, sources);
    if (!problem.empty()) {
        std::cerr << "quorvane_describe: " << problem << "\n";
        return 2;
    }
    const quorvane::compiler::Description result = quorvane::compiler::Describe(sources);
    std::cerr << result.errors;
    if (!result.errors.empty()) {
        return 1;
    }
    std::ofstream out(output, std::ios::binary);
    out << result.code;
    if (!out.flush()) {
        std::cerr << "quorvane_describe: cannot write " << output << "\n";
        return 2;
    }
    return 0;
}
