#include "core/document/richtext/fontnames.h"
#include "core/document/rtf/rtf.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

using namespace lomir;
using namespace Qt::StringLiterals;

namespace {

QString fixturesDirectory()
{
    return QStringLiteral(LOMIR_SHARED_DIR "/fixtures/rtf");
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

// The expected text of a long fixture, kept beside the tests (see tests/data/rtf/README.md).
QString expectedText(const QString& fixture)
{
    QString base = fixture;
    base.chop(4); // ".rtf"
    const QByteArray bytes =
        readFile(QStringLiteral(LOMIR_TEST_DATA_DIR "/rtf/") + base + QStringLiteral(".txt"));
    return QString::fromUtf8(bytes);
}

// A face as the reader makes it from a Cocoa font table: the PostScript name decides
// the family, and the bold and italic flags are those the file sets with it.
FontSpec face(const char* postScriptName, double size)
{
    return fontFromPostScriptName(QLatin1String(postScriptName), size);
}

TextAttributes withFont(const FontSpec& font)
{
    TextAttributes attributes;
    attributes.font = font;
    return attributes;
}

RichText readOrFail(const QByteArray& rtf)
{
    const Result<RichText> text = readRtf(rtf);
    if (!text) {
        qWarning("readRtf failed: %s", qPrintable(text.error().message));
        return RichText(QStringLiteral("<read failed>"));
    }
    return text.value();
}

// The attributes of the occurrence-th appearance of needle, which must lie in one run.
struct Found
{
    int position = -1;
    TextAttributes attributes;
    bool oneRun = false;
};

Found find(const RichText& text, const QString& needle, int occurrence = 0)
{
    Found found;
    qsizetype from = 0;
    for (int i = 0; i <= occurrence; ++i) {
        found.position = int(text.string().indexOf(needle, from));
        if (found.position < 0)
            return found;
        from = found.position + 1;
    }
    const auto runs = text.runs(found.position, int(needle.size()));
    found.oneRun = runs.size() == 1;
    found.attributes = runs.front().attributes;
    return found;
}

bool isSevenBitAscii(const QByteArray& bytes)
{
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

TextAlignment alignmentOf(const TextAttributes& attributes)
{
    return attributes.paragraph ? attributes.paragraph->alignment : TextAlignment::Natural;
}

} // namespace

class RtfTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fixturesReadWithTheirWholeText_data();
    void fixturesReadWithTheirWholeText();
    void textEditItalicsMixed();
    void textEditUnicodeCredits();
    void textEditSkimCredits();
    void textEditShiftJis();
    void textEditUnderlineAndAlphaColor();
    void textEditGenericRgbAndBackground();
    void textEditSequelAce();
    void word2002();
    void openOfficeHelloWorld();
    void libreOfficeFormatting();
    void fixturesRoundTrip_data();
    void fixturesRoundTrip();

    void writesCocoaShape();
    void writesFontTableWithPostScriptNames();
    void writesSizesColorsAndStyles();
    void writesEscapesAsSevenBitAscii();
    void writesParagraphStyles();
    void writesIndentsWithinTheReadersRange_data();
    void writesIndentsWithinTheReadersRange();

    void roundTripIsLossless_data();
    void roundTripIsLossless();
    void absentAttributesReadBackAsDefaults();

    void notRtf_data();
    void notRtf();
    void acceptsWhiteSpaceAndByteOrderMarkBeforeRtf();

    void codePages_data();
    void codePages();
    void fontCharsetDecidesHexBytes_data();
    void fontCharsetDecidesHexBytes();
    void unicodeEscapesAndSkipCounts_data();
    void unicodeEscapesAndSkipCounts();
    void specialCharactersAndBreaks_data();
    void specialCharactersAndBreaks();
    void skipsDestinationsThatShowNothing_data();
    void skipsDestinationsThatShowNothing();
    void characterFormatting();
    void paragraphFormatting();
    void indentsAtTheLimitsRoundTrip_data();
    void indentsAtTheLimitsRoundTrip();
    void colorTables();

    void hostileInputs_data();
    void hostileInputs();
    void tooDeepNestingIsMalformed();
    void deepButReasonableNestingReads();
    void mutatedFixturesNeverCrashAndRoundTrip();
    void manyRunsReadQuickly();
};

// ---------------------------------------------------------------------------------------
// Fixtures

void RtfTest::fixturesReadWithTheirWholeText_data()
{
    QTest::addColumn<QString>("fixture");
    QTest::addColumn<QString>("expected");

    // Short files: the text established by reading the RTF. The space that ends a
    // control word is not text; "\" at a line end and \par are paragraph breaks.
    QTest::newRow("TextEdit 10.2 italics") //
        << u"textedit-cocoartf102-rtfpipe-italics-mixed.rtf"_s
        << u"Normal text\n\nbold normal\n\nbold bold&italics bold normal\n\n"
           u"bold&underlined&italics bold-off underlined-off bold&underlined&italics"_s;
    // \uc0\u268 is Č, \'9a is š in Windows-1252; the link field keeps its result.
    QTest::newRow("TextEdit 10.12 unicode")
        << u"textedit-cocoartf1504-stts-credits-unicode.rtf"_s
        << u"stts is an open-source project\nhttps://github.com/inket/stts\n\n"
           u"Activity glyph (app icon)\nCreated by Gregor \u010Cre\u0161nar from the Noun Project"_s;
    QTest::newRow("TextEdit 15") //
        << u"textedit-cocoartf2821-sequelace-credits.rtf"_s
        << u"Current Developers\n\nHarvey Lewis\nEuan Williams\n"_s;
    // \'85 is the ellipsis in Windows-1252; the file ends with two \par.
    QTest::newRow("Word 2002") << u"word2002-rtfpipe-parsertest1.rtf"_s
                               << u"Hello world in {RTF}\u2026\n\n"_s;
    QTest::newRow("OpenOffice") << u"openoffice-starwriter-rtfpipe-hello-world.rtf"_s
                                << u"Hello world.\n"_s;
    // \line is a line separator; \u233\'e9 is é with its fallback skipped, \u8364\'80
    // the euro sign, \uc0 \u55357\uc1 \u56832\'3f the emoji U+1F600. Every paragraph,
    // the last included, ends in \par.
    QTest::newRow("LibreOffice") << u"libreoffice-7.4.7-generated-formatting.rtf"_s
                                 << u"Plain, bold, italic, underline, strike and red text.\u2028"
                                    u"Second line (line break) with caf\u00E9 \u20AC \U0001F600.\n"
                                    u"Centered 18pt paragraph\nRight aligned with highlight\n"_s;

    // Long files: the expected texts in tests/data/rtf.
    for (const QString& fixture : {u"textedit-cocoartf1671-pine-credits-underline.rtf"_s,
                                   u"textedit-cocoartf1671-skim-en-credits.rtf"_s,
                                   u"textedit-cocoartf1671-skim-ja-credits-shiftjis.rtf"_s,
                                   u"textedit-cocoartf2513-skim-skimnotes.rtf"_s}) {
        QTest::newRow(qPrintable(fixture)) << fixture << expectedText(fixture);
    }
}

void RtfTest::fixturesReadWithTheirWholeText()
{
    QFETCH(QString, fixture);
    QFETCH(QString, expected);
    if (!QDir(fixturesDirectory()).exists())
        QSKIP("The shared fixtures folder (LOMIR_SHARED_DIR/fixtures/rtf) is not there.");
    QVERIFY2(!expected.isEmpty(), "the expected text is missing");

    const QByteArray rtf = readFile(fixturesDirectory() + u'/' + fixture);
    QVERIFY(!rtf.isEmpty());
    const Result<RichText> text = readRtf(rtf);
    QVERIFY2(text.ok(), qPrintable(text.ok() ? QString() : text.error().message));
    QCOMPARE(text->string(), expected);
}

#define READ_FIXTURE(name)                                                                         \
    if (!QDir(fixturesDirectory()).exists())                                                       \
        QSKIP("The shared fixtures folder (LOMIR_SHARED_DIR/fixtures/rtf) is not there.");         \
    const RichText text = readOrFail(readFile(fixturesDirectory() + QStringLiteral("/" name)))

void RtfTest::textEditItalicsMixed()
{
    READ_FIXTURE("textedit-cocoartf102-rtfpipe-italics-mixed.rtf");

    const Found normal = find(text, u"Normal text"_s);
    QVERIFY(normal.oneRun);
    QCOMPARE(normal.attributes.font->postScriptName, u"Helvetica"_s);
    QCOMPARE(normal.attributes.font->family, u"Helvetica"_s);
    QCOMPARE(normal.attributes.font->pointSize, 12.0);
    QVERIFY(!normal.attributes.font->bold);
    QCOMPARE(normal.attributes.underline, LineStyle::None);
    // \ql\qnatural, as Mac OS X 10.2 wrote it, is natural alignment.
    QCOMPARE(alignmentOf(normal.attributes), TextAlignment::Natural);

    const Found bold = find(text, u"bold"_s);
    QCOMPARE(bold.position, 13);
    QVERIFY(bold.oneRun);
    QCOMPARE(bold.attributes.font->postScriptName, u"Helvetica-Bold"_s);
    QVERIFY(bold.attributes.font->bold);
    QVERIFY(!bold.attributes.font->italic);
    QVERIFY(!find(text, u" normal"_s).attributes.font->bold);

    const Found boldItalic = find(text, u"bold&italics"_s);
    QVERIFY(boldItalic.oneRun);
    QCOMPARE(boldItalic.attributes.font->postScriptName, u"Helvetica-BoldOblique"_s);
    QVERIFY(boldItalic.attributes.font->bold);
    QVERIFY(boldItalic.attributes.font->italic);
    QCOMPARE(boldItalic.attributes.underline, LineStyle::None);

    const Found all = find(text, u"bold&underlined&italics "_s);
    QVERIFY(all.oneRun);
    QCOMPARE(all.attributes.underline, LineStyle::Single);
    QVERIFY(all.attributes.font->bold && all.attributes.font->italic);

    const Found boldOff = find(text, u"bold-off"_s);
    QVERIFY(boldOff.oneRun);
    QCOMPARE(boldOff.attributes.font->postScriptName, u"Helvetica-Oblique"_s);
    QVERIFY(!boldOff.attributes.font->bold);
    QVERIFY(boldOff.attributes.font->italic);
    QCOMPARE(boldOff.attributes.underline, LineStyle::Single);

    const Found underlineOff = find(text, u"underlined-off"_s);
    QVERIFY(underlineOff.oneRun);
    QCOMPARE(underlineOff.attributes.underline, LineStyle::None);
    QVERIFY(underlineOff.attributes.font->bold);

    const Found last = find(text, u" bold&underlined&italics"_s, 0);
    QCOMPARE(last.position, text.length() - 24);
    QCOMPARE(last.attributes.underline, LineStyle::Single);
}

void RtfTest::textEditUnicodeCredits()
{
    READ_FIXTURE("textedit-cocoartf1504-stts-credits-unicode.rtf");

    const Found stts = find(text, u"stts"_s);
    QCOMPARE(stts.position, 0);
    QVERIFY(stts.oneRun);
    QVERIFY(stts.attributes.font->bold);
    QCOMPARE(stts.attributes.font->pointSize, 11.0);
    QCOMPARE(stts.attributes.foreground, std::nullopt); // \cf0
    QVERIFY(!find(text, u" is an open-source project"_s).attributes.font->bold);
    QVERIFY(find(text, u"Activity"_s).attributes.font->bold);
    QVERIFY(!find(text, u" glyph (app icon)"_s).attributes.font->bold);
    const Found name = find(text, u"Gregor \u010Cre\u0161nar"_s);
    QVERIFY(name.oneRun);
    QVERIFY(!name.attributes.font->bold);

    // Every paragraph is centred.
    for (int i = 0; i < text.length(); ++i)
        QCOMPARE(alignmentOf(text.attributesAt(i)), TextAlignment::Center);
}

void RtfTest::textEditSkimCredits()
{
    READ_FIXTURE("textedit-cocoartf1671-skim-en-credits.rtf");

    const Found website = find(text, u"Website"_s);
    QCOMPARE(website.position, 0);
    QVERIFY(website.oneRun);
    QCOMPARE(website.attributes.font->postScriptName, u"Helvetica-Bold"_s);
    QVERIFY(website.attributes.font->bold);
    // \cf2 is \cssrgb\c0\c0\c0\cname textColor.
    QCOMPARE(website.attributes.foreground, (Rgba{0, 0, 0, 255}));
    QCOMPARE(alignmentOf(website.attributes), TextAlignment::Center);

    const Found link = find(text, u"https://skim-app.sourceforge.io"_s);
    QVERIFY(link.oneRun);
    QCOMPARE(link.attributes.font->postScriptName, u"Helvetica"_s);
    QVERIFY(!link.attributes.font->bold);

    QVERIFY(find(text, u"Design and Engineering"_s).attributes.font->bold);
    const Found translator = find(text, u"Corentin Cras-M\u00E9neur (French)"_s);
    QVERIFY(translator.oneRun);
    QVERIFY(!translator.attributes.font->bold);
    QVERIFY(text.string().contains(u"J\u00E9r\u00F4me Laurens for SyncTeX"_s));
    QCOMPARE(alignmentOf(translator.attributes), TextAlignment::Center);
    // The closing paragraph break is in ArialMT (\f2).
    QCOMPARE(text.attributesAt(text.length() - 1).font->postScriptName, u"ArialMT"_s);
}

void RtfTest::textEditShiftJis()
{
    READ_FIXTURE("textedit-cocoartf1671-skim-ja-credits-shiftjis.rtf");

    const Found heading =
        find(text, u"\u30C7\u30B6\u30A4\u30F3\u3068\u30D7\u30ED\u30B0\u30E9\u30DF\u30F3\u30B0"_s);
    QVERIFY(heading.position > 0);
    QVERIFY(heading.oneRun);
    QCOMPARE(heading.attributes.font->postScriptName, u"HiraKakuProN-W6"_s);
    QVERIFY(heading.attributes.font->bold);

    const Found italian = find(text, u"\u30A4\u30BF\u30EA\u30A2\u8A9E"_s); // イタリア語
    QVERIFY(italian.oneRun);
    QCOMPARE(italian.attributes.font->postScriptName, u"HiraKakuProN-W3"_s);
    QVERIFY(!italian.attributes.font->bold);
    QVERIFY(text.string().contains(u"Mauro Mazzieri (\u30A4\u30BF\u30EA\u30A2\u8A9E)\n"_s));
    // Windows-1252 bytes in the Latin fonts of the same file.
    QVERIFY(
        text.string().contains(u"Corentin Cras-M\u00E9neur (\u30D5\u30E9\u30F3\u30B9\u8A9E)"_s));
    QCOMPARE(find(text, u"Corentin"_s).attributes.font->postScriptName, u"Helvetica"_s);
}

void RtfTest::textEditUnderlineAndAlphaColor()
{
    READ_FIXTURE("textedit-cocoartf1671-pine-credits-underline.rtf");

    // labelColor: \cssrgb\c0\c0\c0\c84706, black at 84.7 % opacity.
    const Rgba labelColor{0, 0, 0, 216};
    const Found first = find(text, u"Icons8"_s);
    QCOMPARE(first.position, 1);
    QVERIFY(first.oneRun);
    QCOMPARE(first.attributes.font->postScriptName, u"HelveticaNeue-Bold"_s);
    QVERIFY(first.attributes.font->bold);
    QCOMPARE(first.attributes.underline, LineStyle::None);
    QCOMPARE(first.attributes.foreground, labelColor);

    QVERIFY(!find(text, u"Website: "_s).attributes.font->bold);
    const Found linked = find(text, u"Icons8"_s, 1);
    QCOMPARE(linked.position, 18);
    QVERIFY(linked.oneRun);
    QCOMPARE(linked.attributes.underline, LineStyle::Single); // \ul \ulc3
    QCOMPARE(linked.attributes.font->postScriptName, u"ArialMT"_s);
    QCOMPARE(linked.attributes.foreground, labelColor);
    QCOMPARE(text.attributesAt(linked.position + 6).underline, LineStyle::None); // \ulnone
    QCOMPARE(alignmentOf(linked.attributes), TextAlignment::Natural);
}

void RtfTest::textEditGenericRgbAndBackground()
{
    READ_FIXTURE("textedit-cocoartf2513-skim-skimnotes.rtf");

    const Found title = find(text, u"SkimNotes Framework"_s);
    QCOMPARE(title.position, 0);
    QVERIFY(title.oneRun);
    QCOMPARE(title.attributes.font->pointSize, 18.0);
    QVERIFY(title.attributes.font->bold);

    const Found command = find(text, u"skimnotes help"_s);
    QVERIFY(command.oneRun);
    QCOMPARE(command.attributes.font->postScriptName, u"Courier"_s);

    // \cf2 is \csgenericrgb\c66667\c5098\c56863.
    const Found keyword = find(text, u"@protocol"_s);
    QVERIFY(keyword.oneRun);
    QCOMPARE(keyword.attributes.font->postScriptName, u"Menlo-Regular"_s);
    QCOMPARE(keyword.attributes.font->pointSize, 11.0);
    QCOMPARE(keyword.attributes.foreground, (Rgba{170, 13, 145, 255}));
    QCOMPARE(find(text, u" SKNAgentListenerProtocol"_s).attributes.foreground, std::nullopt);
    QCOMPARE(find(text, u"NSData"_s).attributes.foreground, (Rgba{92, 38, 153, 255}));
    QCOMPARE(find(text, u"10.5"_s).attributes.foreground, (Rgba{28, 0, 207, 255}));

    // \cf5 \cb6 (black on an explicit white) ... \cf0 \cb1: Cocoa's \cb1 ends the
    // background.
    const Found archs = find(text, u"$(ARCHS_STANDARD_32_64_BIT)"_s);
    QVERIFY(archs.oneRun);
    QCOMPARE(archs.attributes.foreground, (Rgba{0, 0, 0, 255}));
    QCOMPARE(archs.attributes.background, (Rgba{255, 255, 255, 255}));
    const TextAttributes after = text.attributesAt(archs.position + 27);
    QCOMPARE(text.string().at(archs.position + 27), u'\n');
    QCOMPARE(after.background, std::nullopt);
    QCOMPARE(after.foreground, std::nullopt);
}

void RtfTest::textEditSequelAce()
{
    READ_FIXTURE("textedit-cocoartf2821-sequelace-credits.rtf");

    const Found heading = find(text, u"Current Developers"_s);
    QVERIFY(heading.oneRun);
    QCOMPARE(heading.attributes.font->postScriptName, u"LucidaGrande-Bold"_s);
    QCOMPARE(heading.attributes.font->pointSize, 15.0);
    QVERIFY(heading.attributes.font->bold);
    // \csgenericrgb\c9804\c9804\c9804
    QCOMPARE(heading.attributes.foreground, (Rgba{25, 25, 25, 255}));
    QCOMPARE(alignmentOf(heading.attributes), TextAlignment::Center);

    const Found name = find(text, u"Harvey Lewis"_s);
    QVERIFY(name.oneRun);
    QCOMPARE(name.attributes.font->postScriptName, u"LucidaGrande"_s);
    QCOMPARE(name.attributes.font->pointSize, 11.0);
    QVERIFY(!name.attributes.font->bold);
    QCOMPARE(name.attributes.foreground, std::nullopt);
    QCOMPARE(alignmentOf(find(text, u"Euan Williams"_s).attributes), TextAlignment::Center);
}

void RtfTest::word2002()
{
    READ_FIXTURE("word2002-rtfpipe-parsertest1.rtf");

    // Word names families, not faces: no PostScript name, bold from \b.
    const Found hello = find(text, u"Hello world"_s);
    QVERIFY(hello.oneRun);
    QCOMPARE(hello.attributes.font->family, u"Times New Roman"_s);
    QCOMPARE(hello.attributes.font->postScriptName, QString());
    QCOMPARE(hello.attributes.font->pointSize, 16.0);
    QVERIFY(!hello.attributes.font->bold);
    QCOMPARE(alignmentOf(hello.attributes), TextAlignment::Left);

    QCOMPARE(find(text, u" in "_s).attributes.font->pointSize, 12.0);

    const Found rtf = find(text, u"{RTF}"_s);
    QVERIFY(rtf.oneRun);
    QCOMPARE(rtf.attributes.font->family, u"Courier New"_s);
    QCOMPARE(rtf.attributes.font->pointSize, 16.0);
    QVERIFY(rtf.attributes.font->bold);
    QVERIFY(!find(text, u"\u2026"_s).attributes.font->bold);
}

void RtfTest::openOfficeHelloWorld()
{
    READ_FIXTURE("openoffice-starwriter-rtfpipe-hello-world.rtf");
    const Found hello = find(text, u"Hello world."_s);
    QVERIFY(hello.oneRun);
    QCOMPARE(hello.attributes.font->family, u"Nimbus Roman No9 L"_s);
    QCOMPARE(hello.attributes.font->pointSize, 12.0);
    QCOMPARE(hello.attributes.foreground, std::nullopt);
    QCOMPARE(hello.attributes.paragraph, std::nullopt);
}

void RtfTest::libreOfficeFormatting()
{
    READ_FIXTURE("libreoffice-7.4.7-generated-formatting.rtf");

    const Found plain = find(text, u"Plain, "_s);
    QCOMPARE(plain.position, 0);
    QVERIFY(plain.oneRun);
    QCOMPARE(plain.attributes.font->family, u"Liberation Sans"_s);
    QCOMPARE(plain.attributes.font->pointSize, 12.0);
    QVERIFY(!plain.attributes.font->bold);
    QCOMPARE(alignmentOf(plain.attributes), TextAlignment::Left);
    // \sl276\slmult1\sa140
    QCOMPARE(plain.attributes.paragraph->lineHeightMultiple, 1.15);
    QCOMPARE(plain.attributes.paragraph->paragraphSpacing, 7.0);

    const Found bold = find(text, u"bold"_s);
    QCOMPARE(bold.position, 7);
    QVERIFY(bold.oneRun);
    QVERIFY(bold.attributes.font->bold);
    QVERIFY(!text.attributesAt(bold.position + 4).font->bold);

    const Found italic = find(text, u"italic"_s);
    QCOMPARE(italic.position, 13);
    QVERIFY(italic.oneRun);
    QVERIFY(italic.attributes.font->italic);
    QVERIFY(!italic.attributes.font->bold);

    const Found underline = find(text, u"underline"_s);
    QCOMPARE(underline.position, 21);
    QVERIFY(underline.oneRun);
    QCOMPARE(underline.attributes.underline, LineStyle::Single);
    QCOMPARE(text.attributesAt(30).underline, LineStyle::None);

    const Found strike = find(text, u"strike"_s);
    QCOMPARE(strike.position, 32);
    QVERIFY(strike.oneRun);
    QCOMPARE(strike.attributes.strikethrough, LineStyle::Single);
    QCOMPARE(text.attributesAt(38).strikethrough, LineStyle::None);

    const Found red = find(text, u"red"_s);
    QCOMPARE(red.position, 43);
    QVERIFY(red.oneRun);
    QCOMPARE(red.attributes.foreground, (Rgba{255, 0, 0, 255}));
    QCOMPARE(text.attributesAt(46).foreground, std::nullopt);

    QCOMPARE(text.string().at(52), QChar(0x2028)); // \line
    const Found emoji = find(text, u"\U0001F600"_s);
    QVERIFY(emoji.oneRun);
    QCOMPARE(emoji.attributes.font->family, u"Liberation Sans"_s);

    const Found centered = find(text, u"Centered 18pt paragraph"_s);
    QVERIFY(centered.oneRun);
    QCOMPARE(centered.attributes.font->family, u"Liberation Serif"_s);
    QCOMPARE(centered.attributes.font->pointSize, 18.0);
    QCOMPARE(alignmentOf(centered.attributes), TextAlignment::Center);

    const Found right = find(text, u"Right aligned with highlight"_s);
    QVERIFY(right.oneRun);
    QCOMPARE(alignmentOf(right.attributes), TextAlignment::Right);
    QCOMPARE(right.attributes.background, (Rgba{255, 255, 0, 255})); // \chcbpat7
    QCOMPARE(text.attributesAt(text.length() - 1).background, std::nullopt);
    QCOMPARE(alignmentOf(text.attributesAt(text.length() - 1)), TextAlignment::Right);
}

void RtfTest::fixturesRoundTrip_data()
{
    QTest::addColumn<QString>("fixture");
    const QStringList fixtures =
        QDir(fixturesDirectory()).entryList({QStringLiteral("*.rtf")}, QDir::Files, QDir::Name);
    for (const QString& fixture : fixtures)
        QTest::newRow(qPrintable(fixture)) << fixture;
    if (fixtures.isEmpty())
        QTest::newRow("no fixtures") << QString();
}

void RtfTest::fixturesRoundTrip()
{
    QFETCH(QString, fixture);
    if (fixture.isEmpty())
        QSKIP("The shared fixtures folder (LOMIR_SHARED_DIR/fixtures/rtf) is not there.");
    const RichText text = readOrFail(readFile(fixturesDirectory() + u'/' + fixture));
    QVERIFY(text.length() > 0);
    const QByteArray written = writeRtf(text);
    QVERIFY(isSevenBitAscii(written));
    const Result<RichText> again = readRtf(written);
    QVERIFY(again.ok());
    QCOMPARE(again->string(), text.string());
    QVERIFY(again.value() == text);
}

// ---------------------------------------------------------------------------------------
// Writer

void RtfTest::writesCocoaShape()
{
    // What the text system writes for "Hello" in Helvetica 12 with no document
    // attributes.
    const QByteArray expected =
        "{\\rtf1\\ansi\\ansicpg1252\\cocoartf2822\n"
        "\\cocoatextscaling0\\cocoaplatform0{\\fonttbl\\f0\\fswiss\\fcharset0 Helvetica;}\n"
        "{\\colortbl;\\red255\\green255\\blue255;}\n"
        "{\\*\\expandedcolortbl;;}\n"
        "\\pard\\tx560\\tx1120\\tx1680\\tx2240\\tx2800\\tx3360\\tx3920\\tx4480\\tx5040\\tx5600"
        "\\tx6160\\tx6720\\pardirnatural\\partightenfactor0\n"
        "\n"
        "\\f0\\fs24 \\cf0 Hello}";
    QCOMPARE(writeRtf(RichText(u"Hello"_s, withFont(face("Helvetica", 12)))), expected);
    // A text without a font is written in the text system's default font.
    QCOMPARE(writeRtf(RichText(u"Hello"_s)), expected);

    // Paragraph breaks are "\" and a line end; the document ends right after the last
    // character.
    const QByteArray twoLines = writeRtf(RichText(u"one\ntwo"_s));
    QVERIFY(twoLines.endsWith("\\f0\\fs24 \\cf0 one\\\ntwo}"));
    QVERIFY(!QString::fromLatin1(twoLines).contains(QRegularExpression(u"\\\\par[^a-z]"_s)));
    QVERIFY(writeRtf(RichText(u"end\n"_s)).endsWith("end\\\n}"));

    const QByteArray empty = writeRtf(RichText());
    QVERIFY(empty.startsWith("{\\rtf1\\ansi\\ansicpg1252\\cocoartf"));
    QVERIFY(empty.endsWith('}'));
    QCOMPARE(readOrFail(empty), RichText());
}

void RtfTest::writesFontTableWithPostScriptNames()
{
    RichText text(u"a"_s, withFont(face("Helvetica", 12)));
    text.append(u"b"_s, withFont(face("Helvetica-Bold", 12)));
    text.append(u"c"_s, withFont(face("Menlo-Regular", 12)));
    text.append(u"d"_s, withFont(face("Times-Roman", 12)));
    text.append(u"e"_s, withFont(face("Helvetica", 12)));
    FontSpec linux{u"Liberation Sans"_s, QString(), 12, false, false};
    text.append(u"f"_s, withFont(linux));

    const QByteArray rtf = writeRtf(text);
    // Numbered in order of first use; faces by PostScript name; a font known only by
    // family is written by family.
    QVERIFY2(rtf.contains("{\\fonttbl\\f0\\fswiss\\fcharset0 Helvetica;"
                          "\\f1\\fswiss\\fcharset0 Helvetica-Bold;"
                          "\\f2\\fnil\\fcharset0 Menlo-Regular;"
                          "\\f3\\froman\\fcharset0 Times-Roman;"
                          "\\f4\\fswiss\\fcharset0 Liberation Sans;}"),
             rtf.constData());
    QVERIFY(rtf.contains("\\f0\\fs24 \\cf0 a\n\\f1\\b b\n\\f2\\b0 c\n\\f3 d\n\\f0 e\n\\f4 f}"));
}

void RtfTest::writesSizesColorsAndStyles()
{
    TextAttributes big = withFont(face("Helvetica", 14.667));
    big.foreground = Rgba{102, 0, 153, 255};
    TextAttributes half = withFont(face("Helvetica", 10.5));
    half.background = Rgba{255, 255, 0, 128};
    half.underline = LineStyle::Double;
    half.strikethrough = LineStyle::Single;
    RichText text(u"big"_s, big);
    text.append(u"half"_s, half);
    text.append(u"plain"_s, withFont(face("Helvetica", 12)));

    const QByteArray rtf = writeRtf(text);
    QVERIFY2(rtf.contains("{\\colortbl;\\red255\\green255\\blue255;\\red102\\green0\\blue153;"
                          "\\red255\\green255\\blue0;}\n"
                          "{\\*\\expandedcolortbl;;\\cssrgb\\c40000\\c0\\c60000;"
                          "\\cssrgb\\c100000\\c100000\\c0\\c50196;}\n"),
             rtf.constData());
    QVERIFY2(rtf.contains("\\f0\\fs29\\fsmilli14667 \\cf2 big\n"
                          "\\fs21 \\cf0 \\cb3 \\uldb \\strike \\strikec0 half\n"
                          "\\fs24 \\cb1 \\ulnone \\strike0\\striked0 plain}"),
             rtf.constData());
}

void RtfTest::writesEscapesAsSevenBitAscii()
{
    const RichText text(u"{\\}caf\u00E9 \u20AC \u010C \U0001F600 \u65E5\tx\u2028y\u00A0"_s);
    const QByteArray rtf = writeRtf(text);
    QVERIFY(isSevenBitAscii(rtf));
    QVERIFY2(rtf.contains("\\cf0 \\{\\\\\\}caf\\'e9 \\'80 \\uc0\\u268  \\u55357 \\u56832  "
                          "\\u26085 \tx\\u8232 y\\'a0}"),
             rtf.constData());
    // \uc0 again after a paragraph break.
    QVERIFY(writeRtf(RichText(u"\u010C\n\u010C"_s)).contains("\\uc0\\u268 \\\n\\uc0\\u268 }"));
}

void RtfTest::writesParagraphStyles()
{
    ParagraphStyle centered;
    centered.alignment = TextAlignment::Center;
    ParagraphStyle spaced;
    spaced.alignment = TextAlignment::Justified;
    spaced.headIndent = 36;
    spaced.firstLineHeadIndent = 18;
    spaced.tailIndent = -9;
    spaced.paragraphSpacingBefore = 6;
    spaced.paragraphSpacing = 12;
    spaced.lineHeightMultiple = 1.5;
    spaced.lineSpacing = 2;

    TextAttributes first = withFont(face("Helvetica", 12));
    first.paragraph = centered;
    TextAttributes second = first;
    second.paragraph = spaced;
    RichText text(u"one\ntwo\n"_s, first);
    text.append(u"three\n"_s, second);
    text.append(u"four"_s, withFont(face("Helvetica", 12)));

    const QByteArray tabs = "\\tx560\\tx1120\\tx1680\\tx2240\\tx2800\\tx3360\\tx3920\\tx4480"
                            "\\tx5040\\tx5600\\tx6160\\tx6720";
    const QByteArray rtf = writeRtf(text);
    // The whole style again only where it changes, before the paragraph's text.
    QVERIFY2(rtf.contains("\\pard" + tabs +
                          "\\pardirnatural\\qc\\partightenfactor0\n\n"
                          "\\f0\\fs24 \\cf0 one\\\ntwo\\\n"
                          "\\pard" +
                          tabs +
                          "\\li720\\fi-360\\ri180\\sb120\\sa240\\sl360\\slmult1\\slleading40"
                          "\\pardirnatural\\qj\\partightenfactor0\nthree\\\n"
                          "\\pard" +
                          tabs + "\\pardirnatural\\partightenfactor0\nfour}"),
             rtf.constData());
}

void RtfTest::writesIndentsWithinTheReadersRange_data()
{
    QTest::addColumn<double>("headIndent");
    QTest::addColumn<double>("firstLineHeadIndent");
    QTest::addColumn<QByteArray>("words");

    // Lengths beyond what RTF holds: the left indent is cut to the limit, and the first
    // line keeps its place relative to it.
    QTest::newRow("left indent beyond the limit")
        << 1e12 << 1e12 + 1 << QByteArray("\\li1000000000\\fi20");
    QTest::newRow("first line beyond the limit")
        << 0.0 << 1e12 << QByteArray("\\li0\\fi1000000000");
    QTest::newRow("both beyond the limit, apart")
        << -1e12 << 1e12 << QByteArray("\\li-1000000000\\fi1000000000");
}

void RtfTest::writesIndentsWithinTheReadersRange()
{
    QFETCH(double, headIndent);
    QFETCH(double, firstLineHeadIndent);
    QFETCH(QByteArray, words);

    ParagraphStyle style;
    style.headIndent = headIndent;
    style.firstLineHeadIndent = firstLineHeadIndent;
    TextAttributes attributes = withFont(face("Helvetica", 12));
    attributes.paragraph = style;
    const QByteArray rtf = writeRtf(RichText(u"x"_s, attributes));
    QVERIFY2(rtf.contains(words + "\\pardirnatural"), rtf.constData());
    // What was written reads back to a style that writes the same words again.
    QCOMPARE(writeRtf(readOrFail(rtf)), rtf);
}

// ---------------------------------------------------------------------------------------
// Round trips

void RtfTest::roundTripIsLossless_data()
{
    QTest::addColumn<RichText>("text");

    {
        RichText text(u"Plain "_s, withFont(face("Helvetica", 12)));
        text.append(u"bold "_s, withFont(face("Helvetica-Bold", 14.5)));
        text.append(u"italic "_s, withFont(face("Times-Italic", 10.25)));
        text.append(u"both "_s, withFont(face("Menlo-BoldItalic", 14.667)));
        text.append(u"neue "_s, withFont(face("HelveticaNeue", 7)));
        text.append(u"hiragino "_s, withFont(face("HiraKakuProN-W6", 20)));
        text.append(u"linux "_s,
                    withFont(FontSpec{u"Liberation Sans"_s, QString(), 9.0, false, false}));
        text.append(u"bold linux"_s,
                    withFont(FontSpec{u"DejaVu Sans Mono"_s, QString(), 11.0, true, true}));
        QTest::newRow("fonts and sizes") << text;
    }
    {
        const auto lines = [](int underline, int strikethrough) {
            TextAttributes attributes = withFont(face("Helvetica", 12));
            attributes.underline = underline;
            attributes.strikethrough = strikethrough;
            return attributes;
        };
        RichText text(u"single "_s, lines(LineStyle::Single, LineStyle::None));
        text.append(u"double "_s, lines(LineStyle::Double, LineStyle::None));
        text.append(u"thick "_s, lines(LineStyle::Thick, LineStyle::None));
        text.append(u"words "_s, lines(LineStyle::Single | LineStyle::ByWord, LineStyle::None));
        text.append(u"dotted "_s,
                    lines(LineStyle::Single | LineStyle::PatternDot, LineStyle::None));
        text.append(u"dashed "_s,
                    lines(LineStyle::Thick | LineStyle::PatternDash, LineStyle::None));
        text.append(u"struck "_s, lines(LineStyle::None, LineStyle::Single));
        text.append(u"twice "_s, lines(LineStyle::None, LineStyle::Double));
        text.append(u"both "_s, lines(LineStyle::Double, LineStyle::Single));
        text.append(u"none"_s, lines(LineStyle::None, LineStyle::None));
        QTest::newRow("underline and strikethrough") << text;
    }
    {
        const auto colored = [](std::optional<Rgba> foreground, std::optional<Rgba> background) {
            TextAttributes attributes = withFont(face("Helvetica", 12));
            attributes.foreground = foreground;
            attributes.background = background;
            return attributes;
        };
        const Rgba white{255, 255, 255, 255};
        RichText text(u"red "_s, colored(Rgba{255, 0, 0, 255}, std::nullopt));
        text.append(u"on yellow "_s, colored(Rgba{1, 2, 3, 255}, Rgba{255, 255, 0, 255}));
        text.append(u"translucent "_s, colored(Rgba{0, 0, 0, 128}, Rgba{10, 200, 30, 1}));
        text.append(u"white text "_s, colored(white, std::nullopt));
        text.append(u"white background "_s, colored(std::nullopt, white));
        text.append(u"black on white"_s, colored(Rgba{0, 0, 0, 255}, white));
        text.append(u" default"_s, colored(std::nullopt, std::nullopt));
        QTest::newRow("colours") << text;
    }
    {
        const auto aligned = [](std::optional<ParagraphStyle> style) {
            TextAttributes attributes = withFont(face("Helvetica", 12));
            attributes.paragraph = style;
            return attributes;
        };
        const auto alignment = [](TextAlignment value) {
            ParagraphStyle style;
            style.alignment = value;
            return style;
        };
        ParagraphStyle spaced;
        spaced.lineSpacing = 2.5;
        spaced.paragraphSpacing = 6;
        spaced.paragraphSpacingBefore = 3;
        spaced.headIndent = 36;
        spaced.firstLineHeadIndent = 18;
        spaced.tailIndent = -12;
        spaced.lineHeightMultiple = 1.15;
        ParagraphStyle centeredSpaced = spaced;
        centeredSpaced.alignment = TextAlignment::Center;
        RichText text(u"left\n"_s, aligned(alignment(TextAlignment::Left)));
        text.append(u"right\n"_s, aligned(alignment(TextAlignment::Right)));
        text.append(u"centre\n"_s, aligned(alignment(TextAlignment::Center)));
        text.append(u"justified\n"_s, aligned(alignment(TextAlignment::Justified)));
        text.append(u"natural\n"_s, aligned(std::nullopt));
        text.append(u"spaced\n"_s, aligned(spaced));
        text.append(u"centred and spaced"_s, aligned(centeredSpaced));
        QTest::newRow("alignment and spacing") << text;
    }
    {
        // Formatting that changes inside a paragraph and across its break.
        TextAttributes bold = withFont(face("Helvetica-Bold", 12));
        ParagraphStyle centered;
        centered.alignment = TextAlignment::Center;
        bold.paragraph = centered;
        TextAttributes plain = withFont(face("Helvetica", 12));
        plain.paragraph = centered;
        RichText text(u"Ti"_s, bold);
        text.append(u"tle\nsub"_s, plain);
        text.append(u"title\n\n"_s, bold);
        text.append(u"body"_s, withFont(face("Helvetica", 12)));
        QTest::newRow("formatting across paragraphs") << text;
    }
    QTest::newRow("emoji beyond the BMP")
        << RichText(u"Label \U0001F600 \U0001F389 \U0001F44D\U0001F3FD \U0001F1EF\U0001F1F5"_s,
                    withFont(face("AppleColorEmoji", 24)));
    QTest::newRow("accents and Windows-1252 symbols")
        << RichText(u"caf\u00E9 na\u00EFve \u00C6r\u00F8 \u20AC \u2013 \u201Cquotes\u201D "
                    u"\u2122 \u0160 \u017E \u0152 \u00FF \u00A0nbsp"_s,
                    withFont(face("Helvetica", 12)));
    QTest::newRow("CJK and other scripts")
        << RichText(u"\u65E5\u672C\u8A9E\u306E\u30E9\u30D9\u30EB \u4E2D\u6587 \uD55C\uAD6D\uC5B4 "
                    u"\u0410\u0431\u0432 \u05E9\u05DC\u05D5\u05DD"_s,
                    withFont(face("HiraKakuProN-W3", 12)));
    QTest::newRow("braces and backslashes") << RichText(
        u"{\\rtf1 not a header} \\par \\u233 ;}{ \\'e9 \\"_s, withFont(face("Helvetica", 12)));
    QTest::newRow("empty") << RichText();
    QTest::newRow("ends in a line feed")
        << RichText(u"one\ntwo\n"_s, withFont(face("Helvetica", 12)));
    QTest::newRow("only line feeds") << RichText(u"\n\n\n"_s, withFont(face("Helvetica", 12)));
    QTest::newRow("tabs, line separators, page breaks")
        << RichText(u"a\tb\u2028c\fd"_s, withFont(face("Helvetica", 12)));
    QTest::newRow("control characters")
        << RichText(u"a"_s + QChar(0) + u"\u0001\u007F\u0085z"_s, withFont(face("Helvetica", 12)));
    QTest::newRow("digits after escapes")
        << RichText(u"\u010C5 \u00E9a1 \U0001F600 9"_s, withFont(face("Helvetica", 12)));
}

void RtfTest::roundTripIsLossless()
{
    QFETCH(RichText, text);
    const QByteArray rtf = writeRtf(text);
    QVERIFY(isSevenBitAscii(rtf));
    const Result<RichText> read = readRtf(rtf);
    QVERIFY2(read.ok(), rtf.constData());
    QCOMPARE(read->string(), text.string());
    QCOMPARE(read->runs().size(), text.runs().size());
    const auto expectedRuns = text.runs();
    const auto readRuns = read->runs();
    for (std::size_t i = 0; i < expectedRuns.size(); ++i) {
        QCOMPARE(readRuns[i].location, expectedRuns[i].location);
        QCOMPARE(readRuns[i].length, expectedRuns[i].length);
        QCOMPARE(readRuns[i].attributes.font, expectedRuns[i].attributes.font);
        QCOMPARE(readRuns[i].attributes.foreground, expectedRuns[i].attributes.foreground);
        QCOMPARE(readRuns[i].attributes.background, expectedRuns[i].attributes.background);
        QCOMPARE(readRuns[i].attributes.underline, expectedRuns[i].attributes.underline);
        QCOMPARE(readRuns[i].attributes.strikethrough, expectedRuns[i].attributes.strikethrough);
        QCOMPARE(readRuns[i].attributes.paragraph, expectedRuns[i].attributes.paragraph);
    }
    QVERIFY(read.value() == text);
}

void RtfTest::absentAttributesReadBackAsDefaults()
{
    // Like the text system, RTF always names a font: text without one is written and
    // read back in Helvetica 12. Absent colours and a default paragraph stay absent.
    TextAttributes defaults;
    defaults.paragraph = ParagraphStyle{};
    RichText text(u"no font"_s);
    text.append(u" default paragraph"_s, defaults);
    const RichText read = readOrFail(writeRtf(text));
    QCOMPARE(read.string(), text.string());
    QCOMPARE(read.runs().size(), std::size_t(1));
    const TextAttributes& attributes = read.attributesAt(0);
    QCOMPARE(attributes.font, std::optional<FontSpec>(face("Helvetica", 12)));
    QCOMPARE(attributes.foreground, std::nullopt);
    QCOMPARE(attributes.background, std::nullopt);
    QCOMPARE(attributes.paragraph, std::nullopt);

    // A face named only by a family without spaces reads back with that name as its
    // PostScript name, the way a Cocoa font table is read.
    const RichText family(u"x"_s, withFont(FontSpec{u"Helvetica"_s, QString(), 12, false, false}));
    QCOMPARE(readOrFail(writeRtf(family)).attributesAt(0).font->postScriptName, u"Helvetica"_s);
}

// ---------------------------------------------------------------------------------------
// Not RTF

void RtfTest::notRtf_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("plain words") << QByteArray("just some words");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("JSON object") << QByteArray(R"({"labelText":"YnBsaXN0","quantity":"10"})");
    QTest::newRow("cut-off header") << QByteArray("{\\rt");
    QTest::newRow("no brace") << QByteArray("\\rtf1\\ansi hello}");
    QTest::newRow("space inside the header") << QByteArray("{ \\rtf1 hello}");
    QTest::newRow("binary") << QByteArray::fromHex("0001fffe89504e470d0a1a0a");
    QTest::newRow("UTF-16 RTF") << QByteArray("{\0\\\0r\0t\0f\0", 10);
}

