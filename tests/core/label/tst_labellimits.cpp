#include "core/label/labellimits.h"
#include "core/layout/layoutresolution.h"
#include "core/layout/measurement.h"

#include <QFont>
#include <QRawFont>
#include <QTest>
#include <cmath>

using namespace lomir;

namespace {

FontSpec arial(double pointSize)
{
    return FontSpec{QStringLiteral("Arial"), QStringLiteral("ArialMT"), pointSize, false, false};
}

RichText inArial(const QString& text, double pointSize)
{
    TextAttributes attributes;
    attributes.font = arial(pointSize);
    return RichText(text, attributes);
}

// The face Arial resolves to on this machine, at its size in layout pixels (the
// resolution labels are laid out at), so that its metrics are what the layout sees.
QRawFont layoutFace(double pointSize)
{
    QRawFont raw = QRawFont::fromFont(QFont(QStringLiteral("Arial")));
    raw.setPixelSize(pointSize * kLayoutDpi / 72.0);
    return raw;
}

double pointsPerLayoutPixel()
{
    return 72.0 / kLayoutDpi;
}

// One line of Arial: ascent and descent plus a point, the least a label's text needs.
double oneLine(double pointSize)
{
    const QRawFont face = layoutFace(pointSize);
    return (face.ascent() + face.descent()) * pointsPerLayoutPixel() + 1.0;
}

// The height of n laid-out lines of Arial: ascent, descent and leading each.
double lines(int n, double pointSize)
{
    const QRawFont face = layoutFace(pointSize);
    return n * (face.ascent() + face.descent() + face.leading()) * pointsPerLayoutPixel();
}

QString exact(double value)
{
    return QString::number(value, 'g', 17);
}

} // namespace

