// For the documents: prints the card of the language, in the language that LANGUAGE names.
#include <iostream>

#include "platform/GettextTranslator.h"
#include "programs/card/CardText.h"

int main() {
    std::cout << kalvex::card::CardText(kalvex::platform::GettextTranslator());
    return 0;
}
