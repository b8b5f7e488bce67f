#include "core/document/richtext/richtextdocument.h"
#include "core/layout/layoutresolution.h"
#include "core/layout/measurement.h"

#include <QRawFont>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <algorithm>
#include <cmath>
#include <limits>

using namespace lomir;

namespace {

FontSpec arial(double pointSize, bool bold = false, bool italic = false)
{
    return FontSpec{QStringLiteral("Arial"), QStringLiteral("ArialMT"), pointSize, bold, italic};
}

TextAttributes withFont(const FontSpec& font)
{
    TextAttributes attributes;
    attributes.font = font;
    return attributes;
}

RichText inArial(const QString& text, double pointSize)
{
    return RichText(text, withFont(arial(pointSize)));
}

// The face that a font resolves to, at its design size: one pixel per font unit, so its
// metrics are the font's own numbers, independent of any layout.
QRawFont designFont(const FontSpec& fontSpec)
{
    QRawFont raw = QRawFont::fromFont(lomir::toQFont(fontSpec));
    raw.setPixelSize(raw.unitsPerEm());
    return raw;
}

// The width of a string from the font's advance widths, in points.
double advanceWidth(const FontSpec& fontSpec, const QString& text)
{
    const QRawFont raw = designFont(fontSpec);
    const QList<QPointF> advances =
        raw.advancesForGlyphIndexes(raw.glyphIndexesForString(text), QRawFont::UseDesignMetrics);
    double width = 0.0;
    for (const QPointF& advance : advances)
        width += advance.x();
    return width * fontSpec.pointSize / raw.unitsPerEm();
}

// The face as the measurement lays it out for type up to largestSize points: the font
// the family resolves to here (Liberation Sans for Arial; for Helvetica, Nimbus Sans
// where the URW fonts are installed), unhinted, in whole pixels of the layout
// resolution. Some faces' ascent and descent come out in whole pixels there, so
// expectations are taken at that resolution rather than from the font's design units.
struct LayoutFace
{
    QRawFont raw;
    double pixelsPerPoint;

    double toPoints(qreal pixels) const { return double(pixels) / pixelsPerPoint; }
};

LayoutFace layoutFace(const FontSpec& fontSpec, double largestSize)
{
    const double pixelsPerPoint = lomir::layoutDpi(largestSize) / 72.0;
    QFont font = lomir::toQFont(fontSpec);
    font.setPixelSize(int(std::lround(fontSpec.pointSize * pixelsPerPoint)));
    font.setHintingPreference(QFont::PreferNoHinting);
    return {QRawFont::fromFont(font), pixelsPerPoint};
}

// One line of the face in points: ascent, descent and leading. A face's line gap is never
// negative; the font engine reports a negative leading for some faces at some sizes (Nimbus
// Sans at 9.5 points), from rounding ascent, descent and line height to whole pixels each,
// and a line leaves it out.
double lineHeight(const FontSpec& fontSpec, double largestSize)
{
    const LayoutFace face = layoutFace(fontSpec, largestSize);
    return face.toPoints(face.raw.ascent() + face.raw.descent() +
                         std::max(qreal(0), face.raw.leading()));
}

double lineHeight(double pointSize)
{
    return lineHeight(arial(pointSize), pointSize);
}

// The least height textHeight gives for a font: ascent and descent plus a point.
double minimumHeight(double pointSize)
{
    const LayoutFace face = layoutFace(arial(pointSize), pointSize);
    return face.toPoints(face.raw.ascent() + face.raw.descent()) + 1.0;
}

// Doubles compared exactly, printed in full when they differ.
QString exact(double value)
{
    return QString::number(value, 'g', 17);
}

} // namespace

