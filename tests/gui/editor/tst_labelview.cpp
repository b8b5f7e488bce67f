#include "core/document/richtext/richtextdocument.h"
#include "core/label/appearance.h"
#include "core/layout/labeltextlayout.h"
#include "core/layout/measurement.h"
#include "core/layout/tilingtextview.h"
#include "core/printing/pageloop.h"
#include "core/printing/printplan.h"
#include "gui/editor/centeredclipview.h"
#include "gui/editor/labelcell.h"
#include "gui/editor/labeltextview.h"
#include "support/labelimages.h"
#include "support/samplelabels.h"

#include <QApplication>
#include <QGraphicsScene>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <algorithm>
#include <cstdlib>
#include <memory>

using namespace lomir;
using namespace lomir::testing;

namespace {

// A view showing a label cell of the frame, one screen pixel per point, focused.
std::unique_ptr<CenteredClipView> viewOfLabel(const QRectF& frame, const QMarginsF& insets = {})
{
    auto view = std::make_unique<CenteredClipView>();
    view->setContentInsets(insets);
    auto* cell = new LabelCell;
    view->setDocumentView(cell);
    cell->setFrame(frame);
    view->scene()->setFocusItem(cell->textView());
    view->resize(400, 300);
    view->setMagnification(72.0 / view->logicalDpiX());
    view->show();
    view->activateWindow();
    if (!QTest::qWaitForWindowActive(view.get()))
        qFatal("the view was not shown");
    return view;
}

// Where the lines of a laid-out block start.
QList<int> lineStarts(const QTextBlock& block)
{
    QList<int> starts;
    for (int line = 0; line < block.layout()->lineCount(); ++line)
        starts.append(block.layout()->lineAt(line).textStart());
    return starts;
}

// The first copy of the label as the print job paints it on white paper, at the same
// scale: the cell's rectangle of the first page.
QImage printedCellImage(const RichText& text, const QSizeF& label, double spacing)
{
    const QSizeF paper(label.width() * 3.0, label.height() * 3.0);
    const PrintPlan plan = planForLabel(paper, QMarginsF(), label, spacing, 1, 0, text);
    const auto tiling = makeTilingTextView(plan);
    QImage image((label * kComparisonScale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.scale(kComparisonScale, kComparisonScale);
    // The copy is drawn half the spacing in from the cell's corner.
    painter.translate(-spacing / 2.0, -spacing / 2.0);
    paintPage(painter, *tiling, plan.margins, 0);
    return image;
}

class TestLabelView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // --- Centring ---

    void aSmallLabelIsCenteredInTheView()
    {
        const auto view = viewOfLabel(QRectF(0.0, 0.0, 100.0, 50.0));
        QCOMPARE(view->pixelsPerPoint(), 1.0);
        QCOMPARE(view->viewport()->size(), QSize(400, 300));
        QCOMPARE(view->visibleRect(), QRectF(-150.0, -125.0, 400.0, 300.0));
        QVERIFY(!view->horizontalScrollBar()->isVisible());
        QVERIFY(!view->verticalScrollBar()->isVisible());
    }

    void aLargeLabelScrollsNoFurtherThanItsEdges()
    {
        const auto view = viewOfLabel(QRectF(0.0, 0.0, 800.0, 50.0));
        QCOMPARE(view->viewport()->width(), 400);
        view->horizontalScrollBar()->setValue(500);
        QCOMPARE(view->visibleRect().left(), 400.0);
        view->horizontalScrollBar()->setValue(-20);
        QCOMPARE(view->visibleRect().left(), 0.0);
        view->horizontalScrollBar()->setValue(100);
        QCOMPARE(view->visibleRect().left(), 100.0);
        // Vertically the label is smaller than the view, and stays centred.
        const QRectF shown = view->visibleRect();
        QCOMPARE(shown.center().y(), 25.0);
    }

    void contentInsetsPadTheLabelBeforeCentering()
    {
        // The view's first placement has shown nothing before (a width of 0), so the
        // insets are taken as they are.
        const auto view =
            viewOfLabel(QRectF(0.0, 0.0, 100.0, 50.0), QMarginsF(0.0, 10.0, 0.0, 0.0));
        QCOMPARE(view->visibleRect(), QRectF(-150.0, -130.0, 400.0, 300.0));
    }

    void zoomingKeepsASmallLabelCentered()
    {
        const auto view = viewOfLabel(QRectF(10.0, 20.0, 100.0, 50.0));
        view->setMagnification(2.0 * 72.0 / view->logicalDpiX());
        QCOMPARE(view->pixelsPerPoint(), 2.0);
        QCOMPARE(view->visibleRect(), QRectF(-40.0, -30.0, 200.0, 150.0));
        // The shadow and the caret follow the zoom in device pixels.
        QCOMPARE(view->documentView()->textView()->unitsPerPoint(), 100.0);
    }

    void theLabelCellIsAWhiteCardOfItsFrame()
    {
        const auto view = viewOfLabel(QRectF(0.0, 0.0, 100.0, 50.0));
        const QImage shown = view->viewport()->grab().toImage();
        // The card is white inside (the caret stands at its left edge); outside it, the
        // view's background.
        QCOMPARE(shown.pixelColor(200, 150), QColor(Qt::white));
        QCOMPARE(shown.pixelColor(155, 173), QColor(Qt::white));
        QCOMPARE(shown.pixelColor(248, 126), QColor(Qt::white));
        QCOMPARE(shown.pixelColor(150, 126), QColor(Qt::black));
        QCOMPARE(shown.pixelColor(20, 20), view->palette().color(QPalette::Window));
        // The shadow falls below the card.
        QVERIFY(shown.pixelColor(200, 176).lightness() <
                view->palette().color(QPalette::Window).lightness());
    }

    // --- Text ---

    void typingIsAnEditAndLoadingIsNot()
    {
        const auto view = viewOfLabel(QRectF(0.0, 0.0, 100.0, 50.0));
        LabelTextView* text = view->documentView()->textView();
        QSignalSpy edits(text, &LabelTextView::textDidChange);
        text->replaceText(RichText(QStringLiteral("Loaded"), arial(6.0)));
        QCOMPARE(edits.count(), 0);
        QVERIFY(!text->document()->isUndoAvailable());
        QTest::keyClicks(view.get(), QStringLiteral("ab"));
        QCOMPARE(edits.count(), 2);
        QCOMPARE(text->richText().string(), QStringLiteral("abLoaded"));
        QCOMPARE(text->richText().attributesAt(0), arial(6.0));
        text->undo();
        QCOMPARE(edits.count(), 3);
        QCOMPARE(text->richText().string(), QStringLiteral("Loaded"));
    }

    void insertedTextTakesTheFormatOfWhatItReplaces()
    {
        const auto view = viewOfLabel(QRectF(0.0, 0.0, 100.0, 50.0));
        LabelTextView* text = view->documentView()->textView();
        RichText label(QStringLiteral("No. "), arial(6.0));
        label.append(QStringLiteral("##"), arial(9.0, true));
        text->replaceText(label);
        QSignalSpy edits(text, &LabelTextView::textDidChange);
        text->insertText(QStringLiteral("###"), 4, 6);
        QCOMPARE(edits.count(), 1);
        RichText expected(QStringLiteral("No. "), arial(6.0));
        expected.append(QStringLiteral("###"), arial(9.0, true));
        QCOMPARE(text->richText(), expected);
    }

    void truncatingKeepsTheStartAsItWas()
    {
        const auto view = viewOfLabel(QRectF(0.0, 0.0, 100.0, 50.0));
        LabelTextView* text = view->documentView()->textView();
        RichText label(QStringLiteral("No. "), arial(6.0));
        label.append(QStringLiteral("e\u0301#\u200D"), arial(9.0, true));
        text->replaceText(label);
        QSignalSpy edits(text, &LabelTextView::textDidChange);
        text->truncate(6);
        QCOMPARE(text->richText(), label.mid(0, 6));
        text->truncate(7);
        QCOMPARE(text->richText(), label.mid(0, 6));
        text->truncate(0);
        QCOMPARE(text->richText(), RichText());
        // In storage: no edit of the user's is reported.
        QCOMPARE(edits.count(), 0);
    }

    void theTextBreaksWhereTheEngineBreaksIt_data()
    {
        QTest::addColumn<double>("labelWidth");
        QTest::addColumn<double>("pointSize");
        QTest::newRow("4 pt in 60 pt") << 60.0 << 4.0;
        QTest::newRow("9 pt in 101.5 pt") << 101.5 << 9.0;
        QTest::newRow("12 pt in 200 pt") << 200.0 << 12.0;
        QTest::newRow("150 pt type in 900 pt") << 900.0 << 150.0;
    }

    void theTextBreaksWhereTheEngineBreaksIt()
    {
        QFETCH(double, labelWidth);
        QFETCH(double, pointSize);
        const auto view = viewOfLabel(QRectF(0.0, 0.0, labelWidth, 400.0));
        LabelTextView* textView = view->documentView()->textView();
        RichText label(QStringLiteral("Hand-made apricot and vanilla jam, best before the end "
                                      "of next summer; keep cool and dry. "),
                       arial(pointSize));
        label.append(QStringLiteral("Bold words wrap too, and so do WWWWWWWWWWWWWWWWWW."),
                     arial(pointSize, true));
        textView->replaceText(label);
        const LabelTextLayout printed(label, labelWidth);
        QCOMPARE(textView->unitsPerPoint(), printed.unitsPerPoint());
        const QList<int> editorLines = lineStarts(textView->document()->begin());
        QVERIFY(editorLines.size() > 2);
        QCOMPARE(editorLines, lineStarts(printed.document().begin()));
    }

    void theLabelStandsWhereAPrintedCopyStands()
    {
        const auto view = viewOfLabel(QRectF(0.0, 0.0, 100.0, 50.0));
        LabelTextView* text = view->documentView()->textView();
        // The text's origin is the label's top-left corner, and it wraps at the label's
        // width, as a printed copy in its cell.
        QCOMPARE(text->pos(), QPointF(0.0, 0.0));
        QCOMPARE(text->textWidth() / text->unitsPerPoint(), 100.0);
    }

    void theEditorShowsTheLabelAsItPrints_data()
    {
        QTest::addColumn<double>("spacing");
        QTest::newRow("no spacing") << 0.0;
        QTest::newRow("spacing") << 4.0;
    }

    void theEditorShowsTheLabelAsItPrints()
    {
        QFETCH(double, spacing);
        const QRectF frame(0.0, 0.0, 90.0, 40.0);
        const auto view = viewOfLabel(frame);
        const RichText label = wrappingLabel();
        view->documentView()->textView()->replaceText(label);

        const QImage shown = editorImage(*view);
        const QImage printed = printedCellImage(label, frame.size(), spacing);
        // Both hold the text: the comparison is about something.
        QVERIFY2(inkShare(shown) > 0.02, qPrintable(QString::number(inkShare(shown))));
        QVERIFY2(inkShare(printed) > 0.02, qPrintable(QString::number(inkShare(printed))));
        const double share = differingShare(shown, printed);
        QVERIFY2(share < 0.002, qPrintable(QStringLiteral("%1 of the pixels differ").arg(share)));
    }

    void clipboardTextKeepsTheLabelsFonts()
    {
        RichText label(QStringLiteral("Sloe "), arial(6.0));
        label.append(QStringLiteral("gin"), arial(9.0, true));
        const std::unique_ptr<QMimeData> mimeData = LabelTextView::mimeDataForText(label);
        QCOMPARE(mimeData->text(), QStringLiteral("Sloe gin"));
        QCOMPARE(LabelTextView::textFromMimeData(*mimeData, arial(4.0)), label);
        QMimeData plain;
        plain.setText(QStringLiteral("Plain\r\ntext"));
        QCOMPARE(LabelTextView::textFromMimeData(plain, arial(4.0)),
                 RichText(QStringLiteral("Plain\ntext"), arial(4.0)));
    }
};

} // namespace

QTEST_MAIN(TestLabelView)
#include "tst_labelview.moc"
