// For the build: prints the card of the language on one page of a PDF.
#include <QAbstractTextDocumentLayout>
#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QPdfWriter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <cstdio>

namespace {

constexpr int kColumns = 4;
constexpr double kMarginMm = 8;
constexpr double kLargestPt = 8;
constexpr double kSmallestPt = 4.5;  // what can still be read

// All but headings in the font of the document. Forms that are longer than a column go on in the
// next line, a little to the right.
void SetStyle(QTextDocument& document) {
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        QTextBlockFormat format = block.blockFormat();
        const bool isForm = format.hasProperty(QTextFormat::BlockCodeFence);
        format.setNonBreakableLines(false);
        format.setTopMargin(isForm ? 0 : 40);
        format.setBottomMargin(isForm ? 0 : 20);
        format.setLeftMargin(isForm ? 60 : 0);
        format.setTextIndent(isForm ? -60 : 0);
        QTextCursor cursor(block);
        cursor.setBlockFormat(format);
        if (format.headingLevel() > 0) continue;
        cursor.select(QTextCursor::BlockUnderCursor);
        cursor.setCharFormat({});
    }
}

// Lays the text out in columns of that size with the largest letters of which they hold all.
bool Fit(QTextDocument& document, const QSizeF& column) {
    for (double size = kLargestPt; size >= kSmallestPt; size -= 0.1) {
        QFont font("DejaVu Sans Condensed");
        font.setPointSizeF(size);
        document.setDefaultFont(font);
        document.setPageSize(column);
        if (document.pageCount() <= kColumns) return true;
    }
    return false;
}

void Print(const QTextDocument& document, QPdfWriter& writer, const QSizeF& column, double gap) {
    QPainter painter(&writer);
    for (int i = 0; i < kColumns; ++i) {
        painter.save();
        painter.translate(i * (column.width() + gap), -i * column.height());
        const QRectF part(0, i * column.height(), column.width(), column.height());
        painter.setClipRect(part);
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = part;
        context.palette.setColor(QPalette::Text, Qt::black);
        document.documentLayout()->draw(&painter, context);
        painter.restore();
    }
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");  // a build has no display
    const QGuiApplication application(argc, argv);
    if (argc != 3) {
        std::fputs("usage: card-pdf CARD.md CARD.pdf\n", stderr);
        return 2;
    }
    QFile card(argv[1]);
    if (!card.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "card-pdf: %s: %s\n", argv[1], qPrintable(card.errorString()));
        return 1;
    }

    QPdfWriter writer(argv[2]);
    writer.setTitle("Kalvex");
    writer.setResolution(600);
    writer.setPageLayout({QPageSize(QPageSize::A4),
                          QPageLayout::Landscape,
                          {kMarginMm, kMarginMm, kMarginMm, kMarginMm},
                          QPageLayout::Millimeter});
    const double gap = 0.02 * writer.width();
    const QSizeF column((writer.width() - (kColumns - 1) * gap) / kColumns, writer.height());

    QTextDocument document;
    document.documentLayout()->setPaintDevice(&writer);
    document.setDocumentMargin(0);
    document.setMarkdown(QString::fromUtf8(card.readAll()));
    SetStyle(document);
    if (!Fit(document, column)) {
        std::fprintf(stderr, "card-pdf: %s: this is too much for one page\n", argv[1]);
        return 1;
    }
    Print(document, writer, column, gap);
    return 0;
}