class TestMeasurement : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void arialIsLiberationSans();
    void emptyTextWidthIsPadding();
    void widestLineWidth_data();
    void widestLineWidth();
    void widthMatchesAdvanceWidths_data();
    void widthMatchesAdvanceWidths();
    void widthScalesExactly_data();
    void widthScalesExactly();
    void tabsStopEvery28Points_data();
    void tabsStopEvery28Points();
    void mixedSizesInOneLine();
    void textHeight_data();
    void textHeight();
    void withUniformFontSize_data();
    void withUniformFontSize();
    void setUniformFontSizeOnDocument();
    void numberOfDigits_data();
    void numberOfDigits();
    void numberOfDigitsAgreesWithDecimalText();
    void roundToPlaces_data();
    void roundToPlaces();
};

void TestMeasurement::arialIsLiberationSans()
{
    // Labels are designed in Arial; Liberation Sans has its metrics.
    QCOMPARE(designFont(arial(12)).familyName(), QStringLiteral("Liberation Sans"));
}

void TestMeasurement::emptyTextWidthIsPadding()
{
    QCOMPARE(lomir::widestLineWidth(RichText()), 2.0);
    QCOMPARE(lomir::widestLineWidth(inArial(QStringLiteral("\n"), 12)), 2.0);
    QCOMPARE(lomir::widestLineWidth(inArial(QStringLiteral("\n\n\n"), 48)), 2.0);
}

void TestMeasurement::widestLineWidth_data()
{
    // Each row's text must measure exactly as wide as the reference text.
    QTest::addColumn<RichText>("text");
    QTest::addColumn<RichText>("reference");

    QTest::newRow("trailing line feed adds an empty line")
        << inArial(QStringLiteral("abc\n"), 12) << inArial(QStringLiteral("abc"), 12);
    QTest::newRow("widest line second")
        << inArial(QStringLiteral("ab\nWWWWW"), 12) << inArial(QStringLiteral("WWWWW"), 12);
    QTest::newRow("widest line first")
        << inArial(QStringLiteral("WWWW\nab"), 12) << inArial(QStringLiteral("WWWW"), 12);
    QTest::newRow("widest line in the middle")
        << inArial(QStringLiteral("a\nWWW\nbb"), 12) << inArial(QStringLiteral("WWW"), 12);
    QTest::newRow("empty lines around")
        << inArial(QStringLiteral("\n\nWW\n\n"), 12) << inArial(QStringLiteral("WW"), 12);
    // Lines are not wrapped, however long.
    QTest::newRow("long line") << inArial(QStringLiteral("W").repeated(2000), 12)
                               << inArial(QStringLiteral("WW").repeated(1000), 12);
    {
        // The second line starts after the line feed: it is measured in its own size.
        RichText text = inArial(QStringLiteral("ab"), 12);
        text.append(QStringLiteral("\nWW"), withFont(arial(24)));
        QTest::newRow("each line from its own location")
            << text << inArial(QStringLiteral("WW"), 24);
    }
    {
        RichText text = inArial(QStringLiteral("WWWWWW\n"), 12);
        text.append(QStringLiteral("ab"), withFont(arial(24)));
        QTest::newRow("narrow line in large type") << text << inArial(QStringLiteral("WWWWWW"), 12);
    }
    // A carriage return or paragraph separator does not split the text here, but ends a
    // line when the text is drawn, as a line separator does.
    QTest::newRow("carriage return")
        << inArial(QStringLiteral("abc\rWWWWW"), 12) << inArial(QStringLiteral("WWWWW"), 12);
    QTest::newRow("paragraph separator")
        << inArial(QStringLiteral("abc\u2029WWWWW"), 12) << inArial(QStringLiteral("WWWWW"), 12);
    QTest::newRow("line separator")
        << inArial(QStringLiteral("WWWWW\u2028abc"), 12) << inArial(QStringLiteral("WWWWW"), 12);
    QTest::newRow("carriage return and line feed")
        << inArial(QStringLiteral("WWW\r\nab"), 12) << inArial(QStringLiteral("WWW"), 12);
    const FontSpec helvetica{QStringLiteral("Helvetica"), QStringLiteral("Helvetica"), 12.0, false,
                             false};
    QTest::newRow("runs without a font are Helvetica 12")
        << RichText(QStringLiteral("Hello"))
        << RichText(QStringLiteral("Hello"), withFont(helvetica));
}

