#include "core/document/richtext/fontnames.h"

#include <QTest>

using namespace lomir;
using namespace Qt::StringLiterals;

class TestFontNames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void postScriptNameForKnownFamilies_data();
    void postScriptNameForKnownFamilies();
    void knownNamesReadBack_data();
    void knownNamesReadBack();
    void generalRule_data();
    void generalRule();
    void readsStyleWords_data();
    void readsStyleWords();
    void systemFonts_data();
    void systemFonts();
    void keepsNameAndSize();
    void familyLookupIgnoresCase();
    void emptyName();
};

void TestFontNames::postScriptNameForKnownFamilies_data()
{
    QTest::addColumn<QString>("family");
    QTest::addColumn<bool>("bold");
    QTest::addColumn<bool>("italic");
    QTest::addColumn<QString>("expected");

    struct Row
    {
        const char* family;
        const char* regular;
        const char* bold;
        const char* italic;
        const char* boldItalic;
    };
    const Row rows[] = {
        {"Helvetica", "Helvetica", "Helvetica-Bold", "Helvetica-Oblique", "Helvetica-BoldOblique"},
        {"Helvetica Neue", "HelveticaNeue", "HelveticaNeue-Bold", "HelveticaNeue-Italic",
         "HelveticaNeue-BoldItalic"},
        {"Arial", "ArialMT", "Arial-BoldMT", "Arial-ItalicMT", "Arial-BoldItalicMT"},
        {"Times New Roman", "TimesNewRomanPSMT", "TimesNewRomanPS-BoldMT",
         "TimesNewRomanPS-ItalicMT", "TimesNewRomanPS-BoldItalicMT"},
        {"Times", "Times-Roman", "Times-Bold", "Times-Italic", "Times-BoldItalic"},
        {"Courier", "Courier", "Courier-Bold", "Courier-Oblique", "Courier-BoldOblique"},
        {"Courier New", "CourierNewPSMT", "CourierNewPS-BoldMT", "CourierNewPS-ItalicMT",
         "CourierNewPS-BoldItalicMT"},
        {"Menlo", "Menlo-Regular", "Menlo-Bold", "Menlo-Italic", "Menlo-BoldItalic"},
        {"Avenir", "Avenir-Book", "Avenir-Heavy", "Avenir-BookOblique", "Avenir-HeavyOblique"},
        {"Liberation Sans", "LiberationSans", "LiberationSans-Bold", "LiberationSans-Italic",
         "LiberationSans-BoldItalic"},
        {"Liberation Serif", "LiberationSerif", "LiberationSerif-Bold", "LiberationSerif-Italic",
         "LiberationSerif-BoldItalic"},
        {"Liberation Mono", "LiberationMono", "LiberationMono-Bold", "LiberationMono-Italic",
         "LiberationMono-BoldItalic"},
        {"DejaVu Sans", "DejaVuSans", "DejaVuSans-Bold", "DejaVuSans-Oblique",
         "DejaVuSans-BoldOblique"},
        {"DejaVu Serif", "DejaVuSerif", "DejaVuSerif-Bold", "DejaVuSerif-Italic",
         "DejaVuSerif-BoldItalic"},
        {"DejaVu Sans Mono", "DejaVuSansMono", "DejaVuSansMono-Bold", "DejaVuSansMono-Oblique",
         "DejaVuSansMono-BoldOblique"},
        {"Georgia", "Georgia", "Georgia-Bold", "Georgia-Italic", "Georgia-BoldItalic"},
        {"Verdana", "Verdana", "Verdana-Bold", "Verdana-Italic", "Verdana-BoldItalic"},
        {"SF Mono", "SFMono-Regular", "SFMono-Bold", "SFMono-RegularItalic", "SFMono-BoldItalic"},
    };
    for (const Row& row : rows) {
        const QString family = QString::fromLatin1(row.family);
        QTest::addRow("%s regular", row.family)
            << family << false << false << QString::fromLatin1(row.regular);
        QTest::addRow("%s bold", row.family)
            << family << true << false << QString::fromLatin1(row.bold);
        QTest::addRow("%s italic", row.family)
            << family << false << true << QString::fromLatin1(row.italic);
        QTest::addRow("%s bold italic", row.family)
            << family << true << true << QString::fromLatin1(row.boldItalic);
    }
    // Monaco has one face on a Mac; other faces follow the general rule.
    QTest::newRow("Monaco regular") << u"Monaco"_s << false << false << u"Monaco"_s;
    QTest::newRow("Monaco bold") << u"Monaco"_s << true << false << u"Monaco-Bold"_s;
}

