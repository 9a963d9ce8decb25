// What the library knows of a family: its types.

#include "facade/utf8.h"
#include "reflect/catalogue.h"
#include "tools/catalogue_report.h"
#include "tools/commands.h"
#include "tools/described_family.h"

namespace quorvane::tool {

int Catalogue(const std::string& family, CatalogueForm form) {
    const reflect::Catalogue catalogue(DescribedFamily(family).types);
    reflect::TextBuffer text;
    switch (form) {
        case CatalogueForm::kDefinitions:
            ListDefinitions(catalogue, text);
            break;
        case CatalogueForm::kCensus:
            ListCensus(catalogue, text);
            break;
        case CatalogueForm::kElements:
            ListElements(catalogue, text);
            break;
        case CatalogueForm::kEnumerations:
            ListEnumerations(catalogue, text);
            break;
    }
    std::string utf8;
    facade::AssignAsUtf8(utf8, text.View());
    Print(utf8);
    return kDone;
}

}  // namespace quorvane::tool