void TestMeasurement::widestLineWidth()
{
    QFETCH(RichText, text);
    QFETCH(RichText, reference);

    const double width = lomir::widestLineWidth(text);
    const double referenceWidth = lomir::widestLineWidth(reference);
    QVERIFY2(width > 2.0, qPrintable(exact(width)));
    QVERIFY2(std::fabs(width - referenceWidth) < 1e-9,
             qPrintable(exact(width) + QStringLiteral(" vs ") + exact(referenceWidth)));
}

void TestMeasurement::widthMatchesAdvanceWidths_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<FontSpec>("font");

    QTest::newRow("Hello at 12") << QStringLiteral("Hello") << arial(12);
    QTest::newRow("Hello at 4") << QStringLiteral("Hello") << arial(4);
    QTest::newRow("digits at 9.5") << QStringLiteral("0123456789") << arial(9.5);
    QTest::newRow("label at 7.25") << QStringLiteral("Strawberry jam 2024") << arial(7.25);
    QTest::newRow("Jam at 0.5") << QStringLiteral("Jam") << arial(0.5);
    QTest::newRow("W at 300") << QStringLiteral("W") << arial(300);
    QTest::newRow("Hi at 900") << QStringLiteral("Hi") << arial(900);
    // Whatever faces Helvetica, Times and Courier resolve to here (the URW fonts on most
    // desktops, else the Liberation fonts) measure by their own advances too.
    const auto face = [](const char* family, double pointSize, bool bold = false) {
        return FontSpec{QString::fromLatin1(family), QString(), pointSize, bold, false};
    };
    QTest::newRow("Helvetica, label at 12")
        << QStringLiteral("Strawberry jam 2024") << face("Helvetica", 12);
    QTest::newRow("Helvetica bold, digits at 9.5")
        << QStringLiteral("0123456789") << face("Helvetica", 9.5, true);
    QTest::newRow("Helvetica, Hi at 900") << QStringLiteral("Hi") << face("Helvetica", 900);
    QTest::newRow("Times, label at 7.25")
        << QStringLiteral("Strawberry jam 2024") << face("Times", 7.25);
    QTest::newRow("Courier, Lot 7 at 13.37") << QStringLiteral("Lot 7") << face("Courier", 13.37);
}

void TestMeasurement::widthMatchesAdvanceWidths()
{
    QFETCH(QString, text);
    QFETCH(FontSpec, font);

    // Exact in points: at screen resolution Qt would round the font to whole pixels and
    // these would be off by several per cent.
    const double width = lomir::widestLineWidth(RichText(text, withFont(font))) - 2.0;
    const double expected = advanceWidth(font, text);
    QVERIFY2(std::fabs(width - expected) < 0.01,
             qPrintable(exact(width) + QStringLiteral(" vs ") + exact(expected)));
}

void TestMeasurement::widthScalesExactly_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("pointSize");
    QTest::addColumn<double>("factor");

    QTest::newRow("WWWW, 4 and 40") << QStringLiteral("WWWW") << 4.0 << 10.0;
    QTest::newRow("Hello, 2.5 and 25") << QStringLiteral("Hello") << 2.5 << 10.0;
    QTest::newRow("Jam, 1.5 and 36") << QStringLiteral("Jam") << 1.5 << 24.0;
    QTest::newRow("Lot 7, 4.25 and 17") << QStringLiteral("Lot 7") << 4.25 << 4.0;
    // Type this large is laid out at a lower resolution; it must still measure right.
    QTest::newRow("W, 70 and 700") << QStringLiteral("W") << 70.0 << 10.0;
    QTest::newRow("Ab, 100 and 1000") << QStringLiteral("Ab") << 100.0 << 10.0;
}