void RtfTest::notRtf()
{
    QFETCH(QByteArray, bytes);
    const Result<RichText> read = readRtf(bytes);
    QVERIFY(!read.ok());
    QCOMPARE(read.error().code, kRtfNotRtf);
    QCOMPARE(read.error().domain, u"LomirRtfErrorDomain"_s);
    QVERIFY(read.error().message.endsWith(u'.'));
}

void RtfTest::acceptsWhiteSpaceAndByteOrderMarkBeforeRtf()
{
    QCOMPARE(readOrFail("\r\n  {\\rtf1 hi}").string(), u"hi"_s);
    QCOMPARE(readOrFail("\xEF\xBB\xBF{\\rtf1 hi}").string(), u"hi"_s);
    QCOMPARE(readOrFail("{\\rtf hi}").string(), u"hi"_s);
}

// ---------------------------------------------------------------------------------------
// Reading details

void RtfTest::codePages_data()
{
    QTest::addColumn<QByteArray>("rtf");
    QTest::addColumn<QString>("expected");

    QTest::newRow("Windows-1252") << QByteArray(R"({\rtf1\ansi \'e9\'80\'85\'9a\'ff})")
                                  << u"\u00E9\u20AC\u2026\u0161\u00FF"_s;
    QTest::newRow("Windows-1252 undefined byte")
        << QByteArray(R"({\rtf1\ansi \'81})") << u"\u0081"_s;
    QTest::newRow("Mac Roman") << QByteArray(R"({\rtf1\mac \'8e\'a5\'db\'f0})")
                               << u"\u00E9\u2022\u20AC\uF8FF"_s;
    QTest::newRow("ansicpg10000") << QByteArray(R"({\rtf1\ansi\ansicpg10000 \'8e})") << u"\u00E9"_s;
    QTest::newRow("Cyrillic ansicpg1251")
        << QByteArray(R"({\rtf1\ansi\ansicpg1251 \'c0\'e1\'e2})") << u"\u0410\u0431\u0432"_s;
    QTest::newRow("Central European ansicpg1250")
        << QByteArray(R"({\rtf1\ansi\ansicpg1250 \'8a\'9e\'b9})") << u"\u0160\u017E\u0105"_s;
    QTest::newRow("Shift-JIS font, ASCII trail byte")
        << QByteArray(R"({\rtf1\ansi\ansicpg1252{\fonttbl\f0\fnil\fcharset128 HiraKakuProN-W3;)"
                      R"(\f1\fswiss\fcharset0 Helvetica;}\f0 \'83A\'83\'43\'93\'fa\f1 \'e9A})")
        << u"\u30A2\u30A4\u65E5\u00E9A"_s;
    QTest::newRow("Shift-JIS lead byte without trail")
        << QByteArray(R"({\rtf1{\fonttbl\f0\fcharset128 X;}\f0 \'83})") << u"\uFFFD"_s;
    QTest::newRow("Cyrillic font charset in an ANSI document")
        << QByteArray(R"({\rtf1\ansi{\fonttbl{\f0\fcharset204 Arial Cyr;}}\f0 \'c0})")
        << u"\u0410"_s;
    QTest::newRow("font code page")
        << QByteArray(R"({\rtf1\ansi{\fonttbl{\f0\cpg1251 X;}}\f0 \'c0})") << u"\u0410"_s;
    QTest::newRow("Mac Roman font charset")
        << QByteArray(R"({\rtf1\ansi{\fonttbl\f0\fcharset77 Helvetica;}\f0 \'8e})") << u"\u00E9"_s;
    QTest::newRow("GBK font")
        << QByteArray(R"({\rtf1{\fonttbl\f0\fcharset134 SimSun;}\f0 \'d6\'d0\'ce\'c4})")
        << u"\u4E2D\u6587"_s;
    QTest::newRow("font charset without a number")
        << QByteArray(R"({\rtf1\ansi\ansicpg932{\fonttbl\f0\fcharset X;}\f0 \'83A})")
        << u"\u30A2"_s;
    QTest::newRow("raw 8-bit text") << QByteArray("{\\rtf1\\ansi caf\xe9}") << u"caf\u00E9"_s;
    QTest::newRow("unknown code page reads as Windows-1252")
        << QByteArray(R"({\rtf1\ansi\ansicpg99999 \'e9})") << u"\u00E9"_s;
}