class TestLabelLimits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void faceMetricsAreSane()
    {
        // The expected values below come from the face; make sure there is one.
        QVERIFY(layoutFace(4.0).isValid());
        QVERIFY(oneLine(4.0) > 4.0);
        // At 4 points, one line of text is shorter than its ascent and descent plus a point.
        QVERIFY(lines(1, 4.0) < oneLine(4.0));
        QVERIFY(lines(2, 4.0) > oneLine(4.0));
    }

    void editorFontIsArial4()
    {
        QCOMPARE(labelFont(), arial(4));
        for (double size : {4.0, 9.0, 24.0})
            QVERIFY2(std::abs(minimumTextHeight(arial(size)) - oneLine(size)) < 0.001,
                     qPrintable(exact(minimumTextHeight(arial(size)))));
    }

    void neededHeight_data()
    {
        QTest::addColumn<RichText>("text");
        QTest::addColumn<FontSpec>("font");
        QTest::addColumn<double>("width");
        QTest::addColumn<double>("expected");

        QTest::newRow("one line needs one line of the font")
            << inArial(QStringLiteral("Hello"), 4) << arial(4) << 100.0 << oneLine(4);
        QTest::newRow("empty text needs one line of the font")
            << RichText() << arial(4) << 100.0 << oneLine(4);
        QTest::newRow("empty text in a larger font")
            << RichText() << arial(24) << 100.0 << oneLine(24);
        QTest::newRow("tiny type, larger font")
            << inArial(QStringLiteral("abc"), 2) << arial(30) << 100.0 << oneLine(30);
        QTest::newRow("two lines")
            << inArial(QStringLiteral("a\nb"), 4) << arial(4) << 100.0 << lines(2, 4);
        QTest::newRow("trailing line feed adds a line")
            << inArial(QStringLiteral("abc\n"), 4) << arial(4) << 100.0 << lines(2, 4);
        QTest::newRow("three lines at 12 points")
            << inArial(QStringLiteral("one\ntwo\nthree"), 12) << arial(4) << 100.0 << lines(3, 12);
        QTest::newRow("one line at 40 points is taller than the minimum")
            << inArial(QStringLiteral("Jam"), 40) << arial(4) << 200.0 << lines(1, 40);
        // "WWWW WWWW" in 12 point Arial is about 100 points wide: wrapped at 50 less 2 it
        // takes two lines.
        QTest::newRow("wraps at the label's width")
            << inArial(QStringLiteral("WWWW WWWW"), 12) << arial(4) << 50.0 << lines(2, 12);
    }

    void neededHeight()
    {
        QFETCH(RichText, text);
        QFETCH(FontSpec, font);
        QFETCH(double, width);
        QFETCH(double, expected);

        const double needed = neededTextHeight(text, font, width);
        // The layout rounds each line's height up to a whole layout unit.
        QVERIFY2(std::abs(needed - expected) < 0.011,
                 qPrintable(exact(needed) + QStringLiteral(" vs ") + exact(expected)));
        QVERIFY(needed >= minimumTextHeight(font));
    }

    void minimumIsExactlyTheFontsLine()
    {
        // Not just close: a one-line text needs exactly what textHeight's minimum is, so a
        // label measured to its text and then made custom accepts that text.
        const RichText text = inArial(QStringLiteral("Hello"), 4);
        QCOMPARE(neededTextHeight(text, arial(4), 100.0), minimumTextHeight(arial(4)));
        QCOMPARE(neededTextHeight(text, arial(4), 100.0), textHeight(text, arial(4)));
    }

    void wrapsWhereMeasuredWidthEnds()
    {
        // A label as wide as the measured text keeps each line on one line; half a point
        // narrower and the line wraps. The editor breaks lines where printing does.
        const RichText text = inArial(QStringLiteral("Batch No. 0123456789 WAVE fifi\nLot 7"), 20);
        const double width = widestLineWidth(text);
        const double unwrapped = neededTextHeight(text, arial(4), width);
        QVERIFY2(std::abs(unwrapped - lines(2, 20)) < 0.021, qPrintable(exact(unwrapped)));
        const double wrapped = neededTextHeight(text, arial(4), width - 0.5);
        QVERIFY2(std::abs(wrapped - lines(3, 20)) < 0.031, qPrintable(exact(wrapped)));
    }

    void narrowerLabelNeedsMore()
    {
        // Down to a label a few characters wide. (Narrower than a single character, the
        // layout stops breaking inside words; printing lays such a label out the same way.)
        const RichText text = inArial(QStringLiteral("Keep refrigerated after opening"), 9);
        double previous = 0.0;
        for (double width : {400.0, 120.0, 60.0, 30.0, 10.0}) {
            const double needed = neededTextHeight(text, arial(4), width);
            QVERIFY2(needed >= previous, qPrintable(QString::number(width)));
            previous = needed;
        }
        QVERIFY(previous > lines(10, 9));
    }

    void returnIsRefusedInAOneLineLabel()
    {
        // A custom label exactly one line of the font tall takes one line; a line feed
        // would need a second.
        const double height = oneLine(4);
        QVERIFY(textFitsLabel(inArial(QStringLiteral("Plum jam"), 4), arial(4), 60.0, height));
        QVERIFY(textFitsLabel(RichText(), arial(4), 60.0, height));
        QVERIFY(!textFitsLabel(inArial(QStringLiteral("Plum jam\n"), 4), arial(4), 60.0, height));
        // Equal heights fit.
        const RichText text = inArial(QStringLiteral("a\nb"), 4);
        const double needed = neededTextHeight(text, arial(4), 60.0);
        QVERIFY(textFitsLabel(text, arial(4), 60.0, needed));
        QVERIFY(!textFitsLabel(text, arial(4), 60.0, std::nextafter(needed, 0.0)));
    }

    void trim_data()
    {
        QTest::addColumn<RichText>("text");
        QTest::addColumn<double>("width");
        QTest::addColumn<double>("height");
        QTest::addColumn<QString>("expected");

        const double oneLineHeight = oneLine(4);
        QTest::newRow("fits already") << inArial(QStringLiteral("a\nb"), 4) << 60.0
                                      << lines(2, 4) + 0.1 << QStringLiteral("a\nb");
        QTest::newRow("second line goes, then the line feed")
            << inArial(QStringLiteral("abc\ndef"), 4) << 60.0 << oneLineHeight
            << QStringLiteral("abc");
        QTest::newRow("never below empty")
            << inArial(QStringLiteral("abc\ndef"), 4) << 60.0 << 0.0 << QString();
        QTest::newRow("empty stays empty") << RichText() << 60.0 << 0.0 << QString();
        QTest::newRow("placeholder units go whole")
            << inArial(QStringLiteral("No.\n#\u200D#\u200D"), 4) << 60.0 << oneLineHeight
            << QStringLiteral("No.");
        QTest::newRow("a letter with its combining mark goes whole")
            << inArial(QStringLiteral("ae\u0301\ne\u0301"), 4) << 60.0 << oneLineHeight
            << QStringLiteral("ae\u0301");
    }

    void trim()
    {
        QFETCH(RichText, text);
        QFETCH(double, width);
        QFETCH(double, height);
        QFETCH(QString, expected);

        const RichText trimmed = trimmedToLabel(text, arial(4), width, height);
        QCOMPARE(trimmed.string(), expected);
        // A prefix of the text, formatted as it was.
        QCOMPARE(trimmed, text.mid(0, trimmed.length()));
    }

    void trimStopsAtTheFirstFit()
    {
        // A long line wrapped into a label two lines tall keeps the most characters that
        // fit: one more character would need a third line.
        const RichText text = inArial(QStringLiteral("Keep refrigerated after opening and use "
                                                     "within four weeks of the date shown"),
                                      9);
        const double width = 80.0;
        const double height = lines(2, 9) + 0.05;
        const RichText trimmed = trimmedToLabel(text, arial(4), width, height);
        QVERIFY(trimmed.length() < text.length());
        QVERIFY(trimmed.length() > 0);
        QCOMPARE(trimmed, text.mid(0, trimmed.length()));
        QVERIFY(neededTextHeight(trimmed, arial(4), width) <= height);
        const RichText oneMore = text.mid(0, trimmed.length() + 1);
        QVERIFY(neededTextHeight(oneMore, arial(4), width) > height);
    }

    void trimKeepsWhatDeletingOneCharacterAtATimeKeeps()
    {
        // The trim finds its cut without laying out every shorter text; it must keep
        // exactly what deleting the last character until the text fits keeps, whatever
        // the label's height, for a text of mixed sizes, wrapped words, line breaks, a
        // letter with a combining mark and characters beyond the basic plane.
        RichText text = inArial(QStringLiteral("Wildflower honey from the north meadows, "), 9);
        text.append(inArial(QStringLiteral("BATCH\n"), 14));
        text.append(inArial(QStringLiteral("Best before e\u0301te\u0301 \U0001F36F 2027 — "
                                           "keep cool and dry, away from sunlight; "
                                           "Supercalifragilisticexpialidocious"),
                            6));
        text.append(inArial(QStringLiteral("\n\nNo. 0042"), 11));
        const double width = 90.0;
        const auto oneAtATime = [&](RichText kept, double height) {
            while (!kept.isEmpty() && neededTextHeight(kept, arial(4), width) > height)
                kept.deleteLastCharacter();
            return kept;
        };
        const double full = neededTextHeight(text, arial(4), width);
        QVERIFY(full > lines(6, 9));
        for (double height = 0.0; height <= full + 1.0; height += 2.5) {
            const RichText trimmed = trimmedToLabel(text, arial(4), width, height);
            QCOMPARE(trimmed, oneAtATime(text, height));
        }
    }
};

QTEST_MAIN(TestLabelLimits)
#include "tst_labellimits.moc"