void TestMeasurement::widthScalesExactly()
{
    QFETCH(QString, text);
    QFETCH(double, pointSize);
    QFETCH(double, factor);

    const double small = lomir::widestLineWidth(inArial(text, pointSize)) - 2.0;
    const double large = lomir::widestLineWidth(inArial(text, pointSize * factor)) - 2.0;
    QVERIFY(small > 0.0);
    QVERIFY2(std::fabs(large / small - factor) < factor * 1e-4,
             qPrintable(exact(small) + QStringLiteral(" and ") + exact(large)));
}

void TestMeasurement::tabsStopEvery28Points_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("tabEnd");
    QTest::addColumn<QString>("after");

    QTest::newRow("one tab") << QStringLiteral("a\tb") << 28.0 << QStringLiteral("b");
    QTest::newRow("two tabs") << QStringLiteral("\t\tLot") << 56.0 << QStringLiteral("Lot");
    QTest::newRow("text past the first stop")
        << QStringLiteral("WWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWW\tx") << 392.0 << QStringLiteral("x");
}

void TestMeasurement::tabsStopEvery28Points()
{
    QFETCH(QString, text);
    QFETCH(double, tabEnd);
    QFETCH(QString, after);

    const double width = lomir::widestLineWidth(inArial(text, 12)) - 2.0;
    const double expected = tabEnd + advanceWidth(arial(12), after);
    QVERIFY2(std::fabs(width - expected) < 0.01,
             qPrintable(exact(width) + QStringLiteral(" vs ") + exact(expected)));
}

void TestMeasurement::mixedSizesInOneLine()
{
    RichText text = inArial(QStringLiteral("ab"), 12);
    text.append(QStringLiteral("cd"), withFont(arial(24, true)));
    const double width = lomir::widestLineWidth(text) - 2.0;
    const double expected =
        advanceWidth(arial(12), QStringLiteral("ab")) +
        lomir::widestLineWidth(RichText(QStringLiteral("cd"), withFont(arial(24, true)))) - 2.0;
    QVERIFY2(std::fabs(width - expected) < 0.01,
             qPrintable(exact(width) + QStringLiteral(" vs ") + exact(expected)));
    // The bold run is measured bold: wider than regular.
    QVERIFY(expected > advanceWidth(arial(12), QStringLiteral("ab")) +
                           advanceWidth(arial(24), QStringLiteral("cd")));
}

