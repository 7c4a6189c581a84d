#include "programs/kalvexctl/Endings.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/FileTexts.h"
#include "text/CodePage.h"
#include "text/TextFormat.h"

namespace kalvex::kalvexctl {

namespace {

using platform::Translatable;

struct FaultRow {
    Fault fault;
    int status;
    const char* text;
    const char* advice = nullptr;  // a second line
};

constexpr FaultRow kRows[] = {
    {Fault::NoAnswer, programs::ExitFailed,
     Translatable("Skrypt %s nie odpowiedział na polecenie %s")},
    {Fault::NotStarted, programs::ExitFailed, Translatable("Skrypt %s nie został uruchomiony")},
    {Fault::NotInStepMode, programs::ExitFailed,
     Translatable("Skrypt %s nie stoi w trybie krokowym")},
    {Fault::NotRunning, programs::ExitFailed, Translatable("Skrypt %s nie jest uruchomiony")},
    {Fault::StillRuns, programs::ExitFailed,
     Translatable("Skrypt %s działa albo stoi w trybie krokowym")},
    {Fault::NoVariable, programs::ExitFailed, Translatable("Skrypt %s nie ma zmiennej %s")},
    {Fault::NoFile, programs::ExitFailed, platform::kUnreadableFile},
    {Fault::NotWritten, programs::ExitFailed, Translatable("Nie można zapisać wyniku (%s)")},
    {Fault::NotOffered, programs::ExitFailed,
     Translatable("Moduł %s nie udostępnia nadzoru skryptów")},
    {Fault::AuditFault, programs::ExitFailed,
     Translatable("Nie można odczytać dziennika zmian: %s")},
    {Fault::AuditUnread, programs::ExitFailed,
     Translatable("Dziennik zmian ma wiersze, których nie można odczytać: %s")},
    {Fault::NoConnection, ExitNoConnection, Translatable("Brak połączenia z modułem %s (%s)")},
    {Fault::Broken, ExitNoConnection, Translatable("Połączenie z modułem %s zerwane (%s)")},
    {Fault::LoginRefused, ExitNoLogin,
     Translatable("Moduł %s odrzucił rejestrację użytkownika %s (%s)")},
    {Fault::NoRight, ExitNoLogin, Translatable("Brak uprawnień do sterowania skryptami modułu %s")},
    {Fault::OpenToOthers, ExitNoLogin,
     Translatable("Plik %s może mieć prawa tylko dla właściciela")},
    {Fault::NoLoginFile, ExitNoLogin,
     Translatable("Nie można odczytać danych logowania z pliku %s (%s)")},
    {Fault::NoTerminal, ExitNoLogin, Translatable("Hasło można podać tylko na terminalu")},
    {Fault::SessionHeld, ExitNoSession,
     Translatable("Sesja dla skryptu %s jest przejęta przez klienta %s"),
     Translatable("Wymuszenie przejęcia: kalvexctl take %s --force")},
    {Fault::SessionDead, ExitNoSession,
     Translatable("Sesja dla skryptu %s jest przejęta przez klienta, który nie odpowiada"),
     Translatable("Odzyskanie sesji: kalvexctl release %s")},
    {Fault::SessionTaken, ExitNoSession, Translatable("Sesję dla skryptu %s przejął klient %s")},
    {Fault::ScriptNotOpen, ExitNoScript, Translatable("Moduł %s nie ma otwartego skryptu %s")},
    {Fault::ScriptNotFound, ExitNoScript, Translatable("Moduł %s nie otworzył skryptu %s")},
};

}  // namespace

Ending MakeEnding(Fault fault, std::initializer_list<std::string_view> values,
                  const platform::Translator& translator) {
    const FaultRow& row = *std::ranges::find(kRows, fault, &FaultRow::fault);
    std::string text = text::FormatText(translator.Translate(row.text), values);
    if (row.advice != nullptr) {
        text += '\n' + text::FormatText(translator.Translate(row.advice), values);
    }
    return {row.status, text::ToUtf8(text)};
}

Ending MakeUsageEnding(std::string text) {
    return {programs::ExitRefused, std::move(text)};
}

}  // namespace kalvex::kalvexctl
