#include "core/document/richtext/richtext.h"
#include "core/document/richtext/richtextdocument.h"

#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <malloc.h>

using namespace lomir;

namespace {

TextAttributes boldAttributes()
{
    TextAttributes attributes;
    attributes.font = FontSpec{QStringLiteral("Liberation Sans"),
                               QStringLiteral("LiberationSans-Bold"), 12.0, true, false};
    return attributes;
}

TextAttributes coloredAttributes()
{
    TextAttributes attributes;
    attributes.foreground = Rgba{200, 10, 20, 255};
    return attributes;
}

// Several runs with every attribute the label can carry, over several paragraphs.
RichText sampleText()
{
    ParagraphStyle centered;
    centered.alignment = TextAlignment::Center;
    centered.lineSpacing = 3.5;
    centered.paragraphSpacing = 6;

    TextAttributes title = boldAttributes();
    title.paragraph = centered;
    title.underline = LineStyle::Double;

    TextAttributes body;
    body.font = FontSpec{QStringLiteral("Liberation Serif"),
                         QStringLiteral("LiberationSerif-Italic"), 9.5, false, true};
    body.foreground = Rgba{0, 0, 255, 128};
    body.background = Rgba{255, 255, 0, 255};
    body.strikethrough = LineStyle::Single;
    ParagraphStyle right;
    right.alignment = TextAlignment::Right;
    right.headIndent = 4;
    right.firstLineHeadIndent = 8;
    body.paragraph = right;

    TextAttributes plainJustified;
    ParagraphStyle justified;
    justified.alignment = TextAlignment::Justified;
    justified.lineHeightMultiple = 1.5;
    plainJustified.paragraph = justified;

    RichText text(QStringLiteral("Batch No. "), title);
    text.append(QStringLiteral("#\u200D#\u200D\n"), title);
    text.append(QStringLiteral("Jam 🍓 é\n"), body);
    text.append(QStringLiteral("\n"), plainJustified);
    text.append(QStringLiteral("last"), plainJustified);
    return text;
}

// Heap bytes handed out and not yet given back, by malloc and by mmap.
std::size_t heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// Whether runs() can be asked of a text of this kind (an lvalue, or a temporary).
template <typename Text>
concept HandsOutRuns = requires(Text&& text)
{
    std::forward<Text>(text).runs();
};

} // namespace

class RichTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyTextHasNoRuns()
    {
        const RichText text;
        QCOMPARE(text.length(), 0);
        QVERIFY(text.runs().empty());
        QCOMPARE(text, RichText(QString(), boldAttributes()));
    }

    void lengthCountsUtf16Units()
    {
        const RichText text(QStringLiteral("a🍓"));
        QCOMPARE(text.length(), 3);
    }

    void runsAreCanonical()
    {
        RichText built(QStringLiteral("ab"), boldAttributes());
        built.append(QStringLiteral("cd"), boldAttributes());
        QCOMPARE(built.runs().size(), std::size_t(1));
        QCOMPARE(built, RichText(QStringLiteral("abcd"), boldAttributes()));
    }

    void copiesAreIndependent()
    {
        const RichText original(QStringLiteral("label"), boldAttributes());
        RichText copy = original;
        copy.replace(0, 1, QStringLiteral("L"));
        copy.setAttributes(1, 2, coloredAttributes());
        QCOMPARE(original.string(), QStringLiteral("label"));
        QCOMPARE(original.runs().size(), std::size_t(1));
        QVERIFY(copy != original);
    }

    void replacementTakesAttributesOfFirstReplacedCharacter()
    {
        RichText text(QStringLiteral("No. "), boldAttributes());
        text.append(QStringLiteral("##"), coloredAttributes());
        text.append(QStringLiteral("!"), TextAttributes{});
        text.replace(4, 3, QStringLiteral("0042"));
        QCOMPARE(text.string(), QStringLiteral("No. 0042"));
        const auto runs = text.runs();
        QCOMPARE(runs.size(), std::size_t(2));
        QCOMPARE(runs[1], (AttributeRun{4, 4, coloredAttributes()}));
    }

    void insertionTakesAttributesOfPreviousCharacter()
    {
        RichText text(QStringLiteral("ab"), boldAttributes());
        text.append(QStringLiteral("cd"), coloredAttributes());
        text.replace(2, 0, QStringLiteral("X"));
        QCOMPARE(text.attributesAt(2), boldAttributes());
        text.replace(0, 0, QStringLiteral("Y"));
        QCOMPARE(text.attributesAt(0), boldAttributes());
        RichText empty;
        empty.replace(0, 0, QStringLiteral("new"));
        QCOMPARE(empty.attributesAt(0), TextAttributes{});
    }

    void setAttributesReplacesAllOthers()
    {
        RichText text(QStringLiteral("abcdef"), boldAttributes());
        text.setAttributes(2, 2, coloredAttributes());
        const auto runs = text.runs();
        QCOMPARE(runs.size(), std::size_t(3));
        QCOMPARE(runs[0], (AttributeRun{0, 2, boldAttributes()}));
        QCOMPARE(runs[1], (AttributeRun{2, 2, coloredAttributes()}));
        QCOMPARE(runs[2], (AttributeRun{4, 2, boldAttributes()}));
        QVERIFY(!runs[1].attributes.font);
    }

    void runsOverRangeAreClipped()
    {
        RichText text(QStringLiteral("aaa"), boldAttributes());
        text.append(QStringLiteral("bbb"), coloredAttributes());
        text.append(QStringLiteral("ccc"), TextAttributes{});
        const auto runs = text.runs(2, 5);
        QCOMPARE(runs.size(), std::size_t(3));
        QCOMPARE(runs[0], (AttributeRun{2, 1, boldAttributes()}));
        QCOMPARE(runs[1], (AttributeRun{3, 3, coloredAttributes()}));
        QCOMPARE(runs[2], (AttributeRun{6, 1, TextAttributes{}}));
        QVERIFY(text.runs(9, 0).empty());
    }

    void runAttributesAreTheTextsOwn()
    {
        // A run hands out the text's own attributes, not a copy that dies with the
        // expression: a reference taken from it stays good while the text lives.
        const RichText text = sampleText();
        const TextAttributes& first = text.runs().front().attributes;
        QCOMPARE(&first, &text.attributesAt(0));
        const auto& last = text.runs().back();
        QCOMPARE(&last.attributes, &text.attributesAt(text.length() - 1));
        for (const auto& run : text.runs())
            QCOMPARE(&run.attributes, &text.attributesAt(run.location));
        for (const auto& run : text.runs(3, 20))
            QCOMPARE(&run.attributes, &text.attributesAt(run.location));
        // The runs of a temporary text would outlive it: asking for them does not compile.
        static_assert(HandsOutRuns<const RichText&>);
        static_assert(!HandsOutRuns<RichText>);
    }

    void manyRunsTakeLittleMemory()
    {
        // A run is a length and the index of its attribute set; the few distinct sets are
        // stored once. 100000 runs alternating between two sets, one character each.
        constexpr int runs = 100000;
        const TextAttributes bold = boldAttributes();
        const TextAttributes colored = coloredAttributes();
        const std::size_t before = heapInUse();
        RichText text;
        for (int run = 0; run < runs; ++run)
            text.append(QString(QChar(u'a' + run % 26)), run % 2 == 0 ? bold : colored);
        const std::size_t used = heapInUse() - before;
        QCOMPARE(text.runs().size(), std::size_t(runs));
        // Two bytes a character and eight a run, each at most doubled by growth.
        const std::size_t bound = std::size_t(runs) * (4 + 16) + 64 * 1024;
        QVERIFY2(used <= bound, qPrintable(QStringLiteral("%1 bytes for %2 runs, more than %3")
                                               .arg(used)
                                               .arg(runs)
                                               .arg(bound)));
    }

    void midKeepsAttributes()
    {
        RichText text(QStringLiteral("aaa"), boldAttributes());
        text.append(QStringLiteral("bbb"), coloredAttributes());
        RichText expected(QStringLiteral("ab"), boldAttributes());
        expected.setAttributes(1, 1, coloredAttributes());
        QCOMPARE(text.mid(2, 2), expected);
    }

    void modifyAttributesSplitsRuns()
    {
        RichText text(QStringLiteral("abcdef"), boldAttributes());
        text.modifyAttributes(
            1, 3, [](TextAttributes& attributes) { attributes.underline = LineStyle::Single; });
        const auto runs = text.runs();
        QCOMPARE(runs.size(), std::size_t(3));
        QCOMPARE(runs[1].location, 1);
        QCOMPARE(runs[1].length, 3);
        QCOMPARE(runs[1].attributes.underline, LineStyle::Single);
        QCOMPARE(runs[1].attributes.font, boldAttributes().font);
    }

    void modifyingEveryRunMergesSetsThatBecomeEqual()
    {
        // Changed over the whole text, the sets change where they are; two that become
        // equal become one, and so do their runs.
        TextAttributes underlined = boldAttributes();
        underlined.underline = LineStyle::Single;
        RichText text(QStringLiteral("ab"), boldAttributes());
        text.append(QStringLiteral("cd"), underlined);
        text.append(QStringLiteral("ef"), coloredAttributes());
        text.modifyAttributes(0, text.length(), [](TextAttributes& attributes) {
            attributes.underline = LineStyle::None;
        });
        RichText expected(QStringLiteral("abcd"), boldAttributes());
        expected.append(QStringLiteral("ef"), coloredAttributes());
        QCOMPARE(text, expected);
        QCOMPARE(text.runs().size(), std::size_t(2));
        // Changed over part of it, the same.
        text.append(QStringLiteral("gh"), underlined);
        text.modifyAttributes(4, 4, [](TextAttributes& attributes) {
            attributes.foreground.reset();
            attributes.underline = LineStyle::None;
        });
        RichText partly(QStringLiteral("abcd"), boldAttributes());
        partly.append(QStringLiteral("ef"), TextAttributes{});
        partly.append(QStringLiteral("gh"), boldAttributes());
        QCOMPARE(text, partly);
    }

    void deleteLastCharacter_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("ascii") << QStringLiteral("abc") << QStringLiteral("ab");
        QTest::newRow("placeholder unit")
            << QStringLiteral("No #\u200D#\u200D") << QStringLiteral("No #\u200D");
        QTest::newRow("surrogate pair") << QStringLiteral("a🍓") << QStringLiteral("a");
        QTest::newRow("combining mark") << QStringLiteral("cafe\u0301") << QStringLiteral("caf");
        QTest::newRow("emoji with modifier") << QStringLiteral("x👍🏽") << QStringLiteral("x");
        QTest::newRow("flag") << QStringLiteral("y🇳🇴") << QStringLiteral("y");
        QTest::newRow("family zwj sequence")
            << QStringLiteral("z👨‍👩‍👧") << QStringLiteral("z");
        QTest::newRow("single character") << QStringLiteral("q") << QString();
    }

    void deleteLastCharacter()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        RichText rich(text, boldAttributes());
        QVERIFY(rich.deleteLastCharacter());
        QCOMPARE(rich.string(), expected);
        QCOMPARE(rich.runs().size(), expected.isEmpty() ? std::size_t(0) : std::size_t(1));
    }

    void deleteLastCharacterOfEmptyText()
    {
        RichText empty;
        QVERIFY(!empty.deleteLastCharacter());
    }

    void colorHex() { QCOMPARE((Rgba{255, 0, 16, 128}.toHex()), QStringLiteral("#ff001080")); }

    void documentRoundTrip_data()
    {
        QTest::addColumn<RichText>("text");
        QTest::newRow("empty") << RichText();
        QTest::newRow("no attributes") << RichText(QStringLiteral("plain"));
        QTest::newRow("one paragraph") << RichText(QStringLiteral("Jar"), boldAttributes());
        QTest::newRow("trailing line feed") << RichText(QStringLiteral("abc\n"), boldAttributes());
        QTest::newRow("only line feeds") << RichText(QStringLiteral("\n\n"), coloredAttributes());
        QTest::newRow("several runs and paragraphs") << sampleText();
    }

    void documentRoundTrip()
    {
        QFETCH(RichText, text);
        QTextDocument document;
        setRichText(document, text);
        QCOMPARE(document.toPlainText(), text.string());
        QCOMPARE(richTextFromDocument(document), text);
    }

    void documentShowsFormatting()
    {
        QTextDocument document;
        setRichText(document, sampleText());
        const QTextBlock first = document.begin();
        QCOMPARE(first.blockFormat().alignment() & Qt::AlignHorizontal_Mask, Qt::AlignHCenter);
        const QTextCharFormat titleFormat = first.begin().fragment().charFormat();
        QCOMPARE(titleFormat.fontWeight(), int(QFont::Bold));
        QVERIFY(titleFormat.fontUnderline());
        const QTextBlock second = first.next();
        const QTextCharFormat bodyFormat = second.begin().fragment().charFormat();
        QVERIFY(bodyFormat.fontItalic());
        QVERIFY(bodyFormat.fontStrikeOut());
        QCOMPARE(bodyFormat.fontPointSize(), 9.5);
        QCOMPARE(bodyFormat.foreground().color(), QColor(0, 0, 255, 128));
        QCOMPARE(bodyFormat.background().color(), QColor(255, 255, 0));
    }

    void editingInDocumentIsReadBack()
    {
        QTextDocument document;
        setRichText(document, RichText(QStringLiteral("label"), boldAttributes()));
        QTextCursor cursor(&document);
        cursor.setPosition(0);
        cursor.setPosition(2, QTextCursor::KeepAnchor);
        QTextCharFormat italic;
        italic.setFontItalic(true);
        italic.setFontWeight(QFont::Normal);
        cursor.mergeCharFormat(italic);
        QTextBlockFormat right;
        right.setAlignment(Qt::AlignRight | Qt::AlignAbsolute);
        cursor.mergeBlockFormat(right);

        const RichText read = richTextFromDocument(document);
        const auto runs = read.runs();
        QCOMPARE(runs.size(), std::size_t(2));
        QVERIFY(runs[0].attributes.font->italic);
        QVERIFY(!runs[0].attributes.font->bold);
        // The PostScript name belonged to the bold face; it is not carried to another.
        QVERIFY(runs[0].attributes.font->postScriptName.isEmpty());
        QCOMPARE(runs[1].attributes.font->postScriptName, QStringLiteral("LiberationSans-Bold"));
        QCOMPARE(runs[0].attributes.paragraph->alignment, TextAlignment::Right);
    }
};

QTEST_MAIN(RichTextTest)
#include "tst_richtext.moc"