void TestMeasurement::textHeight_data()
{
    QTest::addColumn<RichText>("text");
    QTest::addColumn<std::optional<FontSpec>>("font");
    QTest::addColumn<double>("expected");

    const std::optional<FontSpec> none;
    QTest::newRow("one line") << inArial(QStringLiteral("Hello"), 12) << none << lineHeight(12);
    QTest::newRow("two lines") << inArial(QStringLiteral("a\nb"), 12) << none << 2 * lineHeight(12);
    QTest::newRow("trailing line feed adds a line")
        << inArial(QStringLiteral("abc\n"), 12) << none << 2 * lineHeight(12);
    QTest::newRow("only a line feed")
        << inArial(QStringLiteral("\n"), 12) << none << 2 * lineHeight(12);
    QTest::newRow("exact at 4.5 points")
        << inArial(QStringLiteral("a\nb\nc"), 4.5) << none << 3 * lineHeight(4.5);
    QTest::newRow("empty text, no font: Arial 4") << RichText() << none << minimumHeight(4);
    QTest::newRow("empty text measures an a in the font")
        << RichText() << std::optional<FontSpec>(arial(48)) << lineHeight(48);
    QTest::newRow("empty text, never below the font's extent")
        << RichText() << std::optional<FontSpec>(arial(24)) << minimumHeight(24);
    QTest::newRow("tiny type, larger font given")
        << inArial(QStringLiteral("abc"), 2) << std::optional<FontSpec>(arial(30))
        << minimumHeight(30);
    QTest::newRow("tiny type, no font")
        << inArial(QStringLiteral("abc"), 2) << none << minimumHeight(4);
    {
        RichText text = inArial(QStringLiteral("a"), 12);
        text.append(QStringLiteral("b"), withFont(arial(24)));
        QTest::newRow("largest type sets the line") << text << none << lineHeight(24);
    }
    {
        RichText text = inArial(QStringLiteral("a\n"), 12);
        text.append(QStringLiteral("\n"), withFont(arial(24)));
        text.append(QStringLiteral("b"), withFont(arial(12)));
        QTest::newRow("empty line in its line feed's font")
            << text << none << 2 * lineHeight(12) + lineHeight(24);
    }
    {
        RichText text = inArial(QStringLiteral("a"), 12);
        text.append(QStringLiteral("\n"), withFont(arial(24)));
        QTest::newRow("last empty line in the last line feed's font")
            << text << none << lineHeight(12) + lineHeight(24);
    }
    QTest::newRow("carriage return and line feed: one break")
        << inArial(QStringLiteral("ab\r\ncd"), 12) << none << 2 * lineHeight(12);
    QTest::newRow("carriage return breaks the line")
        << inArial(QStringLiteral("ab\rcd"), 12) << none << 2 * lineHeight(12);
    QTest::newRow("line separator breaks the line")
        << inArial(QStringLiteral("ab\u2028cd"), 12) << none << 2 * lineHeight(12);
    QTest::newRow("lines are not wrapped")
        << inArial(QStringLiteral("W").repeated(3000), 12) << none << lineHeight(12);
    // Faces of many thousand layout pixels: the font engine must still report their
    // ascent and descent.
    QTest::newRow("large type") << inArial(QStringLiteral("Big"), 200) << none << lineHeight(200);
    QTest::newRow("very large type")
        << inArial(QStringLiteral("Big\nBigger"), 1000) << none << 2 * lineHeight(1000);
    QTest::newRow("runs without a font are Helvetica 12")
        << RichText(QStringLiteral("Hello")) << none << lineHeight(lomir::defaultFont(), 12);
    {
        const FontSpec helvetica{QStringLiteral("Helvetica"), QString(), 9.5, false, false};
        QTest::newRow("Helvetica 9.5, two lines")
            << RichText(QStringLiteral("Lot\n42"), withFont(helvetica)) << none
            << 2 * lineHeight(helvetica, 9.5);
    }
    {
        // Whatever faces Helvetica, Times and Courier resolve to here.
        const FontSpec helvetica{QStringLiteral("Helvetica"), QString(), 9.5, true, false};
        const FontSpec times{QStringLiteral("Times"), QString(), 13.37, false, true};
        const FontSpec courier{QStringLiteral("Courier"), QString(), 7.25, false, false};
        RichText text(QStringLiteral("Lot\n"), withFont(helvetica));
        text.append(QStringLiteral("Premium\n"), withFont(times));
        text.append(QStringLiteral("0042"), withFont(courier));
        QTest::newRow("other faces")
            << text << none
            << lineHeight(helvetica, 13.37) + lineHeight(times, 13.37) + lineHeight(courier, 13.37);
    }
}

void TestMeasurement::textHeight()
{
    QFETCH(RichText, text);
    QFETCH(std::optional<FontSpec>, font);
    QFETCH(double, expected);

    const double height = lomir::textHeight(text, font);
    // The expected heights come from the same faces at the same resolution: they agree
    // but for the order of the additions.
    QVERIFY2(std::fabs(height - expected) < 1e-9,
             qPrintable(exact(height) + QStringLiteral(" vs ") + exact(expected)));
    QVERIFY(height >= minimumHeight(font ? font->pointSize : 4.0) - 0.001);
}