void RtfTest::codePages()
{
    QFETCH(QByteArray, rtf);
    QFETCH(QString, expected);
    QCOMPARE(readOrFail(rtf).string(), expected);
}

void RtfTest::fontCharsetDecidesHexBytes_data()
{
    QTest::addColumn<QByteArray>("rtf");
    QTest::addColumn<QString>("expected");

    // A document in an East Asian code page, its fonts' charset for that code page, and
    // three of its characters as bytes: the last one's trail byte is a plain ASCII
    // character after a \'hh lead byte, as writers leave it.
    struct EastAsian
    {
        const char* name;
        const char* codePage;
        const char* charset;
        const char* font;
        const char* bytes;
        QString text;
    };
    const EastAsian documents[] = {
        {"Japanese", "932", "128", "MS-Mincho", R"(\'8a\'bf\'8e\'9a\'83A)",
         u"\u6F22\u5B57\u30A2"_s},
        {"Simplified Chinese", "936", "134", "SimSun", R"(\'d6\'d0\'ce\'c4\'81@)",
         u"\u4E2D\u6587\u4E02"_s},
        {"Korean", "949", "129", "Batang", R"(\'c7\'d1\'b1\'b9\'81A)", u"\uD55C\uAD6D\uAC02"_s},
        {"Traditional Chinese", "950", "136", "MingLiU", R"(\'a4\'a4\'a4\'e5\'a4A)",
         u"\u4E2D\u6587\u4E59"_s},
    };
    for (const EastAsian& document : documents) {
        const QByteArray header = QByteArray(R"({\rtf1\ansi\ansicpg)") + document.codePage;
        // Windows-1252 quotes whose bytes are lead bytes in the document's code page, with
        // a letter after each that would be taken for a trail byte.
        QTest::addRow("%s: a Latin font alone", document.name)
            << header + R"({\fonttbl\f0\fnil\fcharset0 Menlo;}\f0 \'93AS IS\'94, X})"
            << u"\u201CAS IS\u201D, X"_s;
        // Latin and CJK fonts in one file; fonts that declare no charset, or the default
        // one, take the document's code page.
        QTest::addRow("%s: Latin, CJK, no charset and default charset", document.name)
            << header + R"({\fonttbl\f0\fnil\fcharset0 Menlo;\f1\fnil\fcharset)" +
                   document.charset + ' ' + document.font +
                   R"(;\f2\fnil Undeclared;\f3\fnil\fcharset1 Default;})"
                   R"(\f0 \'93AS IS\'94, caf\'e9 \f1 )" +
                   document.bytes + R"( \f2 )" + document.bytes + R"( \f3 )" + document.bytes +
                   R"( \f0 \'85\'80})"
            << u"\u201CAS IS\u201D, caf\u00E9 "_s + document.text + u' ' + document.text + u' ' +
                   document.text + u" \u2026\u20AC"_s;
        // Word braces its entries and names a default font, which text before any \f uses.
        QTest::addRow("%s: braced entries and a Latin default font", document.name)
            << header +
                   R"(\deff0{\fonttbl{\f0\froman\fcharset0 Times New Roman;})"
                   R"({\f1\fnil\fcharset)" +
                   document.charset + ' ' + document.font + R"(;}}\'93A\'94 {\f1 )" +
                   document.bytes + R"(} \'96})"
            << u"\u201CA\u201D "_s + document.text + u" \u2013"_s;
    }
}

