#include "programs/CommandForm.h"

#include <algorithm>

namespace kalvex::programs {

namespace {

const ValueForm kCommonRows[] = {
    {"FILE", Offer::File}, {"FOLDER", Offer::Folder}, {"N", Offer::Number}, {"S", Offer::Number}};

}  // namespace

ValueForm MakeValueForm(std::string_view name, std::span<const ValueForm> rows) {
    const bool mayLack = name.starts_with('[');
    const std::string_view bare = mayLack ? name.substr(1, name.size() - 2) : name;
    for (const std::span<const ValueForm> known : {rows, std::span<const ValueForm>(kCommonRows)}) {
        const auto row = std::ranges::find(known, bare, &ValueForm::name);
        if (row != known.end()) return {row->name, row->offer, row->detail, mayLack};
    }
    return {std::string(bare), Offer::Nothing, {}, mayLack};
}

}  // namespace kalvex::programs