void TestMeasurement::withUniformFontSize_data()
{
    QTest::addColumn<RichText>("text");
    QTest::addColumn<RichText>("expected");

    const FontSpec bold{QStringLiteral("Arial"), QStringLiteral("Arial-BoldMT"), 12, true, false};
    const FontSpec italic{QStringLiteral("Arial"), QStringLiteral("Arial-ItalicMT"), 24, false,
                          true};
    FontSpec bold9 = bold;
    bold9.pointSize = 9;
    FontSpec italic9 = italic;
    italic9.pointSize = 9;
    {
        RichText text(QStringLiteral("Bold "), withFont(bold));
        text.append(QStringLiteral("italic"), withFont(italic));
        RichText expected(QStringLiteral("Bold "), withFont(bold9));
        expected.append(QStringLiteral("italic"), withFont(italic9));
        QTest::newRow("12 bold and 24 italic") << text << expected;
    }
    {
        TextAttributes coloredNoFont;
        coloredNoFont.foreground = Rgba{255, 0, 0, 255};
        TextAttributes coloredItalic = withFont(italic);
        coloredItalic.foreground = Rgba{0, 0, 255, 255};
        coloredItalic.underline = LineStyle::Single;
        RichText text(QStringLiteral("plain "), coloredNoFont);
        text.append(QStringLiteral("fancy"), coloredItalic);
        TextAttributes expectedItalic = coloredItalic;
        expectedItalic.font = italic9;
        RichText expected(QStringLiteral("plain "), coloredNoFont);
        expected.append(QStringLiteral("fancy"), expectedItalic);
        QTest::newRow("run without a font untouched, others keep their attributes")
            << text << expected;
    }
    {
        const FontSpec times{QStringLiteral("Times New Roman"), QStringLiteral("TimesNewRomanPSMT"),
                             9, false, false};
        RichText text(QStringLiteral("Same\nsize"), withFont(times));
        QTest::newRow("already the size") << text << text;
    }
    QTest::newRow("empty") << RichText() << RichText();
}

void TestMeasurement::withUniformFontSize()
{
    QFETCH(RichText, text);
    QFETCH(RichText, expected);
    QVERIFY(lomir::withUniformFontSize(text, 9) == expected);
}

void TestMeasurement::setUniformFontSizeOnDocument()
{
    const FontSpec bold{QStringLiteral("Arial"), QStringLiteral("Arial-BoldMT"), 12, true, false};
    const FontSpec italic{QStringLiteral("Arial"), QStringLiteral("Arial-ItalicMT"), 24, false,
                          true};
    RichText text(QStringLiteral("Bold "), withFont(bold));
    text.append(QStringLiteral("italic\n"), withFont(italic));
    text.append(QStringLiteral("plain"), TextAttributes());
    text.append(QStringLiteral("\n"), withFont(bold));

    QTextDocument document;
    QFont documentFont(QStringLiteral("Liberation Serif"));
    documentFont.setPointSizeF(14);
    documentFont.setItalic(true);
    document.setDefaultFont(documentFont);
    lomir::setRichText(document, text);
    QVERIFY(lomir::richTextFromDocument(document) == text);

    lomir::setUniformFontSize(document, 9);

    // Every run with a font is 9 points in its own face; the run without one has none.
    int fragments = 0;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextCharFormat format = it.fragment().charFormat();
            const QString characters = it.fragment().text();
            ++fragments;
            if (characters == QStringLiteral("plain")) {
                QVERIFY(!format.hasProperty(QTextFormat::FontPointSize));
                QVERIFY(format.fontFamilies().toStringList().isEmpty());
                continue;
            }
            QCOMPARE(format.fontPointSize(), 9.0);
            QCOMPARE(format.fontFamilies().toStringList(), QStringList{QStringLiteral("Arial")});
            const bool isBold = characters == QStringLiteral("Bold ");
            QCOMPARE(format.fontWeight() == QFont::Bold, isBold);
            QCOMPARE(format.fontItalic(), !isBold);
        }
    }
    QCOMPARE(fragments, 3);
    // The empty last paragraph starts typing in the line feed's font, now at 9 points.
    QCOMPARE(document.lastBlock().charFormat().fontPointSize(), 9.0);
    QVERIFY(lomir::richTextFromDocument(document) == lomir::withUniformFontSize(text, 9));

    // The document's own font keeps its face and takes the size.
    QCOMPARE(document.defaultFont().family(), QStringLiteral("Liberation Serif"));
    QVERIFY(document.defaultFont().italic());
    QCOMPARE(document.defaultFont().pointSizeF(), 9.0);

    // One edit: a single undo restores the sizes.
    document.undo();
    QVERIFY(lomir::richTextFromDocument(document) == text);
}