void RtfTest::fontCharsetDecidesHexBytes()
{
    QFETCH(QByteArray, rtf);
    QFETCH(QString, expected);
    const RichText read = readOrFail(rtf);
    QCOMPARE(read.string(), expected);

    // The writer declares Windows-1252 for the document and every font: Latin text goes
    // out as its bytes, everything else as \uN, and reads back the same.
    const QByteArray written = writeRtf(read);
    QVERIFY(isSevenBitAscii(written));
    QVERIFY(written.startsWith("{\\rtf1\\ansi\\ansicpg1252\\"));
    QCOMPARE(written.count("\\fcharset"), written.count("\\fcharset0 "));
    if (expected.startsWith(u"\u201CAS IS\u201D"_s))
        QVERIFY2(written.contains("\\'93AS IS\\'94, "), written.constData());
    for (const QChar c : expected) {
        if (c.unicode() >= 0x3000)
            QVERIFY2(written.contains("\\u" + QByteArray::number(c.unicode()) + ' '),
                     written.constData());
    }
    QVERIFY(readOrFail(written) == read);
}

void RtfTest::unicodeEscapesAndSkipCounts_data()
{
    QTest::addColumn<QByteArray>("rtf");
    QTest::addColumn<QString>("expected");

    QTest::newRow("default skip of one") << QByteArray(R"({\rtf1 \u233?x})") << u"\u00E9x"_s;
    QTest::newRow("hex fallback") << QByteArray(R"({\rtf1\uc1\u233\'e9 x})") << u"\u00E9 x"_s;
    QTest::newRow("skip two") << QByteArray(R"({\rtf1\uc2\u8364\'80\'80x})") << u"\u20ACx"_s;
    QTest::newRow("skip none") << QByteArray(R"({\rtf1\uc0\u8364 x})") << u"\u20ACx"_s;
    QTest::newRow("negative value") << QByteArray(R"({\rtf1\u-3913?})") << u"\uF0B7"_s;
    QTest::newRow("Cocoa surrogate pair")
        << QByteArray(R"({\rtf1\uc0\u55357 \u56832 })") << u"\U0001F600"_s;
    QTest::newRow("LibreOffice surrogate pair")
        << QByteArray(R"({\rtf1\uc0 \u55357\uc1 \u56832\'3f.})") << u"\U0001F600."_s;
    QTest::newRow("signed surrogate pair")
        << QByteArray(R"({\rtf1\uc1\u-10179?\u-8704?})") << u"\U0001F600"_s;
    QTest::newRow("skip ends at a group") << QByteArray(R"({\rtf1\uc3\u233{x}y})") << u"\u00E9xy"_s;
    QTest::newRow("skip is scoped to the group")
        << QByteArray(R"({\rtf1{\uc0\u233}\u233?x})") << u"\u00E9\u00E9x"_s;
    QTest::newRow("lone high surrogate") << QByteArray(R"({\rtf1\uc0\u55357 x})") << u"\uFFFDx"_s;
    QTest::newRow("lone low surrogate") << QByteArray(R"({\rtf1\uc0\u56832 x})") << u"\uFFFDx"_s;
    QTest::newRow("out of range") << QByteArray(R"({\rtf1\uc0\u99999 \u-99999 x})")
                                  << u"\uFFFD\uFFFDx"_s;
    QTest::newRow("line ends as text become paragraph breaks")
        << QByteArray(R"({\rtf1\uc0 a\u13 b\u10 c\u8233 d})") << u"a\nb\nc\nd"_s;
}

