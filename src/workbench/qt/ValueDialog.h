// The dialog in which a person gives a variable another value. Main thread.
#pragma once

#include <functional>
#include <string_view>

#include "platform/Translator.h"
#include "value/Value.h"
#include "workbench/qt/FormDialog.h"

class QLineEdit;

namespace kalvex::window {

// Made by new; it destroys itself when it closes.
class CVariableDlg final : public FormDialog {
  public:
    // `accepted` takes the value as OK makes it of the text: unchanged for an empty one.
    CVariableDlg(const platform::Translator& translator, std::string_view name, value::CVal value,
                 std::function<void(const value::CVal&)> accepted, QWidget* parent);

    void accept() override;

  private:
    value::CVal m_value;
    const std::function<void(const value::CVal&)> m_accepted;
    QLineEdit* const m_text;
};

}  // namespace kalvex::window