void TestMeasurement::numberOfDigits_data()
{
    QTest::addColumn<qint64>("value");
    QTest::addColumn<qint64>("digits");

    QTest::newRow("-9") << qint64(-9) << qint64(1);
    QTest::newRow("9") << qint64(9) << qint64(1);
    QTest::newRow("10") << qint64(10) << qint64(2);
    QTest::newRow("-10") << qint64(-10) << qint64(2);
    QTest::newRow("999") << qint64(999) << qint64(3);
    QTest::newRow("1000") << qint64(1000) << qint64(4);
    QTest::newRow("largest") << std::numeric_limits<qint64>::max() << qint64(19);
    QTest::newRow("smallest") << std::numeric_limits<qint64>::min() << qint64(19);
    QTest::newRow("0") << qint64(0) << qint64(1);
    QTest::newRow("-99") << qint64(-99) << qint64(2);
    QTest::newRow("-100") << qint64(-100) << qint64(3);
    QTest::newRow("10^18 - 1") << qint64(999999999999999999) << qint64(18);
    QTest::newRow("10^18") << qint64(1000000000000000000) << qint64(19);
}

void TestMeasurement::numberOfDigits()
{
    QFETCH(qint64, value);
    QFETCH(qint64, digits);
    QCOMPARE(lomir::numberOfDigits(value), digits);
}

void TestMeasurement::numberOfDigitsAgreesWithDecimalText()
{
    // Around every power of ten, both signs: the count is the length of the decimal text
    // without its sign.
    for (qint64 power = 1; power <= 1000000000000000000; power *= 10) {
        for (qint64 value : {power - 1, power, power + 1}) {
            for (qint64 signedValue : {value, -value}) {
                const QString decimal = QString::number(signedValue).remove(QLatin1Char('-'));
                QCOMPARE(lomir::numberOfDigits(signedValue), qint64(decimal.size()));
            }
        }
        if (power > std::numeric_limits<qint64>::max() / 10)
            break;
    }
}