void TestFontNames::postScriptNameForKnownFamilies()
{
    QFETCH(QString, family);
    QFETCH(bool, bold);
    QFETCH(bool, italic);
    QFETCH(QString, expected);
    QCOMPARE(postScriptNameFor(family, bold, italic), expected);
}

// Every name of the table reads back as the face it was made for.
void TestFontNames::knownNamesReadBack_data()
{
    postScriptNameForKnownFamilies_data();
}

void TestFontNames::knownNamesReadBack()
{
    QFETCH(QString, family);
    QFETCH(bool, bold);
    QFETCH(bool, italic);
    QFETCH(QString, expected);
    const FontSpec font = fontFromPostScriptName(expected, 12.0);
    QCOMPARE(font.family, family);
    QCOMPARE(font.bold, bold);
    QCOMPARE(font.italic, italic);
    QCOMPARE(font.postScriptName, expected);
}

void TestFontNames::generalRule_data()
{
    QTest::addColumn<QString>("family");
    QTest::addColumn<bool>("bold");
    QTest::addColumn<bool>("italic");
    QTest::addColumn<QString>("expected");

    QTest::newRow("regular") << u"Source Sans Pro"_s << false << false << u"SourceSansPro"_s;
    QTest::newRow("bold") << u"Source Sans Pro"_s << true << false << u"SourceSansPro-Bold"_s;
    QTest::newRow("italic") << u"Noto Sans Mono"_s << false << true << u"NotoSansMono-Italic"_s;
    QTest::newRow("bold italic") << u"Ubuntu"_s << true << true << u"Ubuntu-BoldItalic"_s;
    QTest::newRow("acronym") << u"PT Sans"_s << true << false << u"PTSans-Bold"_s;
}

// Names made by the general rule read back as the same face.
void TestFontNames::generalRule()
{
    QFETCH(QString, family);
    QFETCH(bool, bold);
    QFETCH(bool, italic);
    QFETCH(QString, expected);
    QCOMPARE(postScriptNameFor(family, bold, italic), expected);
    const FontSpec font = fontFromPostScriptName(expected, 10.0);
    QCOMPARE(font.family, family);
    QCOMPARE(font.bold, bold);
    QCOMPARE(font.italic, italic);
}

