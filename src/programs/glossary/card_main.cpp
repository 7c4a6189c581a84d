// For the documents: prints the card of the language, in the language that LANGUAGE names.
#include <iostream>

#include "platform/GettextTranslator.h"
#include "programs/glossary/CardText.h"

int main() {
    using namespace kalvex;
    std::cout << glossary::CardText(glossary::MakeGlossary(platform::GettextTranslator()));
    return std::cout.flush() ? 0 : 1;
}