void TestMeasurement::roundToPlaces_data()
{
    QTest::addColumn<int>("places");
    QTest::addColumn<RoundingRule>("rule");
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("expected");

    using R = RoundingRule;
    // The size read-out and the cell sizes.
    QTest::newRow("up, 1.001") << 2 << R::Up << 1.001 << 1.01;
    QTest::newRow("up, 1.0 stays") << 2 << R::Up << 1.0 << 1.0;
    QTest::newRow("toward zero, -1.239") << 2 << R::TowardZero << -1.239 << -1.23;
    QTest::newRow("up at 6 places, noise above") << 6 << R::Up << 104.0000000001 << 104.000001;
    QTest::newRow("up at 6 places, noise below") << 6 << R::Up << 99.9999999 << 100.0;

    // Every rule on a tie, both signs.
    QTest::newRow("nearest or away, 2.5") << 0 << R::ToNearestOrAwayFromZero << 2.5 << 3.0;
    QTest::newRow("nearest or away, -2.5") << 0 << R::ToNearestOrAwayFromZero << -2.5 << -3.0;
    QTest::newRow("nearest or even, 2.5") << 0 << R::ToNearestOrEven << 2.5 << 2.0;
    QTest::newRow("nearest or even, -2.5") << 0 << R::ToNearestOrEven << -2.5 << -2.0;
    QTest::newRow("nearest or even, 3.5") << 0 << R::ToNearestOrEven << 3.5 << 4.0;
    QTest::newRow("nearest or even, -3.5") << 0 << R::ToNearestOrEven << -3.5 << -4.0;
    QTest::newRow("up, 2.5") << 0 << R::Up << 2.5 << 3.0;
    QTest::newRow("up, -2.5") << 0 << R::Up << -2.5 << -2.0;
    QTest::newRow("down, 2.5") << 0 << R::Down << 2.5 << 2.0;
    QTest::newRow("down, -2.5") << 0 << R::Down << -2.5 << -3.0;
    QTest::newRow("toward zero, 2.5") << 0 << R::TowardZero << 2.5 << 2.0;
    QTest::newRow("toward zero, -2.5") << 0 << R::TowardZero << -2.5 << -2.0;
    QTest::newRow("away from zero, 2.5") << 0 << R::AwayFromZero << 2.5 << 3.0;
    QTest::newRow("away from zero, -2.5") << 0 << R::AwayFromZero << -2.5 << -3.0;

    // Not a tie.
    QTest::newRow("nearest or away, 2.4") << 0 << R::ToNearestOrAwayFromZero << 2.4 << 2.0;
    QTest::newRow("nearest or even, -2.6") << 0 << R::ToNearestOrEven << -2.6 << -3.0;
    QTest::newRow("up, 2.4") << 0 << R::Up << 2.4 << 3.0;
    QTest::newRow("down, -2.4") << 0 << R::Down << -2.4 << -3.0;
    QTest::newRow("toward zero, -2.6") << 0 << R::TowardZero << -2.6 << -2.0;
    QTest::newRow("away from zero, 2.1") << 0 << R::AwayFromZero << 2.1 << 3.0;
    QTest::newRow("away from zero, -2.1") << 0 << R::AwayFromZero << -2.1 << -3.0;

    // Ties at two places (12.5 hundredths is exact in binary).
    QTest::newRow("nearest or away, 0.125") << 2 << R::ToNearestOrAwayFromZero << 0.125 << 0.13;
    QTest::newRow("nearest or even, 0.125") << 2 << R::ToNearestOrEven << 0.125 << 0.12;
    QTest::newRow("nearest or even, -0.375") << 2 << R::ToNearestOrEven << -0.375 << -0.38;

    // Whole values stay whatever the rule.
    QTest::newRow("whole, up") << 0 << R::Up << -7.0 << -7.0;
    QTest::newRow("whole, away") << 3 << R::AwayFromZero << 42.0 << 42.0;
    QTest::newRow("zero") << 2 << R::Down << 0.0 << 0.0;

    // Negative places round to tens and hundreds.
    QTest::newRow("hundreds, nearest or away")
        << -2 << R::ToNearestOrAwayFromZero << 1250.0 << 1300.0;
    QTest::newRow("hundreds, nearest or even") << -2 << R::ToNearestOrEven << 1250.0 << 1200.0;
    QTest::newRow("tens, up") << -1 << R::Up << 1234.0 << 1240.0;

    // Large values.
    QTest::newRow("large tie, away")
        << 0 << R::ToNearestOrAwayFromZero << 1.0e15 + 0.5 << 1.0e15 + 1.0;
    QTest::newRow("large tie, even") << 0 << R::ToNearestOrEven << 1.0e15 + 0.5 << 1.0e15;
    QTest::newRow("beyond exact fractions") << 2 << R::Up << 1.0e17 << 1.0e17;
}

void TestMeasurement::roundToPlaces()
{
    QFETCH(int, places);
    QFETCH(RoundingRule, rule);
    QFETCH(double, value);
    QFETCH(double, expected);
    QCOMPARE(exact(lomir::roundToPlaces(places, rule, value)), exact(expected));
}

QTEST_MAIN(TestMeasurement)

#include "tst_measurement.moc"
