// For the build: prints the manual page of the language, in the language that LANGUAGE names.
#include <iostream>

#include "platform/GettextTranslator.h"
#include "programs/glossary/ManualPage.h"

int main() {
    using namespace kalvex;
    std::cout << glossary::ManualPage(glossary::MakeGlossary(platform::GettextTranslator()),
                                      KALVEX_VERSION, KALVEX_DATE);
    return std::cout.flush() ? 0 : 1;
}
