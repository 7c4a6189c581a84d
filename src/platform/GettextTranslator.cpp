#include "platform/GettextTranslator.h"

#include <libintl.h>

#include <clocale>
#include <cstdlib>
#include <string_view>

#include "platform/posix/Installation.h"
#include "text/CodePage.h"

namespace kalvex::platform {

namespace {

constexpr const char* kDomain = "kalvex";

// LANGUAGE is looked at in a locale with a language only.
void ChooseLanguage() {
    const char* locale = std::setlocale(LC_MESSAGES, "");
    const char* language = std::getenv("LANGUAGE");
    const bool none = locale == nullptr || locale == std::string_view("C");
    if (none && language != nullptr && *language != '\0') std::setlocale(LC_MESSAGES, "C.UTF-8");
}

}  // namespace

GettextTranslator::GettextTranslator()
    : GettextTranslator(InstallationPrefix() / "share" / "locale") {}

GettextTranslator::GettextTranslator(const std::string& folder) {
    ChooseLanguage();
    bindtextdomain(kDomain, folder.c_str());
    bind_textdomain_codeset(kDomain, "UTF-8");
}

std::string GettextTranslator::Translate(const char* polish) const {
    // The empty key has the head of the catalogue.
    return *polish == '\0' ? std::string() : text::FromUtf8(dgettext(kDomain, polish));
}

}  // namespace kalvex::platform
