// The elements of a LIST variable as a trend. Main thread.
#pragma once

#include <string>
#include <string_view>

#include "engine/ScriptDocument.h"
#include "workbench/model/TrendSource.h"

namespace kalvex::workbench {

class ListTrend final : public TrendSource {
  public:
    // The variable is looked up at each use, since it goes with a reset. The document outlives the
    // trend.
    ListTrend(const engine::CKalvexDoc& document, std::string_view name)
        : m_document(document), m_name(name) {}

    std::string GetName() override { return m_name; }
    std::string GetUnit() override { return {}; }
    bool IsTime() const override { return false; }
    void Request(std::int64_t from, std::int64_t to, Answer answer) override;
    std::optional<TrendPoint> ReadLive(std::int64_t) override { return std::nullopt; }
    // Of its length, its first elements and its last ones.
    std::uint64_t GetVersion() override;

  private:
    const operands::CVariableList* FindList() const;

    const engine::CKalvexDoc& m_document;
    std::string m_name;
};

}  // namespace kalvex::workbench
