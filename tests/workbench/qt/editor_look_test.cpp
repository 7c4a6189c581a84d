// Colours, numbers, notes and tips.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <cmath>

#include "workbench/model/ScriptStyles.h"
#include "workbench/qt/editor_world.h"

namespace kalvex::window {
namespace {

class EditorLookTest : public EditorWorld {
  protected:
    // Each byte's style as a digit.
    std::string Styles() {
        const int length = static_cast<int>(m_editor->Bytes().size());
        m_editor->SendScintilla(QsciScintillaBase::SCI_COLOURISE, 0UL, -1L);
        std::string styles;
        for (int at = 0; at < length; ++at) {
            styles +=
                std::to_string(m_editor->SendScintilla(QsciScintillaBase::SCI_GETSTYLEAT, at));
        }
        return styles;
    }
    QColor Colour(unsigned message, int style) const {
        const long bgr = m_editor->SendScintilla(message, static_cast<long>(style));
        return QColor(static_cast<int>(bgr & 0xFF), static_cast<int>(bgr >> 8 & 0xFF),
                      static_cast<int>(bgr >> 16 & 0xFF));
    }
    static double Light(const QColor& colour) {
        const auto part = [](double value) {
            return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * part(colour.redF()) + 0.7152 * part(colour.greenF()) +
               0.0722 * part(colour.blueF());
    }
    static double Contrast(const QColor& a, const QColor& b) {
        const double high = std::max(Light(a), Light(b));
        return (high + 0.05) / (std::min(Light(a), Light(b)) + 0.05);
    }
    QPoint PlaceOf(int position) const {
        return {static_cast<int>(m_editor->SendScintilla(QsciScintillaBase::SCI_POINTXFROMPOSITION,
                                                         0UL, static_cast<long>(position))) +
                    2,
                static_cast<int>(m_editor->SendScintilla(QsciScintillaBase::SCI_POINTYFROMPOSITION,
                                                         0UL, static_cast<long>(position))) +
                    4};
    }
};

TEST_F(EditorLookTest, TextIsStyled) {
    Edit("IF ż\n; ę\nSIN");
    EXPECT_EQ(Styles(), "11000066660222");
    SetCaret(0, 0);
    Press(Qt::Key_Delete);
    EXPECT_EQ(Styles(), "0000066660222");
}

TEST_F(EditorLookTest, SchemesHaveTheColoursOfTheTables) {
    Edit("a");
    for (const bool dark : {false, true}) {
        m_editor->SetScheme(dark);
        for (const bool readOnly : {false, true}) {
            m_document->SetReadOnly(readOnly);
            m_editor->ApplyView();
            for (int style = 0; style < workbench::kTextStyleCount; ++style) {
                const auto text = workbench::ColoursOf(static_cast<workbench::TextStyle>(style));
                const auto paper = workbench::EditorBackground(readOnly);
                const QColor fore = Colour(QsciScintillaBase::SCI_STYLEGETFORE, style);
                const QColor back = Colour(QsciScintillaBase::SCI_STYLEGETBACK, style);
                EXPECT_EQ(fore, QColor(QRgb(dark ? text.dark : text.light))) << style;
                EXPECT_EQ(back, QColor(QRgb(dark ? paper.dark : paper.light))) << style;
                EXPECT_GE(Contrast(fore, back), dark ? 4.5 : 1.0) << style;
            }
        }
    }
}

TEST_F(EditorLookTest, BreakpointLineHasItsColour) {
    Edit("a\nb");
    m_editor->resize(400, 200);
    m_model->Markers().SetBreakpoint(1, true);
    m_editor->ApplyView();
    const QImage image = m_editor->viewport()->grab().toImage();
    EXPECT_EQ(image.pixelColor(QPoint(300, PlaceOf(2).y())), QColor(0xFF, 0x7F, 0x7F));
}

TEST_F(EditorLookTest, NumbersHaveRoomForTheirDigits) {
    Edit("a");
    const auto width = [this] {
        return m_editor->SendScintilla(QsciScintillaBase::SCI_GETMARGINWIDTHN, MarginNumbers);
    };
    EXPECT_GE(width(), 30);
    const long narrow = width();
    std::string text;
    for (int line = 0; line < 100'000; ++line) text += "a\n";
    m_document->Text().SetText(text);
    EXPECT_GT(width(), narrow);
    m_editor->ShowLineNumbers(false);
    EXPECT_EQ(width(), 0);
    EXPECT_FALSE(m_editor->HasLineNumbers());
    m_editor->ShowLineNumbers(true);
    EXPECT_GT(width(), narrow);
}

TEST_F(EditorLookTest, ZoomIsReportedAndKeepsItsDigits) {
    Edit("a");
    QFont font = m_editor->EditorFont();
    font.setPointSizeF(14);
    m_editor->SetEditorFont(font);
    EXPECT_EQ(m_editor->SendScintilla(QsciScintillaBase::SCI_STYLEGETSIZEFRACTIONAL, 0L), 1400);
    EXPECT_EQ(m_editor->EditorFont().family(), "Courier New");
    m_editor->zoomIn(3);
    EXPECT_EQ(m_editor->SendScintilla(QsciScintillaBase::SCI_GETZOOM), 3);
    m_editor->zoomTo(0);
    EXPECT_EQ(m_editor->SendScintilla(QsciScintillaBase::SCI_GETZOOM), 0);
}

TEST_F(EditorLookTest, NoteStandsBehindTheTextOfItsLine) {
    Edit("abc\nabc");
    const auto ink = [this] {
        const QImage image = m_editor->viewport()->grab().toImage();
        const QPoint end = PlaceOf(7);
        const QColor paper = image.pixelColor(QPoint(590, end.y() + 30));
        int count = 0;
        for (int x = end.x() + 10; x < 500; ++x) {
            for (int y = end.y(); y < end.y() + 8; ++y) {
                count += image.pixelColor(x, y) != paper ? 1 : 0;
            }
        }
        return count;
    };
    EXPECT_EQ(ink(), 0);
    m_editor->SetLineNote(1, "A = 12");
    EXPECT_GT(ink(), 0);
    m_editor->SetLineNote(1, "");
    EXPECT_EQ(ink(), 0);
    m_editor->SetLineNote(1, "A = 12");
    m_editor->SetLineNote(70, "beyond the text");
    m_editor->ClearLineNotes();
    EXPECT_EQ(ink(), 0);
    EXPECT_EQ(Text(), "abc\nabc");
}

TEST_F(EditorLookTest, TipsTellOfWordsLinksAndTheCurrentLine) {
    Edit("SLEEP xyz\nhttp://a.pl/b\nSLEEP 1");
    EXPECT_EQ(m_editor->TipAt(PlaceOf(1)).toStdString().substr(0, 51),
              "Zatrzymanie wykonywania programu na określony czas");
    EXPECT_EQ(m_editor->TipAt(PlaceOf(7)), "");
    EXPECT_EQ(m_editor->TipAt(PlaceOf(13)), "http://a.pl/b");
    EXPECT_EQ(m_editor->TipAt(QPoint(500, 300)), "");
    m_model->SelectLine(0);
    EXPECT_EQ(m_editor->TipAt(PlaceOf(7)), "waits");
    EXPECT_EQ(m_editor->TipAt(QPoint(3, 4)), "waits");
}

}  // namespace
}  // namespace kalvex::window
