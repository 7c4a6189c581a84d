#include "workbench/model/ListTrend.h"

#include <algorithm>
#include <bit>

#include "operands/VariableTarget.h"
#include "text/CodePage.h"

namespace kalvex::workbench {

namespace {

constexpr const char* kNoList = platform::Translatable("Skrypt nie ma teraz listy %s");
constexpr std::size_t kLookedAt = 200;  // elements at either end

std::uint64_t Joined(std::uint64_t sum, std::uint64_t part) {
    constexpr std::uint64_t kPrime = 1099511628211U;
    return (sum ^ part) * kPrime;
}

}  // namespace

const operands::CVariableList* ListTrend::FindList() const {
    const operands::CVariable* variable = operands::FindTarget(m_document.Variables(), m_name);
    if (variable == nullptr || variable->GetKind() != operands::VariableList) return nullptr;
    return static_cast<const operands::CVariableList*>(variable);
}

void ListTrend::Request(std::int64_t, std::int64_t, Answer answer) {
    TrendArchive archive;
    if (const operands::CVariableList* list = FindList()) {
        archive.points.reserve(list->Elements().size());
        for (const value::CVal& element : list->Elements()) {
            archive.points.push_back(
                MakeTrendPoint(static_cast<std::int64_t>(archive.points.size()), element));
        }
    } else {
        archive.fault = {kNoList, {text::ToUtf8(m_name)}};
    }
    answer(std::move(archive));
}

std::uint64_t ListTrend::GetVersion() {
    const operands::CVariableList* list = FindList();
    if (list == nullptr) return 0;
    const operands::ElementSequence& elements = list->Elements();
    std::uint64_t version = Joined(1, elements.size());
    const auto look = [&](std::size_t index) {
        const TrendPoint point = MakeTrendPoint(0, elements[index]);
        version = Joined(version, std::bit_cast<std::uint64_t>(point.value));
        version = Joined(version, point.status);
    };
    const std::size_t ends = std::min(elements.size(), kLookedAt);
    for (std::size_t i = 0; i < ends; ++i) look(i);
    for (std::size_t i = std::max(ends, elements.size() - ends); i < elements.size(); ++i) look(i);
    return version;
}

}  // namespace kalvex::workbench
