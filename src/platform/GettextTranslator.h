// Translations out of the catalogues of gettext.
#pragma once

#include <string>

#include "platform/Translator.h"

namespace kalvex::platform {

// The language is that of LANGUAGE, else of LC_ALL, LC_MESSAGES or LANG; where there is no
// catalogue for it, or none is set, texts stay Polish. Sets the language of the process's messages,
// and that alone: numbers and letters stay those of the C locale.
// By default the catalogues lie beside the program's folder, in the place where programs are built
// and in the one where they are installed.
class GettextTranslator final : public Translator {
  public:
    GettextTranslator();
    // `folder` holds LANGUAGE/LC_MESSAGES/kalvex.mo.
    explicit GettextTranslator(const std::string& folder);

    std::string Translate(const char* polish) const override;
};

}  // namespace kalvex::platform
