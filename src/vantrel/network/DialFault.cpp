#include "vantrel/network/DialFault.h"

#include <netdb.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

#include "vantrel/Codes.h"

namespace kalvex::vantrel {

namespace {

using platform::Translatable;

// The ways on which a row can come about.
enum class Way { Any, Local, Tcp };

// By what the end of a detail, or a part of it, is known.
enum class Sign {
    None,
    System,    // the system's words for an errno, in the language of the process
    Resolver,  // those for an EAI_
    Library,   // the library's own
};

struct FaultRow {
    Way way;
    StreamEnd end;
    Sign sign;
    int number;
    const char* words;
    const char* text;  // source, place
};

constexpr const char* kNoSuchHost =
    Translatable("Serwer %s jest nieosiągalny: nieznana nazwa komputera w adresie %s");
constexpr const char* kNoRoute =
    Translatable("Serwer %s jest nieosiągalny: nie ma drogi do adresu %s (czy sieć działa?)");
constexpr const char* kCutOff = Translatable(
    "Serwer %s jest nieosiągalny: %s przerywa połączenie (czy serwer szyfruje "
    "połączenia i zna certyfikat tego komputera?)");
constexpr const char* kNoAnswer = Translatable(
    "Serwer %s jest nieosiągalny: brak odpowiedzi z %s (czy serwer nie jest "
    "zawieszony, a komputer i sieć działają?)");

// The first that fits; without one there is no answer.
constexpr FaultRow kFaults[] = {
    {Way::Any, StreamEnd::Refused, Sign::None, 0, "",
     Translatable("Serwer %s nie przyjmuje połączenia przez %s (powód podaje jego log)")},
    {Way::Any, StreamEnd::NotOffered, Sign::None, 0, "",
     Translatable("Serwer %s jest nieosiągalny: pod %s działa inny program")},
    {Way::Local, StreamEnd::Unreachable, Sign::System, ENOENT, "",
     Translatable("Serwer %s jest nieosiągalny: nie ma gniazda %s (czy serwer jest "
                  "uruchomiony?)")},
    {Way::Local, StreamEnd::Unreachable, Sign::System, ECONNREFUSED, "",
     Translatable("Serwer %s jest nieosiągalny: nikt nie obsługuje gniazda %s (czy serwer jest "
                  "uruchomiony?)")},
    {Way::Local, StreamEnd::Unreachable, Sign::System, EACCES, "",
     Translatable("Serwer %s jest nieosiągalny: brak uprawnień do gniazda %s (czy to konto należy "
                  "do jego grupy?)")},
    {Way::Tcp, StreamEnd::Unreachable, Sign::System, ECONNREFUSED, "",
     Translatable("Serwer %s jest nieosiągalny: nikt nie słucha pod adresem %s (czy serwer jest "
                  "uruchomiony?)")},
    {Way::Tcp, StreamEnd::Unreachable, Sign::Resolver, EAI_NONAME, "", kNoSuchHost},
    {Way::Tcp, StreamEnd::Unreachable, Sign::Resolver, EAI_AGAIN, "",
     Translatable("Serwer %s jest nieosiągalny: nie udało się ustalić adresu komputera z %s (czy "
                  "DNS działa?)")},
    {Way::Tcp, StreamEnd::Unreachable, Sign::Library, 0, "DNS resolution failed", kNoSuchHost},
    {Way::Tcp, StreamEnd::Unreachable, Sign::System, EHOSTUNREACH, "", kNoRoute},
    {Way::Tcp, StreamEnd::Unreachable, Sign::System, ENETUNREACH, "", kNoRoute},
    {Way::Tcp, StreamEnd::Unreachable, Sign::Library, 0, "certificate verify failed",
     Translatable("Serwer %s jest nieosiągalny: certyfikat spod adresu %s nie jest zaufany "
                  "(sprawdź klucz Urząd w profilu komputera)")},
    {Way::Tcp, StreamEnd::Unreachable, Sign::Library, 0, "is not in peer certificate",
     Translatable("Serwer %s jest nieosiągalny: certyfikat spod adresu %s jest dla innej nazwy "
                  "(sprawdź klucz Nazwa certyfikatu w profilu komputera)")},
    {Way::Tcp, StreamEnd::Unreachable, Sign::Library, 0, "Ssl handshake failed",
     Translatable("Serwer %s jest nieosiągalny: %s nie szyfruje połączeń tak jak ten komputer "
                  "(sprawdź sekcję Szyfrowanie w profilu komputera)")},
    {Way::Any, StreamEnd::Unreachable, Sign::Library, 0, "Socket closed", kCutOff},
    {Way::Any, StreamEnd::Unreachable, Sign::System, ECONNRESET, "", kCutOff},
};

struct NoWayRow {
    Way way;
    std::uint32_t reason;
    const char* text;  // source, place
};

constexpr NoWayRow kNoWays[] = {
    {Way::Tcp, ReasonPlainText,
     Translatable("Serwer %s jest nieosiągalny: połączenie z %s bez szyfrowania jest niedozwolone "
                  "(sekcja Szyfrowanie w profilu komputera)")},
    {Way::Local, ReasonUnknownAddress,
     Translatable("Serwer %s jest nieosiągalny: niepoprawna nazwa albo za długa ścieżka gniazda "
                  "%s")},
    {Way::Tcp, ReasonUnknownAddress,
     Translatable("Serwer %s jest nieosiągalny: %s nie jest adresem host:port (sekcja Serwery w "
                  "profilu komputera)")},
};

Way WayOf(const Endpoint& endpoint) {
    return endpoint.target.starts_with(LocalSocketTarget("")) ? Way::Local : Way::Tcp;
}

bool Shows(const FaultRow& row, const std::string& detail) {
    switch (row.sign) {
        case Sign::System:
            return detail.ends_with(std::strerror(row.number));
        case Sign::Resolver:
            return detail.ends_with(::gai_strerror(row.number));
        case Sign::Library:
            return detail.find(row.words) != std::string::npos;
        case Sign::None:
            break;
    }
    return true;
}

}  // namespace

platform::Notice DialFault(const std::string& source, const Endpoint& endpoint, StreamEnd end,
                           const std::string& detail) {
    const Way way = WayOf(endpoint);
    const auto* row = std::ranges::find_if(kFaults, [&](const FaultRow& candidate) {
        return (candidate.way == Way::Any || candidate.way == way) && candidate.end == end &&
               Shows(candidate, detail);
    });
    return {row == std::end(kFaults) ? kNoAnswer : row->text, {source, endpoint.place}};
}

platform::Notice NoWayFault(const std::string& source, const Endpoint& endpoint,
                            std::uint32_t reason) {
    const Way way = WayOf(endpoint);
    const auto* row = std::ranges::find_if(kNoWays, [&](const NoWayRow& candidate) {
        return candidate.way == way && candidate.reason == reason;
    });
    return {row->text, {source, endpoint.place}};
}

platform::Notice DialSuccess(const std::string& source, const Endpoint& endpoint) {
    return {Translatable("Serwer %s odpowiada (%s)"), {source, endpoint.place}};
}

}  // namespace kalvex::vantrel