void RtfTest::unicodeEscapesAndSkipCounts()
{
    QFETCH(QByteArray, rtf);
    QFETCH(QString, expected);
    QCOMPARE(readOrFail(rtf).string(), expected);
}

void RtfTest::specialCharactersAndBreaks_data()
{
    QTest::addColumn<QByteArray>("rtf");
    QTest::addColumn<QString>("expected");

    QTest::newRow("par and Cocoa breaks")
        << QByteArray("{\\rtf1 a\\par b\\\nc\\\r\nd\\sect e}") << u"a\nb\nc\nd\ne"_s;
    QTest::newRow("line") << QByteArray(R"({\rtf1 a\line b})") << u"a\u2028b"_s;
    QTest::newRow("tabs") << QByteArray("{\\rtf1 a\\tab b\tc}") << u"a\tb\tc"_s;
    QTest::newRow("page") << QByteArray(R"({\rtf1 a\page b})") << u"a\fb"_s;
    QTest::newRow("named characters")
        << QByteArray(R"({\rtf1 \emdash\endash\bullet\lquote\rquote\ldblquote\rdblquote\~\_})")
        << u"\u2014\u2013\u2022\u2018\u2019\u201C\u201D\u00A0\u2011"_s;
    QTest::newRow("escaped symbols") << QByteArray(R"({\rtf1 \{\\\}})") << u"{\\}"_s;
    QTest::newRow("line ends in the source are not text")
        << QByteArray("{\\rtf1 one\r\ntwo\nthree}") << u"onetwothree"_s;
    QTest::newRow("space after a control word")
        << QByteArray(R"({\rtf1\b  two\b0 x})") << u" twox"_s;
    QTest::newRow("table cells") << QByteArray(R"({\rtf1 a\cell b\cell\row c})") << u"a\tb\t\nc"_s;
    QTest::newRow("hidden text") << QByteArray(R"({\rtf1 shown{\v hidden\par}\v0  too})")
                                 << u"shown too"_s;
    QTest::newRow("text after the document") << QByteArray(R"({\rtf1 in}out{\b more})") << u"in"_s;
    QTest::newRow("optional hyphen shows nothing")
        << QByteArray(R"({\rtf1 hy\-phen})") << u"hyphen"_s;
}

