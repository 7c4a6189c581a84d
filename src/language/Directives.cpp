#include "language/Directives.h"

#include "engine/Statement.h"
#include "operands/Keywords.h"

namespace kalvex::language {

namespace {

constexpr DirectiveRow kRows[] = {
    {operands::Keyword::Include, "INCLUDE <ścieżka_do_pliku_z_rozszerzeniem_kx>",
     "Umożliwia wczytanie i wykonanie kodu z określonego pliku"},
    {operands::Keyword::IncludeVar, "INCLUDE_VAR <nazwa_serwera> <filtr>",
     "Wstawienie do skryptu (po jego uruchomieniu) deklaracji zmiennych dla podanego serwera "
     "spełniających sformułowane kryteria"},
};

}  // namespace

std::span<const DirectiveRow> Directives() {
    return kRows;
}

}  // namespace kalvex::language
