#pragma once

// A reporter that knows whether the descriptions at hand have had an error: mistakes in a family's
// other files must not silence the later passes over these.

#include <string>
#include <utility>

#include "compiler/reporter.h"

namespace quorvane::compiler {

class CsnReporter {
  public:
    explicit CsnReporter(Reporter& reporter) : reporter_(reporter) {}

    [[nodiscard]] const SourceFile& File(std::uint32_t file) const { return reporter_.File(file); }
    [[nodiscard]] bool HasErrors() const { return hasErrors_; }

    void Error(Span place, std::string message) {
        hasErrors_ = true;
        reporter_.Error(place, std::move(message));
    }

  private:
    Reporter& reporter_;
    bool hasErrors_ = false;
};

}  // namespace quorvane::compiler