void TestFontNames::readsStyleWords_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("family");
    QTest::addColumn<bool>("bold");
    QTest::addColumn<bool>("italic");

    QTest::newRow("Avenir-Book") << u"Avenir-Book"_s << u"Avenir"_s << false << false;
    QTest::newRow("Avenir-Black") << u"Avenir-Black"_s << u"Avenir"_s << true << false;
    QTest::newRow("Avenir-MediumOblique")
        << u"Avenir-MediumOblique"_s << u"Avenir"_s << false << true;
    QTest::newRow("HelveticaNeue-Light")
        << u"HelveticaNeue-Light"_s << u"Helvetica Neue"_s << false << false;
    QTest::newRow("HelveticaNeue-CondensedBlack")
        << u"HelveticaNeue-CondensedBlack"_s << u"Helvetica Neue"_s << true << false;
    QTest::newRow("AvenirNext-DemiBoldItalic")
        << u"AvenirNext-DemiBoldItalic"_s << u"Avenir Next"_s << true << true;
    QTest::newRow("SourceSansPro-Semibold")
        << u"SourceSansPro-Semibold"_s << u"Source Sans Pro"_s << true << false;
    QTest::newRow("SourceSansPro-It")
        << u"SourceSansPro-It"_s << u"Source Sans Pro"_s << false << true;
    QTest::newRow("MinionPro-BoldIt") << u"MinionPro-BoldIt"_s << u"Minion Pro"_s << true << true;
    QTest::newRow("Futura-CondensedExtraBold")
        << u"Futura-CondensedExtraBold"_s << u"Futura"_s << true << false;
    QTest::newRow("NotoSansCJK-DemiLight")
        << u"NotoSansCJK-DemiLight"_s << u"Noto Sans CJK"_s << false << false;
    QTest::newRow("Arial-BlackMT (vendor suffix)")
        << u"Arial-BlackMT"_s << u"Arial"_s << true << false;
    QTest::newRow("GillSans-Heavy") << u"GillSans-Heavy"_s << u"Gill Sans"_s << true << false;
    QTest::newRow("HiraMinProN-W6")
        << u"HiraMinProN-W6"_s << u"Hiragino Mincho ProN"_s << true << false;
    QTest::newRow("HiraKakuProN-W3")
        << u"HiraKakuProN-W3"_s << u"Hiragino Kaku Gothic ProN"_s << false << false;
    QTest::newRow("LucidaGrande") << u"LucidaGrande"_s << u"Lucida Grande"_s << false << false;
    QTest::newRow("Monaco") << u"Monaco"_s << u"Monaco"_s << false << false;
    QTest::newRow("Baskerville-BoldItalic")
        << u"Baskerville-BoldItalic"_s << u"Baskerville"_s << true << true;
    QTest::newRow("unknown vendor suffix") << u"FooBarPSMT"_s << u"Foo Bar"_s << false << false;
}

void TestFontNames::readsStyleWords()
{
    QFETCH(QString, name);
    QFETCH(QString, family);
    QFETCH(bool, bold);
    QFETCH(bool, italic);
    const FontSpec font = fontFromPostScriptName(name, 12.0);
    QCOMPARE(font.family, family);
    QCOMPARE(font.bold, bold);
    QCOMPARE(font.italic, italic);
}

void TestFontNames::systemFonts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("bold");
    QTest::addColumn<bool>("italic");

    QTest::newRow(".AppleSystemUIFont") << u".AppleSystemUIFont"_s << false << false;
    QTest::newRow(".SFNSText-Medium") << u".SFNSText-Medium"_s << false << false;
    QTest::newRow(".SFNSDisplay-Bold") << u".SFNSDisplay-Bold"_s << true << false;
    QTest::newRow(".SFNS-BoldItalic") << u".SFNS-BoldItalic"_s << true << true;
}

void TestFontNames::systemFonts()
{
    QFETCH(QString, name);
    QFETCH(bool, bold);
    QFETCH(bool, italic);
    const FontSpec font = fontFromPostScriptName(name, 14.0);
    QCOMPARE(font.family, u"Helvetica"_s);
    QCOMPARE(font.bold, bold);
    QCOMPARE(font.italic, italic);
    QCOMPARE(font.postScriptName, name);
}

void TestFontNames::keepsNameAndSize()
{
    const FontSpec font = fontFromPostScriptName(u"Menlo-BoldItalic"_s, 17.5);
    QCOMPARE(font.postScriptName, u"Menlo-BoldItalic"_s);
    QCOMPARE(font.pointSize, 17.5);
    QCOMPARE(font.family, u"Menlo"_s);
    QVERIFY(font.bold);
    QVERIFY(font.italic);
}

void TestFontNames::familyLookupIgnoresCase()
{
    QCOMPARE(postScriptNameFor(u"times new roman"_s, true, false), u"TimesNewRomanPS-BoldMT"_s);
    QCOMPARE(fontFromPostScriptName(u"arial-boldmt"_s, 12.0).family, u"Arial"_s);
}

void TestFontNames::emptyName()
{
    const FontSpec font = fontFromPostScriptName(QString(), 12.0);
    QCOMPARE(font.family, u"Helvetica"_s);
    QVERIFY(!font.bold);
    QVERIFY(!font.italic);
    QVERIFY(font.postScriptName.isEmpty());
}

QTEST_GUILESS_MAIN(TestFontNames)
#include "tst_fontnames.moc"
