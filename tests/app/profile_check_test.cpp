#include "app/ProfileCheck.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/marking_translator.h"
#include "support/scratch_folder.h"
#include "text/CodePage.h"

namespace kalvex::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ProfileCheckTest : public testing::Test {
  protected:
    // What is told, "Plik", the path and the comma behind it left out.
    std::vector<std::string> Check(const std::string& utf8, std::span<const ProfileKey> keys) {
        const std::string path = m_folder.Put("Kalvex.ini", text::FromUtf8(utf8));
        std::vector<std::string> faults = FindProfileFaults(path, keys, m_translator);
        const std::string head = "Plik " + path + ", ";
        for (std::string& fault : faults) {
            EXPECT_EQ(fault.substr(0, head.size()), head);
            fault.erase(0, head.size());
        }
        return faults;
    }
    std::vector<std::string> OfModule(const std::string& utf8) { return Check(utf8, ModuleKeys()); }
    std::vector<std::string> OfMachine(const std::string& utf8) {
        return Check(utf8, MachineKeys());
    }

    support::ScratchFolder m_folder;
    support::MarkingTranslator m_translator{false};
};

TEST_F(ProfileCheckTest, EveryKeyOfAModuleIsKnownInAnyCase) {
    EXPECT_THAT(OfModule("; uwaga\n\n[KONFIGURACJA]\nNazwa=x\nKATALOG GŁÓWNY=x\n"
                         "Poziom uprawnień do konfiguracji=x\n"
                         "Poziom uprawnień do sterowania procedurą=x\n[Okna]\n"
                         "Ikona w pasku zadan=1\nCzęstotliwość odświeżania=250\n"
                         "Szerokości kolumn=1 2 3 4 5 6 7\nCzcionka Logu=x\n"
                         "[autostart]\nprocedura0=a.kx\nProcedura1=b.kx\n"
                         "[Zrodla]\nZrodlo0=Gaz,ewa,a,b\nZrodlo1=Woda,\nZrodlo2=Para,,\n"
                         "[Konsola]\nGniazdo lokalne=1\nGrupa=x\nAdres=x\nCertyfikat=x\nKlucz=x\n"
                         "Urząd=x\nOtwarty tekst=1\nKlienci=x\n[Log]\nRodzaj=3\n"),
                IsEmpty());
}

TEST_F(ProfileCheckTest, EveryKeyOfTheMachineIsKnown) {
    const std::string encryption =
        "Urząd=x\nCertyfikat=x\nKlucz=x\nNazwa certyfikatu=x\nOtwarty tekst=1\n";
    EXPECT_THAT(OfMachine("[Konfiguracja]\nAutoRC=0\nUżytkownicy=x\n[Serwery]\nGaz=x\nWoda=x\n"
                          "[Szyfrowanie]\n" +
                          encryption + "[Serwer Gaz]\n" + encryption),
                IsEmpty());
    EXPECT_THAT(OfMachine("[Serwer ]\n[Serwer]\n[Serwer Gaz]\nAdres=x\nOtwarty tekst=tak\n"),
                ElementsAre("wiersz 1: nieznana sekcja [Serwer], może chodzi o [Serwery]",
                            "wiersz 2: nieznana sekcja [Serwer], może chodzi o [Serwery]",
                            "wiersz 4, [Serwer Gaz] Adres: nieznany klucz",
                            "wiersz 5, [Serwer Gaz] Otwarty tekst: oczekiwano liczby całkowitej od "
                            "0 do 1"));
    EXPECT_THAT(OfMachine("[Nieznana sekcja]\nUrząd=x\n"),
                ElementsAre("wiersz 1: nieznana sekcja [Nieznana sekcja]"));
    EXPECT_THAT(OfMachine("[Konfiguracja]\nAutoRC=2\n[Szyfrowanie]\nOtwarty tekst=2\n"),
                ElementsAre("wiersz 2, [Konfiguracja] AutoRC: oczekiwano liczby całkowitej od 0 do "
                            "1",
                            "wiersz 4, [Szyfrowanie] Otwarty tekst: oczekiwano liczby całkowitej "
                            "od 0 do 1"));
}

TEST_F(ProfileCheckTest, UnknownSectionIsToldOnceWithTheOneThatIsMeant) {
    EXPECT_THAT(OfModule("[Autsotart]\r\nProcedura0=a.kx\r\n[Inna]\r\nX=1\r\n[]\r\n"),
                ElementsAre("wiersz 1: nieznana sekcja [Autsotart], może chodzi o [Autostart]",
                            "wiersz 3: nieznana sekcja [Inna]", "wiersz 5: nieznana sekcja []"));
}

TEST_F(ProfileCheckTest, UnknownKeyIsToldWithTheOneThatIsMeant) {
    EXPECT_THAT(
        OfModule("[Autostart]\nProcedra0=a.kx\nProcedura=b.kx\nProcedura01=c.kx\n"
                 "Procedura-1=d.kx\nSkrypt=e.kx\nProcedyra2=f.kx\n[Konsola]\nUrzad=x\n"),
        ElementsAre("wiersz 2, [Autostart] Procedra0: nieznany klucz, może chodzi o Procedura0",
                    "wiersz 3, [Autostart] Procedura: nieznany klucz, może chodzi o Procedura0",
                    "wiersz 4, [Autostart] Procedura01: nieznany klucz, może chodzi o Procedura1",
                    "wiersz 5, [Autostart] Procedura-1: nieznany klucz, może chodzi o Procedura1",
                    "wiersz 6, [Autostart] Skrypt: nieznany klucz",
                    "wiersz 7, [Autostart] Procedyra2: nieznany klucz, może chodzi o Procedura2",
                    "wiersz 9, [Konsola] Urzad: nieznany klucz, może chodzi o Urząd"));
}

