// The choice of a level or a group, as a right has one. Main thread.
#pragma once

#include <string>
#include <vector>

#include "platform/Translator.h"
#include "workbench/model/RightChoices.h"
#include "workbench/qt/FormDialog.h"
#include "workbench/qt/RowTable.h"

namespace kalvex::window {

class UserGroupDialog final : public FormDialog {
  public:
    // The right that is set, an engine text, is selected where it is among the choices.
    UserGroupDialog(std::vector<workbench::RightChoice> choices, const std::string& right,
                    const platform::Translator& translator, QWidget* parent = nullptr);

    // Empty while nothing is selected.
    std::string GetRight() const;

  private:
    const std::vector<workbench::RightChoice> m_choices;
    RowTable* m_table;
};

}  // namespace kalvex::window