void RtfTest::specialCharactersAndBreaks()
{
    QFETCH(QByteArray, rtf);
    QFETCH(QString, expected);
    QCOMPARE(readOrFail(rtf).string(), expected);
}

void RtfTest::skipsDestinationsThatShowNothing_data()
{
    QTest::addColumn<QByteArray>("rtf");
    QTest::addColumn<QString>("expected");

    QTest::newRow("field")
        << QByteArray(
               R"({\rtf1 see {\field{\*\fldinst{HYPERLINK "https://example.org"}}{\fldrslt the site}}.})")
        << u"see the site."_s;
    QTest::newRow("unknown ignorable destination")
        << QByteArray(R"({\rtf1 a{\*\somethingnew hidden {nested} text}b})") << u"ab"_s;
    QTest::newRow("unknown word keeps its text")
        << QByteArray(R"({\rtf1 a{\somethingnew b}c})") << u"abc"_s;
    QTest::newRow("ignorable known word") << QByteArray(R"({\rtf1 a{\*\b hidden}b})") << u"ab"_s;
    QTest::newRow("stylesheet, info, picture")
        << QByteArray(R"({\rtf1{\stylesheet{\s0 Normal;}}{\info{\title T}{\author A}})"
                      R"({\pict\pngblip 89504e47}text{\*\generator W;}})")
        << u"text"_s;
    QTest::newRow("header and footnote")
        << QByteArray(R"({\rtf1{\header head}body{\footnote note}})") << u"body"_s;
    QTest::newRow("list text is shown")
        << QByteArray(R"({\rtf1{\*\listtable{\list x}}{\listtext\tab \uc0\u8226\tab}item})")
        << u"\t\u2022\titem"_s;
    QTest::newRow("binary data") << QByteArray(R"({\rtf1 a{\*\blob\bin5 {}}\{}b})") << u"ab"_s;
    QTest::newRow("binary data in text") << QByteArray(R"({\rtf1 a\bin3 }}}b})") << u"ab"_s;
}

void RtfTest::skipsDestinationsThatShowNothing()
{
    QFETCH(QByteArray, rtf);
    QFETCH(QString, expected);
    QCOMPARE(readOrFail(rtf).string(), expected);
}

void RtfTest::characterFormatting()
{
    const RichText text = readOrFail(
        R"({\rtf1\ansi\deff1{\fonttbl{\f0\fswiss Arial;}{\f1\froman Times New Roman;}})"
        R"({\colortbl;\red255\green0\blue0;\red0\green0\blue255;})"
        R"(DEFAULT {\f0\fs20 SMALL} {\b\i BOLDITALIC\b0 ITALICONLY} {\ul SINGLE}{\uldb DOUBLE})"
        R"({\ulth THICK}{\ulw WORDS}{\uld DOTTED}{\ul\ul0 ZEROOFF}{\ul\ulnone NONEOFF})"
        R"( {\strike STRUCK}{\striked1 TWICE} {\cf1 RED}{\cb2 BLUE}{\highlight1 HIGHLIGHT})"
        R"({\chcbpat2 PATTERN} {\b\cf1\fs30 BIG\plain PLAIN} {\fs29\fsmilli14667 MILLI}})");

    const Found defaults = find(text, u"DEFAULT"_s);
    QCOMPARE(defaults.attributes.font->family, u"Times New Roman"_s); // \deff1
    QCOMPARE(defaults.attributes.font->pointSize, 12.0);
    const Found small = find(text, u"SMALL"_s);
    QCOMPARE(small.attributes.font->family, u"Arial"_s);
    QCOMPARE(small.attributes.font->pointSize, 10.0);
    const Found boldItalic = find(text, u"BOLDITALIC"_s);
    QVERIFY(boldItalic.oneRun);
    QVERIFY(boldItalic.attributes.font->bold);
    QVERIFY(boldItalic.attributes.font->italic);
    const Found italic = find(text, u"ITALICONLY"_s);
    QVERIFY(!italic.attributes.font->bold);
    QVERIFY(italic.attributes.font->italic);
    QCOMPARE(find(text, u"SINGLE"_s).attributes.underline, LineStyle::Single);
    QCOMPARE(find(text, u"DOUBLE"_s).attributes.underline, LineStyle::Double);
    QCOMPARE(find(text, u"THICK"_s).attributes.underline, LineStyle::Thick);
    QCOMPARE(find(text, u"WORDS"_s).attributes.underline, LineStyle::Single | LineStyle::ByWord);
    QCOMPARE(find(text, u"DOTTED"_s).attributes.underline,
             LineStyle::Single | LineStyle::PatternDot);
    QCOMPARE(find(text, u"ZEROOFF"_s).attributes.underline, LineStyle::None);
    QCOMPARE(find(text, u"NONEOFF"_s).attributes.underline, LineStyle::None);
    QCOMPARE(find(text, u"STRUCK"_s).attributes.strikethrough, LineStyle::Single);
    QCOMPARE(find(text, u"TWICE"_s).attributes.strikethrough, LineStyle::Double);
    QCOMPARE(find(text, u"RED"_s).attributes.foreground, (Rgba{255, 0, 0, 255}));
    QCOMPARE(find(text, u"BLUE"_s).attributes.background, (Rgba{0, 0, 255, 255}));
    QCOMPARE(find(text, u"HIGHLIGHT"_s).attributes.background, (Rgba{255, 0, 0, 255}));
    QCOMPARE(find(text, u"PATTERN"_s).attributes.background, (Rgba{0, 0, 255, 255}));
    const Found big = find(text, u"BIG"_s);
    QVERIFY(big.attributes.font->bold);
    QCOMPARE(big.attributes.font->pointSize, 15.0);
    QCOMPARE(big.attributes.foreground, (Rgba{255, 0, 0, 255}));
    // \plain: back to the default font at 12 points, without colour or bold.
    const Found plain = find(text, u"PLAIN"_s);
    QVERIFY(!plain.attributes.font->bold);
    QCOMPARE(plain.attributes.font->family, u"Times New Roman"_s);
    QCOMPARE(plain.attributes.font->pointSize, 12.0);
    QCOMPARE(plain.attributes.foreground, std::nullopt);
    QCOMPARE(find(text, u"MILLI"_s).attributes.font->pointSize, 14.667);
}

void RtfTest::paragraphFormatting()
{
    const RichText text = readOrFail(
        R"({\rtf1 \qc centred\par \qr right\par\pard justified\qj\par\pard\ql\qnatural natural\par)"
        R"(\pard\li720\fi-360\ri240\sb120\sa240\sl360\slmult1\slleading40 spaced\par)"
        R"(\sl-300 exact\par\pard\ri-100 negative}})");

    QCOMPARE(alignmentOf(find(text, u"centred"_s).attributes), TextAlignment::Center);
    QCOMPARE(alignmentOf(find(text, u"right"_s).attributes), TextAlignment::Right);
    // The properties in force at the paragraph's end apply to all of it.
    QCOMPARE(alignmentOf(find(text, u"justified"_s).attributes), TextAlignment::Justified);
    QCOMPARE(find(text, u"natural"_s).attributes.paragraph, std::nullopt);

    const Found spaced = find(text, u"spaced\n"_s);
    QVERIFY(spaced.oneRun);
    QVERIFY(spaced.attributes.paragraph.has_value());
    const ParagraphStyle& style = *spaced.attributes.paragraph;
    QCOMPARE(style.alignment, TextAlignment::Natural);
    QCOMPARE(style.headIndent, 36.0);
    QCOMPARE(style.firstLineHeadIndent, 18.0);
    QCOMPARE(style.tailIndent, -12.0);
    QCOMPARE(style.paragraphSpacingBefore, 6.0);
    QCOMPARE(style.paragraphSpacing, 12.0);
    QCOMPARE(style.lineHeightMultiple, 1.5);
    QCOMPARE(style.lineSpacing, 2.0);
    // An exact line height has no place in the label's paragraph style.
    QCOMPARE(find(text, u"exact"_s).attributes.paragraph->lineHeightMultiple, 0.0);
    QCOMPARE(find(text, u"negative"_s).attributes.paragraph, std::nullopt);
}

void RtfTest::indentsAtTheLimitsRoundTrip_data()
{
    QTest::addColumn<QByteArray>("rtf");
    QTest::addColumn<double>("headIndent");
    QTest::addColumn<double>("firstLineHeadIndent");
    QTest::addColumn<QByteArray>("words");

    QTest::newRow("hanging indent on the most negative left indent")
        << QByteArray(R"({\rtf1\pard\li-1000000000\fi-3 x})") << -50'000'000.0
        << -1'000'000'003 / 20.0 << QByteArray("\\li-1000000000\\fi-3");
    QTest::newRow("numbers beyond the limit read as the limit")
        << QByteArray(R"({\rtf1\pard\li-99999999999\fi-3 x})") << -50'000'000.0
        << -1'000'000'003 / 20.0 << QByteArray("\\li-1000000000\\fi-3");
    QTest::newRow("both at the positive limit")
        << QByteArray(R"({\rtf1\pard\li1000000000\fi1000000000 x})") << 50'000'000.0
        << 100'000'000.0 << QByteArray("\\li1000000000\\fi1000000000");
    QTest::newRow("both at the negative limit")
        << QByteArray(R"({\rtf1\pard\fi-1000000000\li-1000000000 x})") << -50'000'000.0
        << -100'000'000.0 << QByteArray("\\li-1000000000\\fi-1000000000");
    QTest::newRow("opposite limits")
        << QByteArray(R"({\rtf1\pard\li1000000000\fi-1000000000 x})") << 50'000'000.0 << 0.0
        << QByteArray("\\li1000000000\\fi-1000000000");
}

void RtfTest::indentsAtTheLimitsRoundTrip()
{
    QFETCH(QByteArray, rtf);
    QFETCH(double, headIndent);
    QFETCH(double, firstLineHeadIndent);
    QFETCH(QByteArray, words);

    const RichText read = readOrFail(rtf);
    const std::optional<ParagraphStyle> style = read.attributesAt(0).paragraph;
    QVERIFY(style.has_value());
    QCOMPARE(style->headIndent, headIndent);
    QCOMPARE(style->firstLineHeadIndent, firstLineHeadIndent);

    const QByteArray written = writeRtf(read);
    QVERIFY2(written.contains(words + "\\pardirnatural"), written.constData());
    QVERIFY(readOrFail(written) == read);
}

void RtfTest::colorTables()
{
    // The expanded table wins where it has an entry; an empty one defers to the 8-bit
    // values; gray and alpha components are read.
    const RichText cocoa = readOrFail(
        R"({\rtf1\ansi\cocoartf2822{\colortbl;\red255\green255\blue255;\red82\green0\blue135;)"
        R"(\red1\green2\blue3;\red9\green9\blue9;\red0\green0\blue0;})"
        R"({\*\expandedcolortbl;;\cssrgb\c40000\c0\c60000;;\csgray\c50000\c50000;)"
        R"(\cssrgb\c0\c0\c0\c84706\cname labelColor;})"
        R"({\cf2 a}{\cf3 b}{\cf4 c}{\cf5 d}{\cf9 e}{\cb1 f}{\cf1 g}})");
    QCOMPARE(find(cocoa, u"a"_s).attributes.foreground, (Rgba{102, 0, 153, 255}));
    QCOMPARE(find(cocoa, u"b"_s).attributes.foreground, (Rgba{1, 2, 3, 255}));
    QCOMPARE(find(cocoa, u"c"_s).attributes.foreground, (Rgba{128, 128, 128, 128}));
    QCOMPARE(find(cocoa, u"d"_s).attributes.foreground, (Rgba{0, 0, 0, 216}));
    QCOMPARE(find(cocoa, u"e"_s).attributes.foreground, std::nullopt); // no such entry
    // Cocoa's \cb1 is "no background"; \cf1 is white text.
    QCOMPARE(find(cocoa, u"f"_s).attributes.background, std::nullopt);
    QCOMPARE(find(cocoa, u"g"_s).attributes.foreground, (Rgba{255, 255, 255, 255}));

    // Outside Cocoa files entry 1 is a colour like any other.
    const RichText word = readOrFail(
        R"({\rtf1\ansi{\colortbl;\red0\green0\blue0;\red255\green0\blue0}{\cb1 a}{\cf2 b}})");
    QCOMPARE(find(word, u"a"_s).attributes.background, (Rgba{0, 0, 0, 255}));
    // A last entry without its ";" still counts.
    QCOMPARE(find(word, u"b"_s).attributes.foreground, (Rgba{255, 0, 0, 255}));
}

// ---------------------------------------------------------------------------------------
// Damaged and hostile input

void RtfTest::hostileInputs_data()
{
    QTest::addColumn<QByteArray>("rtf");
    QTest::addColumn<QString>("expected");

    QTest::newRow("unterminated groups")
        << QByteArray(R"({\rtf1 a{\b bold{\i more)") << u"aboldmore"_s;
    QTest::newRow("unterminated font table")
        << QByteArray(R"({\rtf1{\fonttbl\f0\fswiss Helvet)") << QString();
    QTest::newRow("huge bin") << QByteArray(R"({\rtf1 before\bin999999999999999 after})")
                              << u"before"_s;
    QTest::newRow("negative bin") << QByteArray(R"({\rtf1 a\bin-5 b})") << u"ab"_s;
    QTest::newRow("huge numbers")
        << QByteArray(R"({\rtf1\f99999999999999\fs99999999999\cf88888888888\li-999999999999 x})")
        << u"x"_s;
    QTest::newRow("huge skip count")
        << QByteArray(R"({\rtf1\uc99999\u233 abcdefghijklmnopqrstuvwxyz})")
        << u"\u00E9qrstuvwxyz"_s;
    QTest::newRow("backslash at the end") << QByteArray("{\\rtf1 a\\") << u"a"_s;
    QTest::newRow("hex escape at the end") << QByteArray("{\\rtf1 a\\'") << u"a"_s;
    QTest::newRow("half hex escape") << QByteArray("{\\rtf1 a\\'4") << u"a\u0004"_s;
    QTest::newRow("bad hex escape") << QByteArray(R"({\rtf1 a\'zz})") << u"azz"_s;
    QTest::newRow("extra closing braces") << QByteArray(R"({\rtf1 a}}}}b)") << u"a"_s;
    QTest::newRow("endless control word")
        << (QByteArray("{\\rtf1 a\\") + QByteArray(100000, 'x') + " b}") << u"ab"_s;
    QTest::newRow("endless parameter")
        << (QByteArray("{\\rtf1 a\\fs") + QByteArray(100000, '9') + " b}") << u"ab"_s;
    QTest::newRow("nul bytes") << QByteArray("{\\rtf1 a\0b}", 11) << u"ab"_s;
    QTest::newRow("font table without names")
        << QByteArray(R"({\rtf1{\fonttbl\f0;\f1\fcharset128;}\f1 x\f0 y})") << u"xy"_s;
    QTest::newRow("colour table in text") << QByteArray(R"({\rtf1 a\red5;\cf3 b})") << u"a;b"_s;
    QTest::newRow("star alone") << QByteArray(R"({\rtf1 a\*b})") << u"ab"_s;
}

void RtfTest::hostileInputs()
{
    QFETCH(QByteArray, rtf);
    QFETCH(QString, expected);
    const Result<RichText> read = readRtf(rtf);
    QVERIFY(read.ok());
    QCOMPARE(read->string(), expected);
    // Whatever was read writes and reads back the same.
    QVERIFY(readOrFail(writeRtf(*read)) == *read);
}

void RtfTest::tooDeepNestingIsMalformed()
{
    for (const QByteArray& rtf :
         {QByteArray("{\\rtf1 ") + QByteArray(100000, '{'),
          QByteArray("{\\rtf1 {\\*\\skipped ") + QByteArray(1000, '{') + QByteArray(1001, '}'),
          QByteArray("{\\rtf1 ") + QByteArray(5000, '{') + "x" + QByteArray(5000, '}') + "}"}) {
        const Result<RichText> read = readRtf(rtf);
        QVERIFY(!read.ok());
        QCOMPARE(read.error().code, kRtfMalformed);
        QCOMPARE(read.error().domain, u"LomirRtfErrorDomain"_s);
        QVERIFY(read.error().message.contains(u"damaged"_s));
    }
}

void RtfTest::deepButReasonableNestingReads()
{
    const QByteArray rtf = QByteArray("{\\rtf1 ") + QByteArray(400, '{') + "\\b deep" +
                           QByteArray(400, '}') + " flat}";
    const RichText text = readOrFail(rtf);
    QCOMPARE(text.string(), u"deep flat"_s);
    QVERIFY(find(text, u"deep"_s).attributes.font->bold);
    QVERIFY(!find(text, u" flat"_s).attributes.font->bold);
}

void RtfTest::mutatedFixturesNeverCrashAndRoundTrip()
{
    if (!QDir(fixturesDirectory()).exists())
        QSKIP("The shared fixtures folder (LOMIR_SHARED_DIR/fixtures/rtf) is not there.");
    // A small, fixed-seed stand-in for the fuzzer: cut, flip and splice the fixtures;
    // whatever reads must write and read back to the same text.
    QRandomGenerator random(20261122);
    const QStringList fixtures =
        QDir(fixturesDirectory()).entryList({QStringLiteral("*.rtf")}, QDir::Files, QDir::Name);
    static const char* const pieces[] = {"{",     "}",   "\\",      "\\'",       "\\u",  "\\uc",
                                         "\\bin", "\\*", "\\par",   "\\fonttbl", "\\cf", "\\f",
                                         "\\'8",  "-",   "9999999", "\\u55357 ", ";"};
    int read = 0;
    for (const QString& fixture : fixtures) {
        const QByteArray original = readFile(fixturesDirectory() + u'/' + fixture);
        for (int round = 0; round < 150; ++round) {
            QByteArray bytes = original;
            const int edits = 1 + int(random.bounded(8));
            for (int e = 0; e < edits && !bytes.isEmpty(); ++e) {
                const auto position = qsizetype(random.bounded(quint32(bytes.size())));
                switch (random.bounded(4)) {
                case 0:
                    bytes[position] = char(random.bounded(256));
                    break;
                case 1:
                    bytes.truncate(position);
                    break;
                case 2:
                    bytes.insert(position, pieces[random.bounded(int(std::size(pieces)))]);
                    break;
                default:
                    bytes.remove(position, qsizetype(random.bounded(40)));
                    break;
                }
            }
            const Result<RichText> first = readRtf(bytes);
            if (!first)
                continue;
            ++read;
            const QByteArray written = writeRtf(*first);
            QVERIFY(isSevenBitAscii(written));
            const Result<RichText> second = readRtf(written);
            QVERIFY(second.ok());
            if (!(second.value() == first.value())) {
                QFile dump(QDir::temp().filePath(u"lomir-rtf-mismatch.rtf"_s));
                if (dump.open(QIODevice::WriteOnly))
                    dump.write(bytes);
                QFAIL(qPrintable(u"Round trip differs for a mutation of %1 (saved to %2)"_s.arg(
                    fixture, dump.fileName())));
            }
        }
    }
    QVERIFY(read > 0);
}

void RtfTest::manyRunsReadQuickly()
{
    // 50,000 runs in one paragraph and 5,000 paragraphs: the reader must not slow down
    // with the length of the text.
    QByteArray rtf = "{\\rtf1\\ansi ";
    for (int i = 0; i < 25000; ++i)
        rtf += "\\b a\\b0 b";
    for (int i = 0; i < 5000; ++i)
        rtf += "\\par\\qc c";
    rtf += '}';
    QElapsedTimer timer;
    timer.start();
    const RichText text = readOrFail(rtf);
    QCOMPARE(text.length(), 50000 + 10000);
    QCOMPARE(text.runs().size(), std::size_t(50000 + 1));
    QVERIFY2(timer.elapsed() < 10000, "reading 55,000 runs took more than ten seconds");
    const RichText again = readOrFail(writeRtf(text));
    QVERIFY(again == text);
}

QTEST_GUILESS_MAIN(RtfTest)
#include "tst_rtf.moc"