TEST_F(ProfileCheckTest, EntryBehindAGapOfAListIsTold) {
    EXPECT_THAT(
        OfModule("[Autostart]\nProcedura3=d.kx\nProcedura0=a.kx\nProcedura1=\nProcedura2=c.kx\n"
                 "[Zrodla]\nZrodlo1=Gaz,ewa,x\n"),
        ElementsAre("wiersz 2, [Autostart] Procedura3: nie jest czytany, bo Procedura1 nie ma "
                    "wartości",
                    "wiersz 5, [Autostart] Procedura2: nie jest czytany, bo Procedura1 nie ma "
                    "wartości",
                    "wiersz 7, [Zrodla] Zrodlo1: nie jest czytany, bo Zrodlo0 nie ma wartości"));
    EXPECT_THAT(OfModule("[Autostart]\nProcedura0=a.kx\nProcedura1=\n"), IsEmpty());
}

TEST_F(ProfileCheckTest, ValueThatIsNotTheNumberThatItShouldBeIsTold) {
    EXPECT_THAT(
        OfModule("[Log]\nRodzaj=dwa\n[Okna]\nIkona w pasku zadan=tak\n"
                 "Częstotliwość odświeżania=250 ms\nSzerokości kolumn=10 x 30\n"),
        ElementsAre("wiersz 2, [Log] Rodzaj: oczekiwano liczby całkowitej od 0 do 3",
                    "wiersz 4, [Okna] Ikona w pasku zadan: oczekiwano liczby całkowitej od 0 do 1",
                    "wiersz 5, [Okna] Częstotliwość odświeżania: oczekiwano liczby całkowitej od "
                    "10 do 3600000",
                    "wiersz 6, [Okna] Szerokości kolumn: oczekiwano najwyżej siedmiu liczb "
                    "całkowitych"));
    for (const char* level : {"4", "-1", "1.5", "2x"}) {
        EXPECT_THAT(OfModule(std::string("[Log]\nRodzaj=") + level + "\n"),
                    ElementsAre("wiersz 2, [Log] Rodzaj: oczekiwano liczby całkowitej od 0 do 3"))
            << level;
    }
    EXPECT_THAT(OfModule("[Log]\nRodzaj=\n[Okna]\nSzerokości kolumn=\n"), IsEmpty());
    EXPECT_THAT(OfModule("[Okna]\nSzerokości kolumn=1  2\n"), IsEmpty());
    EXPECT_THAT(OfModule("[Okna]\nSzerokości kolumn=1 2 3 4 5 6 7 8\n"),
                ElementsAre("wiersz 2, [Okna] Szerokości kolumn: oczekiwano najwyżej siedmiu liczb "
                            "całkowitych"));
}

TEST_F(ProfileCheckTest, SourceWhoseFieldsAreLostIsTold) {
    const std::string told = ": oczekiwano nazwy, użytkownika i hasła, rozdzielonych przecinkami";
    EXPECT_THAT(
        OfModule("[Zrodla]\nZrodlo0=Gaz\nZrodlo1=,ewa,x\nZrodlo2=Gaz,ewa\nZrodlo3=Gaz,,x\n"
                 "Zrodlo4=Gaz,ewa,\n"),
        ElementsAre("wiersz 2, [Zrodla] Zrodlo0" + told, "wiersz 3, [Zrodla] Zrodlo1" + told,
                    "wiersz 4, [Zrodla] Zrodlo2" + told, "wiersz 5, [Zrodla] Zrodlo3" + told));
}

TEST_F(ProfileCheckTest, LineThatIsNothingIsTold) {
    EXPECT_THAT(OfModule("Nazwa=x\n[Log\nRodzaj 2\n[Log]\nRodzaj=2\nRodzaj=1\nRodzaj=x\n"),
                ElementsAre("wiersz 1: wpis stoi przed pierwszą sekcją",
                            "wiersz 2: to ani nagłówek [sekcja], ani wpis klucz=wartość",
                            "wiersz 3: to ani nagłówek [sekcja], ani wpis klucz=wartość",
                            "wiersz 6, [Log] Rodzaj: powtórzony, liczy się wiersz 5",
                            "wiersz 7, [Log] Rodzaj: powtórzony, liczy się wiersz 5"));
}

TEST_F(ProfileCheckTest, FileThatIsNoTextHasNoLines) {
    EXPECT_THAT(OfModule(std::string("[x]\n\0", 5)), IsEmpty());
    EXPECT_THAT(FindProfileFaults(m_folder.Path("nie_ma.ini"), ModuleKeys(), m_translator),
                IsEmpty());
}

TEST_F(ProfileCheckTest, FaultsAreToldInTheLanguageOfTheModule) {
    m_translator.marks = true;
    const std::string path = m_folder.Put("x.ini", "[Log]\nRodzaj=dwa\n[Inna]\n");
    EXPECT_THAT(FindProfileFaults(path, ModuleKeys(), m_translator),
                ElementsAre("<Plik " + path +
                                ", wiersz 2, [Log] Rodzaj: <oczekiwano liczby całkowitej od 0 do "
                                "3>>",
                            "<Plik " + path + ", wiersz 3: <nieznana sekcja [Inna]>>"));
}

}  // namespace
}  // namespace kalvex::app
