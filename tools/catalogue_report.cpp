#include "tools/catalogue_report.h"

#include <string>
#include <string_view>

namespace quorvane::tool {

using namespace reflect;

namespace {

/// Walks over all descriptors of a catalogue: the named ones in build order, and below each
/// those that it owns. Calls visitor.Type(type, path) for a descriptor and, ahead of that of its
/// type, visitor.Element(element, owner, path) for an element.
template <typename Visitor>
class Walk {
  public:
    explicit Walk(Visitor& visitor) : visitor_(visitor) {}

    void Over(const Catalogue& catalogue) {
        for (std::uint32_t index = 0; index < catalogue.GetNamed().GetCount(); ++index) {
            const TEDClassBase* type = catalogue.GetNamed()[index];
            path_ = type->GetName();
            if (type->IsKind(kSequenceKind)) {
                path_ += "[]";
            }
            Inside(*type);
        }
    }

  private:
    void Inside(const TEDClassBase& type) {
        visitor_.Type(type, path_);
        if (type.IsKind(kSequenceKind)) {
            const auto& itemType = static_cast<const TEDClassSequence&>(type).GetItemType();
            if (itemType.IsOwned()) {
                const std::size_t length = path_.size();
                if (itemType.GetTarget()->IsKind(kSequenceKind)) {
                    path_ += "[]";
                }
                Inside(*itemType.GetTarget());
                path_.resize(length);
            }
        } else if (type.IsKind(kStructKind) || type.IsKind(kUnionKind)) {
            const auto& structured = static_cast<const TEDClassStructured&>(type);
            for (std::uint32_t index = 0; index < structured.GetElementCount(); ++index) {
                OverElement(*structured.GetElement(index), structured);
            }
        }
    }

    void OverElement(const TEDClassStructuredElement& element, const TEDClassStructured& owner) {
        const std::size_t length = path_.size();
        path_ += '.';
        path_ += element.GetName();
        const TEDClassReference& type = element.GetType();
        if (type.GetTarget()->IsKind(kSequenceKind)) {
            path_ += "[]";
        }
        visitor_.Element(element, owner, path_);
        if (type.IsOwned()) {
            Inside(*type.GetTarget());
        }
        path_.resize(length);
    }

    Visitor& visitor_;
    std::string path_;
};

struct Counter {
    Census census;

    void Type(const TEDClassBase& type, const std::string&) {
        switch (type.GetKind()) {
            case kStructKind:
                ++census.structs;
                break;
            case kUnionKind:
                ++census.unions;
                break;
            case kSequenceKind:
                ++census.sequences;
                break;
            case kIntegerKind:
                ++census.integers;
                break;
            case kEnumeratedKind:
                ++census.enumerated;
                break;
            default:
                ++census.binaries;
                break;
        }
    }

    void Element(const TEDClassStructuredElement& element, const TEDClassStructured& owner,
                 const std::string&) {
        ++census.elements;
        if (element.IsOptional() && !owner.IsKind(kUnionKind)) {
            ++census.optional;
        }
    }
};

/// What the line of an element says about its type.
struct Measure {
    std::string_view kind;
    std::uint32_t number = 0;
    bool dynamic = false;
};

Measure MeasureOf(const TEDClassBase& type) {
    switch (type.GetKind()) {
        case kStructKind:
            return {"struct"};
        case kUnionKind:
            return {"union"};
        case kSequenceKind: {
            const auto& sequence = static_cast<const TEDClassSequence&>(type);
            return {"sequence", sequence.GetBound(), !sequence.IsFixed()};
        }
        case kIntegerKind:
            return {"integer", static_cast<const TEDClassInteger&>(type).GetBits()};
        case kEnumeratedKind:
            return {"enumerated", static_cast<const TEDClassInteger&>(type).GetBits()};
        default: {
            const auto& binary = static_cast<const TEDClassBinary&>(type);
            return {"binary", binary.GetMaxBits(), !binary.IsFixed()};
        }
    }
}

struct ElementLister {
    TextBuffer& stream;

    void Type(const TEDClassBase&, const std::string&) {}

    void Element(const TEDClassStructuredElement& element, const TEDClassStructured&,
                 const std::string& path) {
        const Measure measure = MeasureOf(*element.GetType().GetTarget());
        stream.Append(path);
        stream.Append('\t');
        stream.Append(measure.kind);
        stream.Append('\t');
        stream.AppendUnsigned(measure.number);
        stream.Append(measure.dynamic ? "\tdynamic" : "\tfixed");
        stream.Append(element.IsOptional() ? "\toptional" : "\tmandatory");
        stream.AppendLineEnd();
    }
};

struct EnumerationLister {
    TextBuffer& stream;

    void Type(const TEDClassBase& type, const std::string& path) {
        if (!type.IsKind(kEnumeratedKind)) {
            return;
        }
        const auto& enumerated = static_cast<const TEDClassEnumerated&>(type);
        for (std::uint32_t index = 0; index < enumerated.GetValueCount(); ++index) {
            stream.Append(path);
            stream.Append('\t');
            stream.AppendUnsigned(enumerated.GetValue(index));
            Text(enumerated.GetValueText(index));
        }
        if (enumerated.HasOtherText()) {
            stream.Append(path);
            stream.Append("\tother");
            Text(enumerated.GetOtherText());
        }
    }

    void Element(const TEDClassStructuredElement&, const TEDClassStructured&, const std::string&) {}

    void Text(std::string_view text) {
        stream.Append('\t');
        stream.Append(text);
        stream.AppendLineEnd();
    }
};

void AppendCount(TextBuffer& stream, std::string_view word, std::uint32_t number) {
    stream.Append(word);
    stream.Append(' ');
    stream.AppendUnsigned(number);
    stream.AppendLineEnd();
}

}  // namespace

Census TakeCensus(const Catalogue& catalogue) {
    Counter counter;
    Walk<Counter>(counter).Over(catalogue);
    counter.census.named = catalogue.GetNamed().GetCount();
    return counter.census;
}

void ListDefinitions(const Catalogue& catalogue, TextBuffer& stream) {
    for (std::uint32_t index = 0; index < catalogue.GetNamed().GetCount(); ++index) {
        catalogue.GetNamed()[index]->PrintDefinition(stream, false, 0);
    }
}

void ListCensus(const Catalogue& catalogue, TextBuffer& stream) {
    const Census census = TakeCensus(catalogue);
    AppendCount(stream, "named", census.named);
    AppendCount(stream, "struct", census.structs);
    AppendCount(stream, "union", census.unions);
    AppendCount(stream, "sequence", census.sequences);
    AppendCount(stream, "integer", census.integers);
    AppendCount(stream, "enumerated", census.enumerated);
    AppendCount(stream, "binary", census.binaries);
    AppendCount(stream, "elements", census.elements);
    AppendCount(stream, "optional", census.optional);
}

void ListElements(const Catalogue& catalogue, TextBuffer& stream) {
    ElementLister lister{stream};
    Walk<ElementLister>(lister).Over(catalogue);
}

void ListEnumerations(const Catalogue& catalogue, TextBuffer& stream) {
    EnumerationLister lister{stream};
    Walk<EnumerationLister>(lister).Over(catalogue);
}

}  // namespace quorvane::tool
