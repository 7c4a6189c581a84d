#include "workbench/qt/PatternFindDialog.h"

#include <QCheckBox>
#include <QLineEdit>
#include <utility>

#include "text/PatternMatch.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr const char* kTitle = platform::Translatable("Znajdź");
constexpr const char* kText = platform::Translatable("&Szukany tekst");

struct OptionRow {
    int bit;
    const char* text;
};

constexpr OptionRow kOptions[] = {
    {text::PatternOption::Wildcards, platform::Translatable("Znaki &wieloznaczne")},
    {text::PatternOption::Whole, platform::Translatable("&Cały tekst")},
    {text::PatternOption::Anywhere, platform::Translatable("W &dowolnym miejscu")},
    {text::PatternOption::NoCase, platform::Translatable("&Bez względu na wielkość liter")},
};

}  // namespace

CFindDlg::CFindDlg(const platform::Translator& translator, const workbench::FindRequest& request,
                   std::function<void(const workbench::FindRequest&)> accepted, QWidget* parent)
    : FormDialog(Translated(translator, kTitle), parent),
      m_accepted(std::move(accepted)),
      m_text(new QLineEdit(ToQt(request.pattern))) {
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName("patternFindDialog");
    AddField(Fields(), Translated(translator, kText), *m_text);
    for (const OptionRow& row : kOptions) {
        const QString text = Translated(translator, row.text);
        m_options.push_back(new QCheckBox(text));
        m_options.back()->setAccessibleName(WithoutMnemonic(text));
        m_options.back()->setChecked((request.options & row.bit) != 0);
        Fields().addRow(m_options.back());
    }
    m_text->selectAll();
    m_text->setFocus();
}

void CFindDlg::accept() {
    workbench::FindRequest request{FromQt(m_text->text()), 0};
    for (std::size_t option = 0; option < m_options.size(); ++option) {
        if (m_options[option]->isChecked()) request.options |= kOptions[option].bit;
    }
    QDialog::accept();
    m_accepted(request);
}

}  // namespace kalvex::window
