// The sections and keys of the profile of a module and of that of the machine: who reads an entry
// takes its name from here, and an entry that is not here is one that nobody reads. Names are
// UTF-8.
#pragma once

#include <span>

namespace kalvex::app {

namespace Section {
inline constexpr const char* General = "Konfiguracja";
inline constexpr const char* Windows = "Okna";
inline constexpr const char* Autostart = "Autostart";
inline constexpr const char* Sources = "Zrodla";
inline constexpr const char* Console = "Konsola";
inline constexpr const char* Log = "Log";
inline constexpr const char* Servers = "Serwery";
inline constexpr const char* Encryption = "Szyfrowanie";
inline constexpr const char* Server = "Serwer ";  // the name of a server stands behind it
}  // namespace Section

namespace Key {
inline constexpr const char* Name = "Nazwa";
inline constexpr const char* RootFolder = "Katalog główny";
inline constexpr const char* ConfigurationRight = "Poziom uprawnień do konfiguracji";
inline constexpr const char* ControlRight = "Poziom uprawnień do sterowania procedurą";
inline constexpr const char* AutoClient = "AutoRC";
inline constexpr const char* Users = "Użytkownicy";
inline constexpr const char* TrayIcon = "Ikona w pasku zadan";
inline constexpr const char* RefreshPeriod = "Częstotliwość odświeżania";
inline constexpr const char* Columns = "Szerokości kolumn";
inline constexpr const char* LogFont = "Czcionka Logu";
inline constexpr const char* Script = "Procedura";  // a number stands behind it
inline constexpr const char* Source = "Zrodlo";     // a number stands behind it
inline constexpr const char* LocalSocket = "Gniazdo lokalne";
inline constexpr const char* Group = "Grupa";
inline constexpr const char* Address = "Adres";
inline constexpr const char* Certificate = "Certyfikat";
inline constexpr const char* CertificateKey = "Klucz";
inline constexpr const char* Authority = "Urząd";
inline constexpr const char* CertificateName = "Nazwa certyfikatu";
inline constexpr const char* PlainText = "Otwarty tekst";
inline constexpr const char* Clients = "Klienci";
inline constexpr const char* LogLevel = "Rodzaj";
}  // namespace Key

enum class KeyForm {
    Text,     // or what is checked by who reads it
    Number,   // whole, from `least` to `most`
    Widths,   // up to seven whole numbers
    Scripts,  // texts, by numbers from 0
    Sources,  // name, user and password, by numbers from 0
    AnyName,  // texts by whatever name
};

struct ProfileKey {
    const char* section;
    const char* name;  // null for any
    KeyForm form = KeyForm::Text;
    int least = 0;
    int most = 0;
};

std::span<const ProfileKey> ModuleKeys();
std::span<const ProfileKey> MachineKeys();

}  // namespace kalvex::app
