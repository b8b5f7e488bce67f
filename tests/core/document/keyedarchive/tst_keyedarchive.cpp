#include "core/base/documentlimits.h"
#include "core/document/keyedarchive/colorspaces.h"
#include "core/document/keyedarchive/keyedarchive.h"
#include "core/document/keyedarchive/propertylist.h"
#include "core/document/keyedarchive/runtable.h"
#include "core/document/richtext/fontnames.h"
#include "support/archivebuilder.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <chrono>
#include <functional>
#include <plist/plist.h>

using namespace lomir;
using lomir::testing::ArchiveBuilder;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(lomir::Rgba)

namespace lomir {
// Lets QCOMPARE show colours that differ.
char* toString(const Rgba& color)
{
    return QTest::toString(color.toHex());
}
} // namespace lomir

namespace {

QString fixturePath(const QString& name)
{
    return QStringLiteral(LOMIR_SHARED_DIR "/fixtures/keyed-archive/") + name;
}

bool sharedDirPresent()
{
    return QDir(QStringLiteral(LOMIR_SHARED_DIR)).exists();
}

QByteArray readFixture(const QString& name)
{
    QFile file(fixturePath(name));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

#define REQUIRE_SHARED_DIR()                                                                       \
    do {                                                                                           \
        if (!sharedDirPresent())                                                                   \
            QSKIP(                                                                                 \
                "The shared fixtures folder (LOMIR_SHARED_DIR) is not present on this machine.");  \
    } while (false)

FontSpec font(const QString& family, double size, bool bold = false, bool italic = false)
{
    FontSpec face;
    face.family = family;
    face.postScriptName = postScriptNameFor(family, bold, italic);
    face.pointSize = size;
    face.bold = bold;
    face.italic = italic;
    return face;
}

ParagraphStyle aligned(TextAlignment alignment)
{
    ParagraphStyle style;
    style.alignment = alignment;
    return style;
}

// The object table of an archive, for looking at what the writer made.
struct ParsedArchive
{
    PlistPtr plist;
    plist_t objects = nullptr;

    plist_t object(quint64 uid) const { return plist_array_get_item(objects, uint32_t(uid)); }

    plist_t follow(plist_t reference) const
    {
        uint64_t uid = 0;
        plist_get_uid_val(reference, &uid);
        return object(uid);
    }

    plist_t root() const
    {
        return follow(plist_dict_get_item(plist_dict_get_item(plist.get(), "$top"), "root"));
    }

    QString className(plist_t object) const
    {
        plist_t description = follow(plist_dict_get_item(object, "$class"));
        char* name = nullptr;
        plist_get_string_val(plist_dict_get_item(description, "$classname"), &name);
        const QString result = QString::fromUtf8(name);
        free(name);
        return result;
    }

    // How many entries of the table are objects of the class.
    int count(const QString& wanted) const
    {
        int n = 0;
        for (uint32_t i = 1; i < plist_array_get_size(objects); ++i) {
            plist_t entry = object(i);
            if (plist_get_node_type(entry) == PLIST_DICT &&
                plist_dict_get_item(entry, "$class") != nullptr && className(entry) == wanted)
                ++n;
        }
        return n;
    }

    int countClassDescriptions(const QString& wanted) const
    {
        int n = 0;
        for (uint32_t i = 1; i < plist_array_get_size(objects); ++i) {
            plist_t entry = object(i);
            plist_t name = plist_get_node_type(entry) == PLIST_DICT
                               ? plist_dict_get_item(entry, "$classname")
                               : nullptr;
            if (name == nullptr)
                continue;
            char* text = nullptr;
            plist_get_string_val(name, &text);
            if (QString::fromUtf8(text) == wanted)
                ++n;
            free(text);
        }
        return n;
    }
};

ParsedArchive parse(const QByteArray& archive)
{
    plist_t plist = nullptr;
    plist_from_bin(archive.constData(), uint32_t(archive.size()), &plist);
    ParsedArchive parsed{PlistPtr(plist), nullptr};
    if (plist != nullptr)
        parsed.objects = plist_dict_get_item(plist, "$objects");
    return parsed;
}

// Parses an archive, lets the test change its object table, and writes it again.
QByteArray mutated(const QByteArray& archive, const std::function<void(ParsedArchive&)>& change)
{
    ParsedArchive parsed = parse(archive);
    change(parsed);
    return binaryPropertyList(parsed.plist.get());
}

// An attributed string "Hello" whose single attribute dictionary holds one colour,
// built by hand so that the colour can take any form.
QByteArray archiveWithColor(const std::function<quint64(ArchiveBuilder&)>& makeColor)
{
    ArchiveBuilder b;
    const quint64 color = makeColor(b);
    return b.finish(b.addAttributedString("Hello", {{"NSColor", color}}));
}

plist_t colorObject(quint64 colorClass, qint64 model, const char* key, const char* components)
{
    plist_t color = ArchiveBuilder::object(colorClass);
    plist_dict_set_item(color, "NSColorSpace", plist_new_uint(quint64(model)));
    if (key != nullptr) {
        const QByteArray bytes = QByteArray(components) + '\0';
        plist_dict_set_item(color, key, plist_new_data(bytes.constData(), quint64(bytes.size())));
    }
    return color;
}

// UIKit archives its colours and fonts under class descriptions that name the AppKit
// class to use where the UIKit one is unknown.
quint64 addUIColorClass(ArchiveBuilder& b)
{
    return b.addClass("UIColor", {"UIColor", "NSObject"}, {"NSColor"});
}

quint64 addUIFontClass(ArchiveBuilder& b)
{
    return b.addClass("UIFont", {"UIFont", "NSObject"}, {"NSFont"});
}

// A UIColor as UIKit archives one: the number of components and each component as a
// real, then the NSColor keys that macOS reads: device RGB (2) or device white (4), with
// the components as text without a closing NUL. A count of 0 leaves out UIKit's keys, a
// model of 0 AppKit's.
plist_t uiColorObject(quint64 colorClass, qint64 count,
                      std::initializer_list<std::pair<const char*, double>> components,
                      qint64 model = 0, const char* key = nullptr, const char* text = nullptr)
{
    plist_t color = ArchiveBuilder::object(colorClass);
    if (count != 0)
        plist_dict_set_item(color, "UIColorComponentCount", plist_new_uint(quint64(count)));
    for (const auto& [name, value] : components)
        plist_dict_set_item(color, name, plist_new_real(value));
    if (model != 0) {
        plist_dict_set_item(color, "NSColorSpace", plist_new_uint(quint64(model)));
        plist_dict_set_item(color, key, plist_new_data(text, quint64(qstrlen(text))));
    }
    return color;
}

// A UIFont as UIKit archives one: its name and size under UIKit's keys and again under
// NSFont's, its traits, whether it is the system font, and a font descriptor (an object
// of a class that reading a font never needs).
quint64 addUIFont(ArchiveBuilder& b, const char* name, double size, bool systemFont)
{
    const quint64 fontClass = addUIFontClass(b);
    const quint64 descriptorClass =
        b.addClass("UIFontDescriptor", {"UIFontDescriptor", "NSObject"});
    const quint64 nameUid = b.addString(name);
    plist_t font = ArchiveBuilder::object(fontClass);
    plist_dict_set_item(font, "UIFontName", plist_new_uid(nameUid));
    plist_dict_set_item(font, "UIFontDescriptor",
                        plist_new_uid(b.add(ArchiveBuilder::object(descriptorClass))));
    plist_dict_set_item(font, "UIFontPointSize", plist_new_real(size));
    plist_dict_set_item(font, "UIFontTraits", plist_new_uint(0));
    plist_dict_set_item(font, "UISystemFont", plist_new_bool(systemFont ? 1 : 0));
    plist_dict_set_item(font, "NSName", plist_new_uid(nameUid));
    plist_dict_set_item(font, "NSSize", plist_new_real(size));
    return b.add(font);
}

// A label written on iOS: "Label from iOS" in Avenir Heavy 17, sRGB 0.2 0.4 0.6 on half
// transparent white, centred.
QByteArray uikitLabelArchive()
{
    ArchiveBuilder b;
    const quint64 colorClass = addUIColorClass(b);
    const quint64 font = addUIFont(b, "Avenir-Heavy", 17.0, false);
    const quint64 foreground = b.add(uiColorObject(
        colorClass, 4, {{"UIRed", 0.2}, {"UIGreen", 0.4}, {"UIBlue", 0.6}, {"UIAlpha", 1.0}}, 2,
        "NSRGB", "0.2 0.4 0.6"));
    const quint64 background = b.add(
        uiColorObject(colorClass, 2, {{"UIWhite", 1.0}, {"UIAlpha", 0.5}}, 4, "NSWhite", "1 0.5"));
    plist_t paragraph =
        ArchiveBuilder::object(b.addClass("NSParagraphStyle", {"NSParagraphStyle", "NSObject"}));
    plist_dict_set_item(paragraph, "NSAlignment", plist_new_uint(2));
    plist_dict_set_item(paragraph, "NSTabStops", plist_new_uid(0));
    const quint64 style = b.add(paragraph);
    return b.finish(b.addAttributedString("Label from iOS", {{"NSFont", font},
                                                             {"NSColor", foreground},
                                                             {"NSBackgroundColor", background},
                                                             {"NSParagraphStyle", style}}));
}

QString corpusPath(const QString& name)
{
    return QStringLiteral(LOMIR_TEST_DATA_DIR "/../../fuzz/corpus/keyed_archive/") + name;
}

// A binary property list written byte by byte: objects given as raw bytes, with
// one-byte offsets and references.
QByteArray rawBinaryList(const std::vector<QByteArray>& objects, quint8 top)
{
    QByteArray data("bplist00");
    std::vector<quint8> offsets;
    for (const QByteArray& object : objects) {
        offsets.push_back(quint8(data.size()));
        data += object;
    }
    const auto tableOffset = quint8(data.size());
    for (quint8 offset : offsets)
        data += char(offset);
    QByteArray trailer(32, '\0');
    trailer[6] = 1; // offset size
    trailer[7] = 1; // reference size
    trailer[15] = char(objects.size());
    trailer[23] = char(top);
    trailer[31] = char(tableOffset);
    return data + trailer;
}

RichText severalRuns()
{
    // "Bold 0123 on yellow, under, struck 🙂 end" with one run per feature.
    RichText text;
    TextAttributes base;
    base.font = font(u"Helvetica"_s, 12);
    text.append(u"Bold"_s, [&] {
        TextAttributes bold = base;
        bold.font = font(u"Helvetica"_s, 12, true);
        return bold;
    }());
    text.append(u" digits "_s, base);
    text.append(u"0123"_s, [&] {
        TextAttributes red = base;
        red.foreground = Rgba{255, 0, 0, 255};
        return red;
    }());
    text.append(u" on "_s, base);
    text.append(u"yellow"_s, [&] {
        TextAttributes highlighted = base;
        highlighted.background = Rgba{255, 255, 0, 128};
        return highlighted;
    }());
    text.append(u", "_s, base);
    text.append(u"under"_s, [&] {
        TextAttributes underlined = base;
        underlined.underline = LineStyle::Double;
        return underlined;
    }());
    text.append(u", "_s, base);
    text.append(u"struck"_s, [&] {
        TextAttributes struck = base;
        struck.strikethrough = LineStyle::Single | LineStyle::PatternDash | LineStyle::ByWord;
        return struck;
    }());
    text.append(u" "_s, base);
    text.append(u"\U0001F642\U0001F680"_s, [&] {
        TextAttributes emoji = base;
        emoji.font = font(u"Apple Color Emoji"_s, 18);
        return emoji;
    }());
    text.append(u" end"_s, base);
    return text;
}

// Characters alternating between two attribute sets, one run each, built by joining
// halves (appending one run at a time would take quadratic time).
RichText alternating(int first, int count, const TextAttributes& even, const TextAttributes& odd)
{
    if (count == 1)
        return RichText(QString(QChar(u'a' + first % 26)), first % 2 == 0 ? even : odd);
    RichText left = alternating(first, count / 2, even, odd);
    left.append(alternating(first + count / 2, count - count / 2, even, odd));
    return left;
}

RichText everyAlignment()
{
    RichText text;
    const TextAlignment alignments[] = {TextAlignment::Left, TextAlignment::Right,
                                        TextAlignment::Center, TextAlignment::Justified,
                                        TextAlignment::Natural};
    int i = 0;
    for (TextAlignment alignment : alignments) {
        TextAttributes attributes;
        attributes.paragraph = aligned(alignment);
        text.append(QStringLiteral("Paragraph %1\n").arg(++i), attributes);
    }
    return text;
}

} // namespace

class TestKeyedArchive : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The run table on its own.
    void runTableNumbers_data();
    void runTableNumbers();
    void runTableOfRealSample();
    void runTableRefusals_data();
    void runTableRefusals();

    // Colour conversions against values macOS wrote.
    void genericRgbMatchesMacOs();

    // Real archives written by macOS.
    void attributedStringFixtures_data();
    void attributedStringFixtures();
    void textStorageFixtures_data();
    void textStorageFixtures();
    void sketchFixture();
    void standaloneColors_data();
    void standaloneColors();
    void standaloneFont();
    void fixturesReencode_data();
    void fixturesReencode();
    void standaloneArchivesAreNotText();

    // Round trips through the writer and the reader.
    void roundTrip_data();
    void roundTrip();
    void fontWithoutPostScriptName();
    void nulCharacter();
    void xmlForm();

    // What the writer puts in the archive.
    void emptyTextForm();
    void singleRunForm();
    void multiRunForm();
    void paragraphStyleKeys();
    void colorForm();
    void checkedByPythonPlistlib();

    // Other colour forms macOS writes.
    void otherColorForms_data();
    void otherColorForms();

    // Archives written by UIKit on iOS, and classes that cannot be read.
    void uikitLabel();
    void uikitColors_data();
    void uikitColors();
    void uikitFonts_data();
    void uikitFonts();
    void uikitStandaloneArchives();
    void uikitLabelInFuzzCorpus();
    void classHintsStandInOnlyForUnknownClasses();
    void unreadableClasses_data();
    void unreadableClasses();
    void unmodeledAttributesAreSkipped();

    // Hostile and broken archives.
    void truncatedArchives();
    void randomBytes();
    void nilRoot();
    void rootOfAnotherClass_data();
    void rootOfAnotherClass();
    void wrongTypes_data();
    void wrongTypes();
    void runTableMismatch_data();
    void runTableMismatch();
    void colorThatContainsItself();
    void binaryListThatContainsItself();
    void binaryListBomb();
    void repeatedReferences();
    void deeplyNestedLists();
    void manyRunsShareOneDictionary();
    void manyDistinctDictionaries();
    void oversizedArchive();
};

// ---------------------------------------------------------------------------------------

void TestKeyedArchive::runTableNumbers_data()
{
    QTest::addColumn<qint64>("value");
    QTest::addColumn<QByteArray>("encoded");
    // The examples of the format notes.
    QTest::newRow("3") << qint64(3) << QByteArray::fromHex("03");
    QTest::newRow("127") << qint64(127) << QByteArray::fromHex("7f");
    QTest::newRow("128") << qint64(128) << QByteArray::fromHex("8001");
    QTest::newRow("300") << qint64(300) << QByteArray::fromHex("ac02");
    QTest::newRow("16384") << qint64(16384) << QByteArray::fromHex("808001");
}

void TestKeyedArchive::runTableNumbers()
{
    QFETCH(qint64, value);
    QFETCH(QByteArray, encoded);
    const QByteArray table = encodeRunTable({{value, 0}});
    QCOMPARE(table, encoded + QByteArray(1, '\0'));
    const auto decoded = decodeRunTable(table, value, 1);
    QVERIFY(decoded.ok());
    QCOMPARE(decoded.value(), (std::vector<RunTableEntry>{{value, 0}}));
}

void TestKeyedArchive::runTableOfRealSample()
{
    // macOS 10.14's table for "0123456789" in four dictionaries.
    const QByteArray table = QByteArray::fromHex("010001010402020101030100");
    const auto decoded = decodeRunTable(table, 10, 4);
    QVERIFY(decoded.ok());
    const std::vector<RunTableEntry> expected{{1, 0}, {1, 1}, {4, 2}, {2, 1}, {1, 3}, {1, 0}};
    QCOMPARE(decoded.value(), expected);
    QCOMPARE(encodeRunTable(expected), table);
}

void TestKeyedArchive::runTableRefusals_data()
{
    QTest::addColumn<QByteArray>("table");
    QTest::addColumn<qint64>("length");
    QTest::addColumn<qint64>("dictionaries");
    QTest::newRow("ends early") << QByteArray::fromHex("0300") << qint64(5) << qint64(1);
    QTest::newRow("empty") << QByteArray() << qint64(1) << qint64(1);
    QTest::newRow("ends inside a pair") << QByteArray::fromHex("05") << qint64(5) << qint64(1);
    QTest::newRow("ends inside a number") << QByteArray::fromHex("85") << qint64(5) << qint64(1);
    QTest::newRow("run too long") << QByteArray::fromHex("0600") << qint64(5) << qint64(1);
    QTest::newRow("2^60 characters")
        << QByteArray::fromHex("8080808080808080801000") << qint64(5) << qint64(1);
    QTest::newRow("more than 64 bits")
        << QByteArray::fromHex("ffffffffffffffffff7f00") << qint64(5) << qint64(1);
    QTest::newRow("eleven-byte number")
        << QByteArray::fromHex("8080808080808080808000") << qint64(5) << qint64(1);
    QTest::newRow("index out of range") << QByteArray::fromHex("0501") << qint64(5) << qint64(1);
    QTest::newRow("no dictionaries") << QByteArray::fromHex("0500") << qint64(5) << qint64(0);
}

void TestKeyedArchive::runTableRefusals()
{
    QFETCH(QByteArray, table);
    QFETCH(qint64, length);
    QFETCH(qint64, dictionaries);
    const auto decoded = decodeRunTable(table, length, dictionaries);
    QVERIFY(!decoded.ok());
    QCOMPARE(decoded.error().code, kArchiveReadCorruptError);
    QCOMPARE(decoded.error().domain, u"NSCocoaErrorDomain"_s);
    QVERIFY(decoded.error().message.endsWith(u'.'));
}

void TestKeyedArchive::genericRgbMatchesMacOs()
{
    // macOS stored these sRGB colours with their generic-RGB equivalents (NSRGB) in the
    // text-storage fixtures.
    const Rgb gray = srgbToGenericRgb({0.87843, 0.87059, 0.83922});
    QVERIFY(qAbs(gray[0] - 0.8492285013) < 1e-5);
    QVERIFY(qAbs(gray[1] - 0.8409650326) < 1e-5);
    QVERIFY(qAbs(gray[2] - 0.8022917509) < 1e-5);
    // Pure red leaves the generic gamut; macOS clips green to 0 and maps blue slightly
    // differently, so only a close match is expected.
    const Rgb red = srgbToGenericRgb({1, 0, 0});
    QVERIFY(qAbs(red[0] - 0.9859541655) < 1e-4);
    QVERIFY(red[1] < 0);
    QVERIFY(qAbs(red[2] - 0.02694000863) < 3e-3);
    // The way back.
    const Rgb back = genericRgbToSrgb(gray);
    QVERIFY(qAbs(back[0] - 0.87843) < 1e-9);
    QVERIFY(qAbs(back[2] - 0.83922) < 1e-9);
    // Display P3 and sRGB share white and the transfer curve: greys stay grey.
    const Rgb p3Gray = displayP3ToSrgb({0.5, 0.5, 0.5});
    QVERIFY(qAbs(p3Gray[0] - 0.5) < 1e-9 && qAbs(p3Gray[1] - 0.5) < 1e-9);
    // P3 red is outside sRGB.
    const Rgb p3Red = displayP3ToSrgb({1, 0, 0});
    QVERIFY(p3Red[0] > 1.0 && p3Red[1] < 0.0);
    QCOMPARE(rgbaFromFractions(p3Red, 1.0), (Rgba{255, 0, 0, 255}));
}

// ---------------------------------------------------------------------------------------

void TestKeyedArchive::attributedStringFixtures_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("NSAttributedString") << u"scf-macos10.14-NSAttributedString.bplist"_s;
    QTest::newRow("NSMutableAttributedString")
        << u"scf-macos10.14-NSMutableAttributedString.bplist"_s;
}

void TestKeyedArchive::attributedStringFixtures()
{
    REQUIRE_SHARED_DIR();
    QFETCH(QString, file);
    const QByteArray archive = readFixture(file);
    QVERIFY(!archive.isEmpty());
    const auto text = unarchiveRichText(archive);
    QVERIFY2(text.ok(), qPrintable(text.ok() ? QString() : text.error().message));
    // Six runs over four dictionaries, all of the test's own keys ("Font", "Size"),
    // which mean nothing to a text system: the text reads as plain.
    QCOMPARE(text->string(), u"0123456789"_s);
    QCOMPARE(text.value(), RichText(u"0123456789"_s));
    QCOMPARE(text->runs().size(), std::size_t(1));
    QCOMPARE(text->runs().front().attributes, TextAttributes{});
}

void TestKeyedArchive::textStorageFixtures_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("string");
    QTest::addColumn<double>("size");
    QTest::addColumn<bool>("hasColor");
    QTest::addColumn<Rgba>("color");

    QTest::newRow("avenir13") << u"menubarnotes-textstorage-avenir13.bplist"_s << u" "_s << 13.0
                              << false << Rgba{};
    QTest::newRow("dark") << u"menubarnotes-textstorage-dark-srgb.bplist"_s << u"  \n "_s << 12.0
                          << true << Rgba{224, 222, 214, 204};
    QTest::newRow("light") << u"menubarnotes-textstorage-light-srgb.bplist"_s << u"  \n "_s << 12.0
                           << true << Rgba{0, 0, 0, 255};
    QTest::newRow("dark2") << u"menubarnotes-textstorage-dark2-srgb.bplist"_s << u"  \n"_s << 12.0
                           << true << Rgba{224, 222, 214, 204};
    QTest::newRow("light2") << u"menubarnotes-textstorage-light2-srgb.bplist"_s << u"  \n"_s << 12.0
                            << true << Rgba{0, 0, 0, 255};
}

void TestKeyedArchive::textStorageFixtures()
{
    REQUIRE_SHARED_DIR();
    QFETCH(QString, file);
    QFETCH(QString, string);
    QFETCH(double, size);
    QFETCH(bool, hasColor);
    QFETCH(Rgba, color);

    const auto text = unarchiveRichText(readFixture(file));
    QVERIFY2(text.ok(), qPrintable(text.ok() ? QString() : text.error().message));
    QCOMPARE(text->string(), string);
    const auto runs = text->runs();
    QCOMPARE(runs.size(), std::size_t(1));
    const TextAttributes& attributes = runs.front().attributes;

    QVERIFY(attributes.font.has_value());
    QCOMPARE(attributes.font->postScriptName, u"Avenir-Book"_s);
    QCOMPARE(attributes.font->family, u"Avenir"_s);
    QCOMPARE(attributes.font->pointSize, size);
    QVERIFY(!attributes.font->bold);
    QVERIFY(!attributes.font->italic);

    QCOMPARE(attributes.foreground.has_value(), hasColor);
    if (hasColor)
        QCOMPARE(*attributes.foreground, color);
    QVERIFY(!attributes.background.has_value());
    // NSUnderlineColor and NSStrikethroughColor are present, but no underline or
    // strikethrough style.
    QCOMPARE(attributes.underline, LineStyle::None);
    QCOMPARE(attributes.strikethrough, LineStyle::None);

    QVERIFY(attributes.paragraph.has_value());
    QCOMPARE(*attributes.paragraph, aligned(TextAlignment::Natural));
}

void TestKeyedArchive::sketchFixture()
{
    REQUIRE_SHARED_DIR();
    const auto text = unarchiveRichText(readFixture(u"react-sketchapp-sketch-myhothot.bplist"_s));
    QVERIFY2(text.ok(), qPrintable(text.ok() ? QString() : text.error().message));
    QCOMPARE(text->string(), u"My hot hot ABCD"_s);
    const auto runs = text->runs();
    QCOMPARE(runs.size(), std::size_t(1));
    const TextAttributes& attributes = runs.front().attributes;
    // Sketch's own font attribute and NSKern are not attributes labels have.
    QVERIFY(!attributes.font.has_value());
    QVERIFY(attributes.paragraph.has_value());
    QCOMPARE(*attributes.paragraph, aligned(TextAlignment::Natural));
    // Generic RGB 0.1878413977 0.5158641582 0.2267272481 (calibrated space, NSID 1)
    // converted to sRGB: 0.2282 0.5760 0.2910.
    QVERIFY(attributes.foreground.has_value());
    QCOMPARE(*attributes.foreground, (Rgba{58, 147, 74, 255}));
}

void TestKeyedArchive::standaloneColors_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<Rgba>("color");
    // Calibrated (generic) RGB 0.741176486 0.5764706135 0.9764705896 is sRGB
    // 0.7914 0.6609 0.9820.
    QTest::newRow("calibrated") << u"dracula-terminal-nscolor-calibratedrgb.bplist"_s
                                << Rgba{202, 169, 250, 255};
    // Device RGB is read as sRGB: 40/255, 42/255, 54/255.
    QTest::newRow("device") << u"dracula-terminal-nscolor-devicergb.bplist"_s
                            << Rgba{40, 42, 54, 255};
    // A Display P3 grey is the same grey in sRGB: 31/255.
    QTest::newRow("display P3") << u"alucard-terminal-nscolor-displayp3.bplist"_s
                                << Rgba{31, 31, 31, 255};
}

void TestKeyedArchive::standaloneColors()
{
    REQUIRE_SHARED_DIR();
    QFETCH(QString, file);
    QFETCH(Rgba, color);
    const auto read = unarchiveColor(readFixture(file));
    QVERIFY2(read.ok(), qPrintable(read.ok() ? QString() : read.error().message));
    QCOMPARE(read.value(), color);
}

void TestKeyedArchive::standaloneFont()
{
    REQUIRE_SHARED_DIR();
    const auto read = unarchiveFont(readFixture(u"dracula-terminal-nsfont-sfmono12.bplist"_s));
    QVERIFY2(read.ok(), qPrintable(read.ok() ? QString() : read.error().message));
    QCOMPARE(read->postScriptName, u"SFMono-Regular"_s);
    QCOMPARE(read->family, u"SF Mono"_s);
    QCOMPARE(read->pointSize, 12.0);
    QVERIFY(!read->bold);
    QVERIFY(!read->italic);
}

void TestKeyedArchive::fixturesReencode_data()
{
    QTest::addColumn<QString>("file");
    for (const char* name :
         {"scf-macos10.14-NSAttributedString.bplist",
          "scf-macos10.14-NSMutableAttributedString.bplist",
          "menubarnotes-textstorage-avenir13.bplist", "menubarnotes-textstorage-dark-srgb.bplist",
          "menubarnotes-textstorage-dark2-srgb.bplist",
          "menubarnotes-textstorage-light-srgb.bplist",
          "menubarnotes-textstorage-light2-srgb.bplist", "react-sketchapp-sketch-myhothot.bplist"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestKeyedArchive::fixturesReencode()
{
    REQUIRE_SHARED_DIR();
    QFETCH(QString, file);
    const auto original = unarchiveRichText(readFixture(file));
    QVERIFY(original.ok());
    const auto again = unarchiveRichText(archiveRichText(original.value()));
    QVERIFY2(again.ok(), qPrintable(again.ok() ? QString() : again.error().message));
    QCOMPARE(again.value(), original.value());
}

void TestKeyedArchive::standaloneArchivesAreNotText()
{
    REQUIRE_SHARED_DIR();
    const auto color =
        unarchiveRichText(readFixture(u"dracula-terminal-nscolor-devicergb.bplist"_s));
    QVERIFY(!color.ok());
    QCOMPARE(color.error().code, kArchiveReadCorruptError);
    QVERIFY(color.error().message.contains(u"NSColor"_s));

    const auto font = unarchiveRichText(readFixture(u"dracula-terminal-nsfont-sfmono12.bplist"_s));
    QVERIFY(!font.ok());
    QVERIFY(font.error().message.contains(u"NSFont"_s));

    const auto notColor =
        unarchiveColor(readFixture(u"menubarnotes-textstorage-avenir13.bplist"_s));
    QVERIFY(!notColor.ok());
    QVERIFY(notColor.error().message.contains(u"NSTextStorage"_s));

    const auto notFont = unarchiveFont(readFixture(u"dracula-terminal-nscolor-devicergb.bplist"_s));
    QVERIFY(!notFont.ok());
    QVERIFY(notFont.error().message.contains(u"NSColor"_s));
}

// ---------------------------------------------------------------------------------------

void TestKeyedArchive::roundTrip_data()
{
    QTest::addColumn<RichText>("text");

    QTest::newRow("empty") << RichText();
    QTest::newRow("plain") << RichText(u"Plain text, no attributes"_s);

    TextAttributes everything;
    everything.font = font(u"Times New Roman"_s, 14.5, true, true);
    everything.foreground = Rgba{12, 34, 56, 255};
    everything.background = Rgba{250, 240, 200, 77};
    ParagraphStyle paragraph;
    paragraph.alignment = TextAlignment::Center;
    paragraph.lineSpacing = 2.5;
    paragraph.paragraphSpacing = 6;
    paragraph.paragraphSpacingBefore = 3;
    paragraph.headIndent = 10;
    paragraph.firstLineHeadIndent = 20;
    paragraph.tailIndent = -5;
    paragraph.lineHeightMultiple = 1.25;
    everything.paragraph = paragraph;
    QTest::newRow("one run with everything") << RichText(u"Label\nsecond line"_s, everything);

    QTest::newRow("several runs") << severalRuns();
    QTest::newRow("every alignment") << everyAlignment();

    TextAttributes plainParagraph;
    plainParagraph.paragraph = ParagraphStyle{};
    QTest::newRow("default paragraph style") << RichText(u"x"_s, plainParagraph);

    RichText emojiOnly(u"\U0001F44D\U0001F3FD"_s); // thumbs up with a skin tone: four units
    TextAttributes colored;
    colored.foreground = Rgba{0, 128, 255, 255};
    emojiOnly.setAttributes(2, 2, colored);
    QTest::newRow("runs inside an emoji sequence") << emojiOnly;

    // Enough characters that run lengths take several bytes.
    RichText longText(QString(20000, u'a'));
    TextAttributes underlined;
    underlined.underline = LineStyle::Thick | LineStyle::PatternDot;
    longText.setAttributes(300, 16384, underlined);
    QTest::newRow("long runs") << longText;

    QTest::newRow("non-ASCII") << RichText(u"Größe: 5 × 3 cm — ½ €"_s, everything);
}

void TestKeyedArchive::roundTrip()
{
    QFETCH(RichText, text);
    const QByteArray archive = archiveRichText(text);
    QVERIFY(archive.startsWith("bplist00"));
    const auto read = unarchiveRichText(archive);
    QVERIFY2(read.ok(), qPrintable(read.ok() ? QString() : read.error().message));
    QCOMPARE(read->string(), text.string());
    QCOMPARE(read->runs(), text.runs());
    QCOMPARE(read.value(), text);
}

void TestKeyedArchive::fontWithoutPostScriptName()
{
    // A font chosen on Linux may have no PostScript name; the archive needs one, so the
    // writer derives it and the reader gets the same face back, now with the name.
    TextAttributes attributes;
    FontSpec liberation;
    liberation.family = u"Liberation Sans"_s;
    liberation.pointSize = 9;
    liberation.bold = true;
    attributes.font = liberation;
    const auto read = unarchiveRichText(archiveRichText(RichText(u"Label"_s, attributes)));
    QVERIFY(read.ok());
    const auto runs = read->runs();
    const FontSpec& font = *runs.front().attributes.font;
    QCOMPARE(font.postScriptName, u"LiberationSans-Bold"_s);
    QCOMPARE(font.family, u"Liberation Sans"_s);
    QVERIFY(font.bold);
    QVERIFY(!font.italic);
    QCOMPARE(font.pointSize, 9.0);
}

void TestKeyedArchive::nulCharacter()
{
    // The plist library cannot store NUL in a string; it becomes U+FFFD and the runs after
    // it keep their places.
    RichText text(u"a"_s);
    TextAttributes red;
    red.foreground = Rgba{255, 0, 0, 255};
    text.append(QString(QChar(u'\0')) + u"b"_s, red);
    const auto read = unarchiveRichText(archiveRichText(text));
    QVERIFY(read.ok());
    QCOMPARE(read->string(), u"a\uFFFDb"_s);
    QCOMPARE(read->runs().size(), std::size_t(2));
    QCOMPARE(read->runs()[1].location, 1);
    QCOMPARE(read->runs()[1].attributes, red);
}

void TestKeyedArchive::xmlForm()
{
    // The same archive as an XML property list, as libplist writes it.
    const RichText text = severalRuns();
    const QByteArray binary = archiveRichText(text);
    ParsedArchive parsed = parse(binary);
    char* xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(parsed.plist.get(), &xml, &length);
    QVERIFY(xml != nullptr);
    const QByteArray xmlArchive(xml, qsizetype(length));
    plist_to_xml_free(xml);
    QVERIFY(xmlArchive.contains("CF$UID"));
    const auto read = unarchiveRichText(xmlArchive);
    QVERIFY2(read.ok(), qPrintable(read.ok() ? QString() : read.error().message));
    QCOMPARE(read.value(), text);

    // Broken XML is refused.
    const auto broken = unarchiveRichText(xmlArchive.left(xmlArchive.size() / 2));
    QVERIFY(!broken.ok());
    QCOMPARE(broken.error().code, kArchiveReadCorruptError);
    QVERIFY2(broken.error().message.contains(u"XML property list is malformed"_s),
             qPrintable(broken.error().message));
    QVERIFY(!broken.error().message.endsWith(u".)."_s));
}

// ---------------------------------------------------------------------------------------

void TestKeyedArchive::emptyTextForm()
{
    const ParsedArchive parsed = parse(archiveRichText(RichText()));
    QVERIFY(parsed.objects != nullptr);
    plist_t root = parsed.root();
    QCOMPARE(parsed.className(root), u"NSAttributedString"_s);
    QCOMPARE(plist_dict_get_size(root), 2u); // $class and NSString
    char* string = nullptr;
    plist_get_string_val(parsed.follow(plist_dict_get_item(root, "NSString")), &string);
    QCOMPARE(QByteArray(string), QByteArray());
    free(string);
}

void TestKeyedArchive::singleRunForm()
{
    // No attributes: one empty dictionary, no run table.
    ParsedArchive parsed = parse(archiveRichText(RichText(u"Hi"_s)));
    plist_t root = parsed.root();
    QVERIFY(plist_dict_get_item(root, "NSAttributeInfo") == nullptr);
    plist_t attributes = parsed.follow(plist_dict_get_item(root, "NSAttributes"));
    QCOMPARE(parsed.className(attributes), u"NSDictionary"_s);
    QCOMPARE(plist_array_get_size(plist_dict_get_item(attributes, "NS.keys")), 0u);
    QCOMPARE(plist_array_get_size(plist_dict_get_item(attributes, "NS.objects")), 0u);
    QCOMPARE(parsed.count(u"NSMutableArray"_s), 0);
    QCOMPARE(parsed.count(u"NSMutableData"_s), 0);

    // A font: NSName is a reference to a plain string, NSSize a real, NSfFlags 16.
    TextAttributes attributesWithFont;
    attributesWithFont.font = font(u"Avenir"_s, 13);
    parsed = parse(archiveRichText(RichText(u"Hi"_s, attributesWithFont)));
    plist_t dictionary = parsed.follow(plist_dict_get_item(parsed.root(), "NSAttributes"));
    plist_t keys = plist_dict_get_item(dictionary, "NS.keys");
    QCOMPARE(plist_array_get_size(keys), 1u);
    char* key = nullptr;
    plist_get_string_val(parsed.follow(plist_array_get_item(keys, 0)), &key);
    QCOMPARE(QByteArray(key), QByteArray("NSFont"));
    free(key);
    plist_t fontObject =
        parsed.follow(plist_array_get_item(plist_dict_get_item(dictionary, "NS.objects"), 0));
    QCOMPARE(parsed.className(fontObject), u"NSFont"_s);
    char* name = nullptr;
    plist_get_string_val(parsed.follow(plist_dict_get_item(fontObject, "NSName")), &name);
    QCOMPARE(QByteArray(name), QByteArray("Avenir-Book"));
    free(name);
    double size = 0;
    QCOMPARE(plist_get_node_type(plist_dict_get_item(fontObject, "NSSize")), PLIST_REAL);
    plist_get_real_val(plist_dict_get_item(fontObject, "NSSize"), &size);
    QCOMPARE(size, 13.0);
    uint64_t flags = 0;
    plist_get_uint_val(plist_dict_get_item(fontObject, "NSfFlags"), &flags);
    QCOMPARE(flags, uint64_t(16));
}

void TestKeyedArchive::multiRunForm()
{
    const RichText text = severalRuns();
    const ParsedArchive parsed = parse(archiveRichText(text));
    plist_t root = parsed.root();
    plist_t array = parsed.follow(plist_dict_get_item(root, "NSAttributes"));
    QCOMPARE(parsed.className(array), u"NSMutableArray"_s);
    plist_t info = parsed.follow(plist_dict_get_item(root, "NSAttributeInfo"));
    QCOMPARE(parsed.className(info), u"NSMutableData"_s);

    // Equal dictionaries are shared: the base attributes serve six runs.
    const auto runs = text.runs();
    QCOMPARE(runs.size(), std::size_t(12));
    std::vector<TextAttributes> distinct;
    for (const AttributeRun& run : runs) {
        if (std::find(distinct.begin(), distinct.end(), run.attributes) == distinct.end())
            distinct.push_back(run.attributes);
    }
    QCOMPARE(plist_array_get_size(plist_dict_get_item(array, "NS.objects")),
             uint32_t(distinct.size()));
    QCOMPARE(parsed.count(u"NSDictionary"_s), int(distinct.size()));

    // The run table counts UTF-16 units: the two emoji are four.
    uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(plist_dict_get_item(info, "NS.data"), &length);
    const auto table = decodeRunTable(QByteArray(bytes, qsizetype(length)), text.length(),
                                      qint64(distinct.size()));
    QVERIFY(table.ok());
    QCOMPARE(table->size(), runs.size());
    for (std::size_t i = 0; i < runs.size(); ++i)
        QCOMPARE(table.value()[i].length, qint64(runs[i].length));
    QCOMPARE(table.value()[10].length, qint64(4));

    // One class description per class, one colour space for all colours, one font
    // object per distinct font.
    for (const QString& name : {u"NSDictionary"_s, u"NSFont"_s, u"NSColor"_s, u"NSColorSpace"_s,
                                u"NSMutableArray"_s, u"NSMutableData"_s, u"NSAttributedString"_s})
        QCOMPARE(parsed.countClassDescriptions(name), 1);
    QCOMPARE(parsed.count(u"NSColorSpace"_s), 1);
    QCOMPARE(parsed.count(u"NSColor"_s), 2);
    QCOMPARE(parsed.count(u"NSFont"_s), 3);
}

void TestKeyedArchive::paragraphStyleKeys()
{
    RichText text;
    TextAttributes left;
    left.paragraph = aligned(TextAlignment::Left);
    text.append(u"left\n"_s, left);
    TextAttributes natural;
    natural.paragraph = aligned(TextAlignment::Natural);
    text.append(u"natural\n"_s, natural);
    TextAttributes spaced;
    spaced.paragraph = aligned(TextAlignment::Center);
    spaced.paragraph->paragraphSpacing = 4;
    text.append(u"centre\n"_s, spaced);
    TextAttributes again = natural; // same style as the second paragraph
    again.underline = LineStyle::Single;
    text.append(u"natural again"_s, again);

    const ParsedArchive parsed = parse(archiveRichText(text));
    QCOMPARE(parsed.count(u"NSParagraphStyle"_s), 3);
    for (uint32_t i = 1; i < plist_array_get_size(parsed.objects); ++i) {
        plist_t object = parsed.object(i);
        if (plist_get_node_type(object) != PLIST_DICT ||
            plist_dict_get_item(object, "$class") == nullptr ||
            parsed.className(object) != u"NSParagraphStyle"_s)
            continue;
        // Tab stops are always written, as nil; the tightening flag as macOS writes it.
        plist_t tabs = plist_dict_get_item(object, "NSTabStops");
        QCOMPARE(plist_get_node_type(tabs), PLIST_UID);
        uint64_t uid = 99;
        plist_get_uid_val(tabs, &uid);
        QCOMPARE(uid, uint64_t(0));
        QVERIFY(plist_dict_get_item(object, "NSAllowsTighteningForTruncation") != nullptr);
        plist_t alignment = plist_dict_get_item(object, "NSAlignment");
        plist_t spacing = plist_dict_get_item(object, "NSParagraphSpacing");
        QVERIFY(plist_dict_get_item(object, "NSLineSpacing") == nullptr);
        if (alignment == nullptr) {
            // Left is the default: only that style lacks the key.
            QVERIFY(spacing == nullptr);
            continue;
        }
        uint64_t value = 0;
        plist_get_uint_val(alignment, &value);
        QVERIFY(value == 4 || value == 2);
        QCOMPARE(spacing != nullptr, value == 2);
    }
}

void TestKeyedArchive::colorForm()
{
    TextAttributes attributes;
    attributes.foreground = Rgba{255, 0, 0, 255};
    attributes.background = Rgba{0, 0, 0, 204};
    const ParsedArchive parsed = parse(archiveRichText(RichText(u"Hi"_s, attributes)));
    int seen = 0;
    for (uint32_t i = 1; i < plist_array_get_size(parsed.objects); ++i) {
        plist_t object = parsed.object(i);
        if (plist_get_node_type(object) != PLIST_DICT ||
            plist_dict_get_item(object, "$class") == nullptr ||
            parsed.className(object) != u"NSColor"_s)
            continue;
        ++seen;
        uint64_t model = 0;
        plist_get_uint_val(plist_dict_get_item(object, "NSColorSpace"), &model);
        QCOMPARE(model, uint64_t(1));
        uint64_t length = 0;
        const char* components =
            plist_get_data_ptr(plist_dict_get_item(object, "NSComponents"), &length);
        const QByteArray componentText(components, qsizetype(length));
        const char* rgb = plist_get_data_ptr(plist_dict_get_item(object, "NSRGB"), &length);
        const QByteArray rgbText(rgb, qsizetype(length));
        QVERIFY(rgbText.endsWith('\0'));
        if (componentText == "1 0 0 1") {
            // Alpha 1 is left out of NSRGB; red in generic RGB, clipped to the gamut.
            QVERIFY(rgbText.startsWith("0.98594"));
            QCOMPARE(rgbText.count(' '), 2);
        } else {
            QCOMPARE(componentText, QByteArray("0 0 0 0.8"));
            QCOMPARE(rgbText, QByteArray("0 0 0 0.8", 9) + '\0');
        }
        plist_t space = parsed.follow(plist_dict_get_item(object, "NSCustomColorSpace"));
        QCOMPARE(parsed.className(space), u"NSColorSpace"_s);
        uint64_t id = 0;
        plist_get_uint_val(plist_dict_get_item(space, "NSID"), &id);
        QCOMPARE(id, uint64_t(7));
        plist_t icc = parsed.follow(plist_dict_get_item(space, "NSICC"));
        QCOMPARE(plist_get_node_type(icc), PLIST_DATA);
        const char* profile = plist_get_data_ptr(icc, &length);
        QCOMPARE(length, uint64_t(3144));
        QCOMPARE(QByteArray(profile + 48, 8), QByteArray("IEC sRGB"));
    }
    QCOMPARE(seen, 2);
    QCOMPARE(parsed.count(u"NSColorSpace"_s), 1);
}

void TestKeyedArchive::checkedByPythonPlistlib()
{
    const QString python = QStandardPaths::findExecutable(u"python3"_s);
    if (python.isEmpty())
        QSKIP("python3 is not installed; the archive cannot be checked with plistlib.");

    const RichText text = severalRuns();
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString archivePath = dir.filePath(u"label.bplist"_s);
    QFile file(archivePath);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(archiveRichText(text));
    file.close();

    // What the script expects: the text and the run lengths in UTF-16 units, with each
    // run's dictionary identified by the first run that uses it.
    QJsonArray runs;
    std::vector<TextAttributes> distinct;
    for (const AttributeRun& run : text.runs()) {
        auto found = std::find(distinct.begin(), distinct.end(), run.attributes);
        const auto index = qint64(found - distinct.begin());
        if (found == distinct.end())
            distinct.push_back(run.attributes);
        runs.append(QJsonArray{run.length, index});
    }
    const QByteArray expected =
        QJsonDocument(QJsonObject{{u"text"_s, text.string()}, {u"runs"_s, runs}})
            .toJson(QJsonDocument::Compact);

    const QString script = uR"(
import json, plistlib, sys
data = plistlib.load(open(sys.argv[1], 'rb'))
expected = json.loads(sys.argv[2])
assert set(data) == {'$archiver', '$version', '$top', '$objects'}, sorted(data)
assert data['$archiver'] == 'NSKeyedArchiver', data['$archiver']
assert data['$version'] == 100000, data['$version']
objects = data['$objects']
assert objects[0] == '$null'
root_ref = data['$top']['root']
assert isinstance(root_ref, plistlib.UID), root_ref
root = objects[root_ref.data]
cls = objects[root['$class'].data]
assert cls['$classname'] == 'NSAttributedString', cls
assert cls['$classes'] == ['NSAttributedString', 'NSObject'], cls['$classes']
text = objects[root['NSString'].data]
assert text == expected['text'], (text, expected['text'])
info = objects[root['NSAttributeInfo'].data]
table = info['NS.data']
numbers, value, shift = [], 0, 0
for byte in table:
    value |= (byte & 0x7f) << shift
    shift += 7
    if not byte & 0x80:
        numbers.append(value)
        value, shift = 0, 0
pairs = [numbers[i:i + 2] for i in range(0, len(numbers), 2)]
assert pairs == expected['runs'], (pairs, expected['runs'])
assert sum(length for length, _ in pairs) == len(text.encode('utf-16-le')) // 2
array = objects[root['NSAttributes'].data]
assert objects[array['$class'].data]['$classname'] == 'NSMutableArray'
assert len(array['NS.objects']) == 1 + max(index for _, index in pairs)
print('archive ok')
)"_s;
    QProcess process;
    process.start(python, {u"-c"_s, script, archivePath, QString::fromUtf8(expected)});
    QVERIFY(process.waitForFinished(60000));
    const QByteArray output = process.readAllStandardOutput() + process.readAllStandardError();
    QVERIFY2(process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0,
             output.constData());
    QCOMPARE(output.trimmed(), QByteArray("archive ok"));
}

// ---------------------------------------------------------------------------------------

void TestKeyedArchive::otherColorForms_data()
{
    QTest::addColumn<int>("form");
    QTest::addColumn<Rgba>("expected");
    // 0: calibrated white "0.5 0.25"; 1: device white "1"; 2: catalog colour with a
    // fallback; 3: catalog colour known only by name; 4: components in a space known only
    // by a Display P3 profile; 5: components without a colour space (sRGB);
    // 6: device CMYK; 7: grey components.
    QTest::newRow("calibrated white") << 0 << Rgba{128, 128, 128, 64};
    QTest::newRow("device white") << 1 << Rgba{255, 255, 255, 255};
    QTest::newRow("catalog with fallback") << 2 << Rgba{51, 51, 51, 255};
    QTest::newRow("catalog by name") << 3 << Rgba{255, 255, 255, 255};
    QTest::newRow("ICC Display P3") << 4 << Rgba{255, 0, 0, 255};
    QTest::newRow("components alone") << 5 << Rgba{0, 128, 255, 255};
    QTest::newRow("device CMYK") << 6 << Rgba{0, 255, 255, 255};
    QTest::newRow("grey components") << 7 << Rgba{64, 64, 64, 128};
}

void TestKeyedArchive::otherColorForms()
{
    QFETCH(int, form);
    QFETCH(Rgba, expected);
    const QByteArray archive = archiveWithColor([form](ArchiveBuilder& b) -> quint64 {
        const quint64 colorClass = b.addClass("NSColor", {"NSColor", "NSObject"});
        switch (form) {
        case 0:
            return b.add(colorObject(colorClass, 3, "NSWhite", "0.5 0.25"));
        case 1:
            return b.add(colorObject(colorClass, 4, "NSWhite", "1"));
        case 2:
        case 3: {
            plist_t color = colorObject(colorClass, 6, nullptr, nullptr);
            plist_dict_set_item(color, "NSCatalogName",
                                plist_new_uid(b.add(plist_new_string("System"))));
            plist_dict_set_item(color, "NSColorName",
                                plist_new_uid(b.add(plist_new_string("textBackgroundColor"))));
            if (form == 2) {
                const quint64 fallback = b.add(colorObject(colorClass, 3, "NSWhite", "0.2"));
                plist_dict_set_item(color, "NSColor", plist_new_uid(fallback));
            }
            return b.add(color);
        }
        case 4: {
            const quint64 spaceClass = b.addClass("NSColorSpace", {"NSColorSpace", "NSObject"});
            plist_t space = ArchiveBuilder::object(spaceClass);
            const QByteArray profile = QByteArray(128, '\0') + "desc Display P3 profile";
            plist_dict_set_item(
                space, "NSICC",
                plist_new_uid(b.add(plist_new_data(profile.constData(), quint64(profile.size())))));
            const quint64 spaceUid = b.add(space);
            plist_t color = colorObject(colorClass, 1, "NSRGB", "1 0 0");
            plist_dict_set_item(color, "NSComponents", plist_new_data("1 0 0 1", 7));
            plist_dict_set_item(color, "NSCustomColorSpace", plist_new_uid(spaceUid));
            return b.add(color);
        }
        case 5: {
            plist_t color = colorObject(colorClass, 1, nullptr, nullptr);
            plist_dict_set_item(color, "NSComponents", plist_new_data("0 0.5019607843 1 1", 18));
            return b.add(color);
        }
        case 6:
            return b.add(colorObject(colorClass, 5, "NSCMYK", "1 0 0 0"));
        default: {
            plist_t color = colorObject(colorClass, 3, "NSWhite", "0.25 0.5");
            plist_dict_set_item(color, "NSComponents", plist_new_data("0.25 0.5", 8));
            return b.add(color);
        }
        }
    });
    const auto read = unarchiveRichText(archive);
    QVERIFY2(read.ok(), qPrintable(read.ok() ? QString() : read.error().message));
    const auto runs = read->runs();
    const TextAttributes& attributes = runs.front().attributes;
    QVERIFY(attributes.foreground.has_value());
    QCOMPARE(*attributes.foreground, expected);
}

// ---------------------------------------------------------------------------------------

void TestKeyedArchive::uikitLabel()
{
    const auto read = unarchiveRichText(uikitLabelArchive());
    QVERIFY2(read.ok(), qPrintable(read.ok() ? QString() : read.error().message));
    QCOMPARE(read->string(), u"Label from iOS"_s);
    const auto runs = read->runs();
    QCOMPARE(runs.size(), std::size_t(1));
    const TextAttributes& attributes = runs.front().attributes;
    QVERIFY(attributes.font.has_value());
    QCOMPARE(attributes.font->postScriptName, u"Avenir-Heavy"_s);
    QCOMPARE(attributes.font->family, u"Avenir"_s);
    QCOMPARE(attributes.font->pointSize, 17.0);
    QVERIFY(attributes.font->bold);
    QCOMPARE(attributes.foreground, std::optional(Rgba{51, 102, 153, 255}));
    QCOMPARE(attributes.background, std::optional(Rgba{255, 255, 255, 128}));
    QCOMPARE(attributes.paragraph, std::optional(aligned(TextAlignment::Center)));
}

void TestKeyedArchive::uikitColors_data()
{
    QTest::addColumn<int>("form");
    QTest::addColumn<Rgba>("expected");
    // 0: UIKit's and AppKit's keys. UIKit's components are more precise than the three
    // digits of NSRGB, and are the ones read: red 0.50392 is 128/255, "0.504" would be 129.
    QTest::newRow("RGB, both sets of keys") << 0 << Rgba{128, 64, 255, 255};
    // 1: a component also given in double precision, which is preferred (made to differ
    // from the single-precision value here, so that the test can tell).
    QTest::newRow("double precision") << 1 << Rgba{204, 0, 0, 255};
    // 2: a grey level and alpha.
    QTest::newRow("white, both sets of keys") << 2 << Rgba{51, 51, 51, 128};
    // 3: only AppKit's keys.
    QTest::newRow("AppKit keys only") << 3 << Rgba{0, 0, 255, 255};
    // 4: only UIKit's keys, without a colour space.
    QTest::newRow("UIKit keys only") << 4 << Rgba{255, 0, 0, 128};
    // 5: a component count UIKit does not write: AppKit's keys decide.
    QTest::newRow("other component count") << 5 << Rgba{0, 255, 0, 255};
}

void TestKeyedArchive::uikitColors()
{
    QFETCH(int, form);
    QFETCH(Rgba, expected);
    const QByteArray archive = archiveWithColor([form](ArchiveBuilder& b) -> quint64 {
        const quint64 colorClass = addUIColorClass(b);
        switch (form) {
        case 0:
            return b.add(uiColorObject(
                colorClass, 4,
                {{"UIRed", 0.50392}, {"UIGreen", 0.25}, {"UIBlue", 1.0}, {"UIAlpha", 1.0}}, 2,
                "NSRGB", "0.504 0.25 1"));
        case 1:
            return b.add(uiColorObject(colorClass, 4,
                                       {{"UIRed", 0.2},
                                        {"UIRed-Double", 0.8},
                                        {"UIGreen", 0.0},
                                        {"UIBlue", 0.0},
                                        {"UIAlpha", 1.0}},
                                       2, "NSRGB", "0.2 0 0"));
        case 2:
            return b.add(uiColorObject(colorClass, 2, {{"UIWhite", 0.2}, {"UIAlpha", 0.5}}, 4,
                                       "NSWhite", "0.2 0.5"));
        case 3:
            return b.add(uiColorObject(colorClass, 0, {}, 2, "NSRGB", "0 0 1"));
        case 4:
            return b.add(uiColorObject(
                colorClass, 4,
                {{"UIRed", 1.0}, {"UIGreen", 0.0}, {"UIBlue", 0.0}, {"UIAlpha", 0.5}}));
        default:
            return b.add(uiColorObject(colorClass, 3,
                                       {{"UIRed", 1.0}, {"UIGreen", 0.0}, {"UIBlue", 0.0}}, 2,
                                       "NSRGB", "0 1 0"));
        }
    });
    const auto read = unarchiveRichText(archive);
    QVERIFY2(read.ok(), qPrintable(read.ok() ? QString() : read.error().message));
    QCOMPARE(read->runs().front().attributes.foreground, std::optional(expected));
}

void TestKeyedArchive::uikitFonts_data()
{
    QTest::addColumn<int>("form");
    QTest::addColumn<QString>("postScriptName");
    QTest::addColumn<QString>("family");
    QTest::addColumn<double>("size");
    QTest::addColumn<bool>("bold");
    QTest::addColumn<bool>("italic");
    QTest::newRow("both sets of keys")
        << 0 << u"Georgia-Bold"_s << u"Georgia"_s << 17.0 << true << false;
    // iOS's own interface font has a private name, shown in a neutral family.
    QTest::newRow("system font") << 1 << u".SFUIText"_s << u"Helvetica"_s << 15.0 << false << false;
    QTest::newRow("UIKit keys only")
        << 2 << u"Menlo-Italic"_s << u"Menlo"_s << 9.0 << false << true;
    QTest::newRow("AppKit keys only")
        << 3 << u"Avenir-Heavy"_s << u"Avenir"_s << 13.0 << true << false;
}

void TestKeyedArchive::uikitFonts()
{
    QFETCH(int, form);
    QFETCH(QString, postScriptName);
    QFETCH(QString, family);
    QFETCH(double, size);
    QFETCH(bool, bold);
    QFETCH(bool, italic);
    ArchiveBuilder b;
    quint64 font = 0;
    switch (form) {
    case 0:
        font = addUIFont(b, "Georgia-Bold", 17.0, false);
        break;
    case 1:
        font = addUIFont(b, ".SFUIText", 15.0, true);
        break;
    case 2: {
        plist_t object = ArchiveBuilder::object(addUIFontClass(b));
        plist_dict_set_item(object, "UIFontName", plist_new_uid(b.addString("Menlo-Italic")));
        plist_dict_set_item(object, "UIFontPointSize", plist_new_real(9.0));
        font = b.add(object);
        break;
    }
    default: {
        plist_t object = ArchiveBuilder::object(addUIFontClass(b));
        plist_dict_set_item(object, "NSName", plist_new_uid(b.addString("Avenir-Heavy")));
        plist_dict_set_item(object, "NSSize", plist_new_real(13.0));
        font = b.add(object);
        break;
    }
    }
    const auto read = unarchiveRichText(b.finish(b.addAttributedString("Aa", {{"NSFont", font}})));
    QVERIFY2(read.ok(), qPrintable(read.ok() ? QString() : read.error().message));
    const std::optional<FontSpec> face = read->runs().front().attributes.font;
    QVERIFY(face.has_value());
    QCOMPARE(face->postScriptName, postScriptName);
    QCOMPARE(face->family, family);
    QCOMPARE(face->pointSize, size);
    QCOMPARE(face->bold, bold);
    QCOMPARE(face->italic, italic);
}

void TestKeyedArchive::uikitStandaloneArchives()
{
    // A colour and a font archived on their own, as iOS programs keep them in settings.
    ArchiveBuilder colorArchive;
    const quint64 color = colorArchive.add(
        uiColorObject(addUIColorClass(colorArchive), 4,
                      {{"UIRed", 0.0}, {"UIGreen", 0.4}, {"UIBlue", 0.2}, {"UIAlpha", 1.0}}, 2,
                      "NSRGB", "0 0.4 0.2"));
    const auto readColor = unarchiveColor(colorArchive.finish(color));
    QVERIFY2(readColor.ok(), qPrintable(readColor.ok() ? QString() : readColor.error().message));
    QCOMPARE(readColor.value(), (Rgba{0, 102, 51, 255}));

    ArchiveBuilder fontArchive;
    const quint64 font = addUIFont(fontArchive, "Courier-Bold", 11.0, false);
    const auto readFont = unarchiveFont(fontArchive.finish(font));
    QVERIFY2(readFont.ok(), qPrintable(readFont.ok() ? QString() : readFont.error().message));
    QCOMPARE(readFont->postScriptName, u"Courier-Bold"_s);
    QCOMPARE(readFont->pointSize, 11.0);
    QVERIFY(readFont->bold);
}

void TestKeyedArchive::uikitLabelInFuzzCorpus()
{
    // The fuzz corpus keeps the archive uikitLabelArchive() writes, so that its replay
    // goes through UIKit's colours and fonts.
    QFile file(corpusPath(u"uikit-label.bplist"_s));
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
    const QByteArray kept = file.readAll();
    QVERIFY(kept.contains("UIColor") && kept.contains("UIFont"));
    const auto fromCorpus = unarchiveRichText(kept);
    QVERIFY2(fromCorpus.ok(), qPrintable(fromCorpus.ok() ? QString() : fromCorpus.error().message));
    QCOMPARE(fromCorpus.value(), unarchiveRichText(uikitLabelArchive()).value());
}

void TestKeyedArchive::classHintsStandInOnlyForUnknownClasses()
{
    // The first hint this reader knows is used; the ones before it are passed over.
    const QByteArray laterHint = archiveWithColor([](ArchiveBuilder& b) -> quint64 {
        const quint64 colorClass =
            b.addClass("UIColor", {"UIColor", "NSObject"}, {"UIDeviceRGBColor", "NSColor"});
        return b.add(uiColorObject(colorClass, 0, {}, 2, "NSRGB", "1 1 0"));
    });
    const auto read = unarchiveRichText(laterHint);
    QVERIFY2(read.ok(), qPrintable(read.ok() ? QString() : read.error().message));
    QCOMPARE(read->runs().front().attributes.foreground, std::optional(Rgba{255, 255, 0, 255}));

    // A class the reader knows is read as itself, whatever its hints say: a font where a
    // colour belongs is a damaged archive, even with NSColor as a hint.
    const QByteArray knownClass = archiveWithColor([](ArchiveBuilder& b) -> quint64 {
        const quint64 fontClass = b.addClass("NSFont", {"NSFont", "NSObject"}, {"NSColor"});
        return b.add(uiColorObject(fontClass, 0, {}, 2, "NSRGB", "1 1 0"));
    });
    const auto refused = unarchiveRichText(knownClass);
    QVERIFY(!refused.ok());
    QCOMPARE(refused.error().code, kArchiveReadCorruptError);
    QCOMPARE(refused.error().message,
             u"The archive is damaged: where it should hold a colour, it holds an object of "
             u"class \u201cNSFont\u201d."_s);
}

void TestKeyedArchive::unreadableClasses_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("className");
    // 0: a colour of a drawing program's own class; 1: an attachment where a font
    // belongs; 2: a class whose hints name no class this reader knows either; 3: a root
    // object of another program's class.
    QTest::newRow("foreign colour") << 0 << u"MSColor"_s;
    QTest::newRow("attachment as a font") << 1 << u"NSTextAttachment"_s;
    QTest::newRow("no usable hint") << 2 << u"PaletteSwatch"_s;
    QTest::newRow("foreign root") << 3 << u"MyLabelDocument"_s;
}

void TestKeyedArchive::unreadableClasses()
{
    QFETCH(int, kind);
    QFETCH(QString, className);
    ArchiveBuilder b;
    quint64 root = 0;
    switch (kind) {
    case 0: {
        plist_t color = ArchiveBuilder::object(b.addClass("MSColor", {"MSColor", "NSObject"}));
        plist_dict_set_item(color, "red", plist_new_real(1.0));
        root = b.addAttributedString("Hello", {{"NSColor", b.add(color)}});
        break;
    }
    case 1: {
        const quint64 attachment = b.add(ArchiveBuilder::object(
            b.addClass("NSTextAttachment", {"NSTextAttachment", "NSObject"})));
        root = b.addAttributedString("Hello", {{"NSFont", attachment}});
        break;
    }
    case 2: {
        const quint64 swatch = b.add(ArchiveBuilder::object(
            b.addClass("PaletteSwatch", {"PaletteSwatch", "NSObject"}, {"PaletteColor"})));
        root = b.addAttributedString("Hello", {{"NSBackgroundColor", swatch}});
        break;
    }
    default: {
        plist_t document =
            ArchiveBuilder::object(b.addClass("MyLabelDocument", {"MyLabelDocument", "NSObject"}));
        plist_dict_set_item(document, "title", plist_new_uid(b.addString("Jars")));
        root = b.add(document);
        break;
    }
    }
    const auto read = unarchiveRichText(b.finish(root));
    QVERIFY(!read.ok());
    QCOMPARE(read.error().domain, u"NSCocoaErrorDomain"_s);
    QCOMPARE(read.error().code, kArchiveReadCorruptError);
    QCOMPARE(read.error().message, u"The archive holds an object of class \u201c"_s + className +
                                       u"\u201d, which Lomir cannot read."_s);
}

void TestKeyedArchive::unmodeledAttributesAreSkipped()
{
    // Attributes that labels do not have are skipped whatever their values are, as macOS
    // skips attributes it has no use for: an attachment (its character stays in the
    // text) and a link, both of classes this reader cannot read.
    ArchiveBuilder b;
    plist_t attachment =
        ArchiveBuilder::object(b.addClass("NSTextAttachment", {"NSTextAttachment", "NSObject"}));
    plist_dict_set_item(attachment, "NSFileWrapper",
                        plist_new_uid(b.add(ArchiveBuilder::object(
                            b.addClass("NSFileWrapper", {"NSFileWrapper", "NSObject"})))));
    plist_t link = ArchiveBuilder::object(b.addClass("NSURL", {"NSURL", "NSObject"}));
    plist_dict_set_item(link, "NS.base", plist_new_uid(0));
    plist_dict_set_item(link, "NS.relative", plist_new_uid(b.addString("https://example.org")));
    const quint64 red =
        b.add(colorObject(b.addClass("NSColor", {"NSColor", "NSObject"}), 2, "NSRGB", "1 0 0"));
    const QByteArray archive = b.finish(b.addAttributedString(
        "See \xEF\xBF\xBC here",
        {{"NSAttachment", b.add(attachment)}, {"NSLink", b.add(link)}, {"NSColor", red}}));

    const auto read = unarchiveRichText(archive);
    QVERIFY2(read.ok(), qPrintable(read.ok() ? QString() : read.error().message));
    TextAttributes expected;
    expected.foreground = Rgba{255, 0, 0, 255};
    QCOMPARE(read.value(), RichText(u"See \uFFFC here"_s, expected));
}

// ---------------------------------------------------------------------------------------

void TestKeyedArchive::truncatedArchives()
{
    const QByteArray archive = archiveRichText(severalRuns());
    for (qsizetype length = 0; length < archive.size(); ++length) {
        const auto read = unarchiveRichText(archive.left(length));
        QVERIFY2(!read.ok(), qPrintable(QStringLiteral("prefix of %1 bytes").arg(length)));
        QCOMPARE(read.error().domain, u"NSCocoaErrorDomain"_s);
        QVERIFY(!read.error().message.isEmpty());
    }
}

void TestKeyedArchive::randomBytes()
{
    // Damaged files of every kind: random bytes, and a real archive with random bytes
    // changed. Any result is fine as long as it comes back.
    QRandomGenerator random(20261122);
    const QByteArray archive = archiveRichText(severalRuns());
    int failures = 0;
    for (int round = 0; round < 3000; ++round) {
        QByteArray data;
        if (round % 3 == 0) {
            data.resize(random.bounded(1, 400));
            for (char& c : data)
                c = char(random.bounded(256));
            if (round % 2 == 0)
                data.replace(0, 8, "bplist00");
        } else {
            data = archive;
            const int changes = random.bounded(1, 8);
            for (int i = 0; i < changes; ++i)
                data[random.bounded(qsizetype(data.size()))] = char(random.bounded(256));
        }
        const auto read = unarchiveRichText(data);
        if (!read.ok()) {
            ++failures;
            QVERIFY(read.error().message.endsWith(u'.'));
        }
        (void)unarchiveColor(data);
        (void)unarchiveFont(data);
    }
    QVERIFY(failures > 1000);
}

void TestKeyedArchive::nilRoot()
{
    ArchiveBuilder b;
    const auto read = unarchiveRichText(b.finish(0));
    QVERIFY(!read.ok());
    QCOMPARE(read.error().code, kArchiveRootNotAttributedString);
    QCOMPARE(read.error().domain, u"NSCocoaErrorDomain"_s);
    QCOMPARE(read.error().message,
             u"The archive is empty: its root object is nil, not an attributed string."_s);
}

void TestKeyedArchive::rootOfAnotherClass_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("className");
    QTest::newRow("plain string") << 0 << u"NSString"_s;
    QTest::newRow("number") << 1 << u"NSNumber"_s;
    QTest::newRow("NSColor") << 2 << u"NSColor"_s;
    QTest::newRow("NSMutableString") << 3 << u"NSMutableString"_s;
}

void TestKeyedArchive::rootOfAnotherClass()
{
    QFETCH(int, kind);
    QFETCH(QString, className);
    ArchiveBuilder b;
    quint64 root = 0;
    switch (kind) {
    case 0:
        root = b.add(plist_new_string("Just a string"));
        break;
    case 1:
        root = b.add(plist_new_uint(42));
        break;
    case 2: {
        const quint64 colorClass = b.addClass("NSColor", {"NSColor", "NSObject"});
        root = b.add(colorObject(colorClass, 2, "NSRGB", "1 0 0"));
        break;
    }
    default: {
        const quint64 stringClass =
            b.addClass("NSMutableString", {"NSMutableString", "NSString", "NSObject"});
        plist_t string = ArchiveBuilder::object(stringClass);
        plist_dict_set_item(string, "NS.string", plist_new_string("text"));
        root = b.add(string);
        break;
    }
    }
    const auto read = unarchiveRichText(b.finish(root));
    QVERIFY(!read.ok());
    QCOMPARE(read.error().code, kArchiveReadCorruptError);
    QCOMPARE(read.error().domain, u"NSCocoaErrorDomain"_s);
    QVERIFY2(read.error().message.contains(u"\u201c"_s + className + u"\u201d"_s),
             qPrintable(read.error().message));
}

void TestKeyedArchive::wrongTypes_data()
{
    QTest::addColumn<int>("change");
    const char* names[] = {
        "$objects not an array",
        "$top missing",
        "root not a UID",
        "root UID out of range",
        "$archiver wrong",
        "$version wrong",
        "NSString refers to a number",
        "NSString missing",
        "NSAttributes a string",
        "NS.keys not an array",
        "keys and values differ",
        "attribute key a number",
        "NSFont a string",
        "NSFont name a number",
        "NSSize a string",
        "colour components text",
        "colour without a space",
        "NSUnderline a string",
        "paragraph is a font",
        "$class not a UID",
        "class without a name",
        "NS.objects element not a UID",
        "run table a string",
        "attributes an array without run table",
        "NSColorSpace a string",
        "colour in pattern space",
        "NSAlignment a string",
        "class description a string",
        "class hints not a list",
        "UIKit colour component a string",
        "UIKit font size a string",
        "UIKit colour without components or colour space",
    };
    int i = 0;
    for (const char* name : names)
        QTest::newRow(name) << i++;
}

void TestKeyedArchive::wrongTypes()
{
    QFETCH(int, change);
    // Starts from a well-formed archive with every kind of object and breaks one thing.
    TextAttributes attributes;
    attributes.font = font(u"Menlo"_s, 11);
    attributes.foreground = Rgba{1, 2, 3, 255};
    attributes.paragraph = aligned(TextAlignment::Right);
    attributes.underline = LineStyle::Single;
    RichText text(u"Some text"_s, attributes);
    text.setAttributes(0, 4, TextAttributes{});
    const QByteArray good = archiveRichText(text);
    QVERIFY(unarchiveRichText(good).ok());

    // Finds the first object of a class.
    const auto find = [](ParsedArchive& p, const QString& className) -> plist_t {
        for (uint32_t i = 1; i < plist_array_get_size(p.objects); ++i) {
            plist_t object = p.object(i);
            if (plist_get_node_type(object) == PLIST_DICT &&
                plist_dict_get_item(object, "$class") != nullptr &&
                p.className(object) == className)
                return object;
        }
        return nullptr;
    };
    const auto attributeDictionary = [&](ParsedArchive& p) {
        plist_t array = p.follow(plist_dict_get_item(p.root(), "NSAttributes"));
        return p.follow(plist_array_get_item(plist_dict_get_item(array, "NS.objects"), 1));
    };

    // Turns the class of the first object of an AppKit class into the UIKit class that
    // stands for it (with no hints yet), and returns that object.
    const auto makeUIKitClass = [&](ParsedArchive& p, const QString& appKitClass,
                                    const char* uiKitClass) {
        plist_t object = find(p, appKitClass);
        plist_t description = p.follow(plist_dict_get_item(object, "$class"));
        plist_dict_set_item(description, "$classname", plist_new_string(uiKitClass));
        plist_t classes = plist_new_array();
        plist_array_append_item(classes, plist_new_string(uiKitClass));
        plist_array_append_item(classes, plist_new_string("NSObject"));
        plist_dict_set_item(description, "$classes", classes);
        return std::pair(object, description);
    };
    const auto hints = [](std::initializer_list<const char*> names) {
        plist_t array = plist_new_array();
        for (const char* name : names)
            plist_array_append_item(array, plist_new_string(name));
        return array;
    };

    // Points the attribute of that name at a new entry.
    const auto setAttributeValue = [&](ParsedArchive& p, const char* name, plist_t entry) {
        plist_t dictionary = attributeDictionary(p);
        plist_t keys = plist_dict_get_item(dictionary, "NS.keys");
        plist_t values = plist_dict_get_item(dictionary, "NS.objects");
        plist_array_append_item(p.objects, entry);
        const uint32_t uid = plist_array_get_size(p.objects) - 1;
        for (uint32_t i = 0; i < plist_array_get_size(keys); ++i) {
            char* key = nullptr;
            plist_get_string_val(p.follow(plist_array_get_item(keys, i)), &key);
            if (QByteArray(key) == name)
                plist_array_set_item(values, plist_new_uid(uid), i);
            free(key);
        }
    };

    const QByteArray broken = mutated(good, [&](ParsedArchive& p) {
        plist_t top = p.plist.get();
        plist_t root = p.root();
        switch (change) {
        case 0:
            plist_dict_set_item(top, "$objects", plist_new_string("objects"));
            break;
        case 1:
            plist_dict_remove_item(top, "$top");
            break;
        case 2:
            plist_dict_set_item(plist_dict_get_item(top, "$top"), "root", plist_new_uint(1));
            break;
        case 3:
            plist_dict_set_item(plist_dict_get_item(top, "$top"), "root", plist_new_uid(100000));
            break;
        case 4:
            plist_dict_set_item(top, "$archiver", plist_new_string("NSArchiver"));
            break;
        case 5:
            plist_dict_set_item(top, "$version", plist_new_uint(99999));
            break;
        case 6:
            plist_array_append_item(p.objects, plist_new_uint(7));
            plist_dict_set_item(root, "NSString",
                                plist_new_uid(plist_array_get_size(p.objects) - 1));
            break;
        case 7:
            plist_dict_remove_item(root, "NSString");
            break;
        case 8:
            plist_array_append_item(p.objects, plist_new_string("attributes"));
            plist_dict_set_item(root, "NSAttributes",
                                plist_new_uid(plist_array_get_size(p.objects) - 1));
            break;
        case 9:
            plist_dict_set_item(attributeDictionary(p), "NS.keys", plist_new_uid(3));
            break;
        case 10:
            plist_array_remove_item(plist_dict_get_item(attributeDictionary(p), "NS.keys"), 0);
            break;
        case 11:
            plist_array_append_item(p.objects, plist_new_real(1.5));
            plist_array_set_item(plist_dict_get_item(attributeDictionary(p), "NS.keys"),
                                 plist_new_uid(plist_array_get_size(p.objects) - 1), 0);
            break;
        case 12:
            setAttributeValue(p, "NSFont", plist_new_string("Menlo-Regular"));
            break;
        case 13:
            plist_dict_set_item(find(p, u"NSFont"_s), "NSName", plist_new_uint(3));
            break;
        case 14:
            plist_dict_set_item(find(p, u"NSFont"_s), "NSSize", plist_new_string("12"));
            break;
        case 15:
            plist_dict_set_item(find(p, u"NSColor"_s), "NSComponents", plist_new_string("1 0 0 1"));
            break;
        case 16:
            plist_dict_remove_item(find(p, u"NSColor"_s), "NSColorSpace");
            break;
        case 17:
            setAttributeValue(p, "NSUnderline", plist_new_string("single"));
            break;
        case 18: {
            // The paragraph style entry replaced by a font.
            plist_t paragraph = find(p, u"NSParagraphStyle"_s);
            plist_dict_set_item(paragraph, "$class",
                                plist_copy(plist_dict_get_item(find(p, u"NSFont"_s), "$class")));
            break;
        }
        case 19:
            plist_dict_set_item(root, "$class", plist_new_string("NSAttributedString"));
            break;
        case 20: {
            plist_t description = p.follow(plist_dict_get_item(root, "$class"));
            plist_dict_remove_item(description, "$classname");
            break;
        }
        case 21: {
            plist_t array = p.follow(plist_dict_get_item(root, "NSAttributes"));
            plist_array_set_item(plist_dict_get_item(array, "NS.objects"), plist_new_uint(4), 0);
            break;
        }
        case 22: {
            plist_array_append_item(p.objects, plist_new_string("01000100"));
            plist_dict_set_item(root, "NSAttributeInfo",
                                plist_new_uid(plist_array_get_size(p.objects) - 1));
            break;
        }
        case 23:
            plist_dict_remove_item(root, "NSAttributeInfo");
            break;
        case 24:
            plist_dict_set_item(find(p, u"NSColor"_s), "NSColorSpace", plist_new_string("1"));
            break;
        case 25: {
            plist_t color = find(p, u"NSColor"_s);
            plist_dict_remove_item(color, "NSComponents");
            plist_dict_set_item(color, "NSColorSpace", plist_new_uint(10));
            break;
        }
        case 26:
            plist_dict_set_item(find(p, u"NSParagraphStyle"_s), "NSAlignment",
                                plist_new_string("right"));
            break;
        case 27: {
            plist_t root = p.root();
            uint64_t uid = 0;
            plist_get_uid_val(plist_dict_get_item(root, "$class"), &uid);
            plist_array_set_item(p.objects, plist_new_string("NSAttributedString"), uint32_t(uid));
            break;
        }
        case 28: {
            const auto [color, description] = makeUIKitClass(p, u"NSColor"_s, "UIColor");
            plist_dict_set_item(description, "$classhints", plist_new_string("NSColor"));
            break;
        }
        case 29: {
            const auto [color, description] = makeUIKitClass(p, u"NSColor"_s, "UIColor");
            plist_dict_set_item(description, "$classhints", hints({"NSColor"}));
            plist_dict_set_item(color, "UIColorComponentCount", plist_new_uint(4));
            plist_dict_set_item(color, "UIRed", plist_new_string("1"));
            break;
        }
        case 30: {
            const auto [font, description] = makeUIKitClass(p, u"NSFont"_s, "UIFont");
            plist_dict_set_item(description, "$classhints", hints({"NSFont"}));
            plist_dict_remove_item(font, "NSSize");
            plist_dict_set_item(font, "UIFontPointSize", plist_new_string("11"));
            break;
        }
        default: {
            const auto [color, description] = makeUIKitClass(p, u"NSColor"_s, "UIColor");
            plist_dict_set_item(description, "$classhints", hints({"NSColor"}));
            for (const char* key : {"NSColorSpace", "NSComponents", "NSRGB", "NSCustomColorSpace"})
                plist_dict_remove_item(color, key);
            break;
        }
        }
    });
    QVERIFY(!broken.isEmpty());
    const auto read = unarchiveRichText(broken);
    QVERIFY(!read.ok());
    QCOMPARE(read.error().domain, u"NSCocoaErrorDomain"_s);
    QCOMPARE(read.error().code, kArchiveReadCorruptError);
    QVERIFY2(read.error().message.startsWith(u"The archive is damaged: "_s),
             qPrintable(read.error().message));
    QVERIFY(read.error().message.endsWith(u'.'));
}

void TestKeyedArchive::runTableMismatch_data()
{
    QTest::addColumn<QByteArray>("table");
    QTest::newRow("short of the text") << QByteArray::fromHex("0400");
    QTest::newRow("past the text") << QByteArray::fromHex("04000601");
    QTest::newRow("index out of range") << QByteArray::fromHex("04000602");
    QTest::newRow("2^60 characters") << QByteArray::fromHex("80808080808080808010000601");
    QTest::newRow("empty") << QByteArray();
}

void TestKeyedArchive::runTableMismatch()
{
    QFETCH(QByteArray, table);
    // "Some text" in two runs (4 + 5), with the run table replaced.
    RichText text(u"Some text"_s);
    TextAttributes underlined;
    underlined.underline = LineStyle::Single;
    text.setAttributes(4, 5, underlined);
    const QByteArray broken = mutated(archiveRichText(text), [&](ParsedArchive& p) {
        plist_t info = p.follow(plist_dict_get_item(p.root(), "NSAttributeInfo"));
        plist_dict_set_item(info, "NS.data",
                            plist_new_data(table.constData(), quint64(table.size())));
    });
    const auto read = unarchiveRichText(broken);
    QVERIFY(!read.ok());
    QCOMPARE(read.error().code, kArchiveReadCorruptError);
    QVERIFY2(read.error().message.contains(u"run table"_s), qPrintable(read.error().message));
}

void TestKeyedArchive::colorThatContainsItself()
{
    // A catalog colour whose fallback colour is itself, and two that name each other.
    for (int length : {1, 2}) {
        const QByteArray archive = archiveWithColor([length](ArchiveBuilder& b) -> quint64 {
            const quint64 colorClass = b.addClass("NSColor", {"NSColor", "NSObject"});
            const quint64 first = b.add(colorObject(colorClass, 6, nullptr, nullptr));
            const quint64 second =
                length == 1 ? first : b.add(colorObject(colorClass, 6, nullptr, nullptr));
            plist_dict_set_item(b.at(first), "NSColor", plist_new_uid(second));
            plist_dict_set_item(b.at(second), "NSColor", plist_new_uid(first));
            return first;
        });
        const auto read = unarchiveRichText(archive);
        QVERIFY(!read.ok());
        QVERIFY2(read.error().message.contains(u"contains itself"_s),
                 qPrintable(read.error().message));
    }

    // A chain of fallbacks deeper than any real archive.
    const QByteArray deep = archiveWithColor([](ArchiveBuilder& b) -> quint64 {
        const quint64 colorClass = b.addClass("NSColor", {"NSColor", "NSObject"});
        quint64 next = b.add(colorObject(colorClass, 2, "NSRGB", "1 0 0"));
        for (int i = 0; i < 100; ++i) {
            plist_t color = colorObject(colorClass, 6, nullptr, nullptr);
            plist_dict_set_item(color, "NSColor", plist_new_uid(next));
            next = b.add(color);
        }
        return next;
    });
    const auto read = unarchiveRichText(deep);
    QVERIFY(!read.ok());
    QVERIFY2(read.error().message.contains(u"nested too deeply"_s),
             qPrintable(read.error().message));
}

void TestKeyedArchive::binaryListThatContainsItself()
{
    // Object 0 is an array holding itself.
    const QByteArray selfArray = rawBinaryList({QByteArray::fromHex("a100")}, 0);
    auto read = unarchiveRichText(selfArray);
    QVERIFY(!read.ok());
    QVERIFY2(read.error().message.contains(u"contains itself"_s), qPrintable(read.error().message));

    // Two arrays holding each other.
    const QByteArray pair =
        rawBinaryList({QByteArray::fromHex("a101"), QByteArray::fromHex("a100")}, 0);
    read = unarchiveRichText(pair);
    QVERIFY(!read.ok());
    QVERIFY(read.error().message.contains(u"contains itself"_s));

    // A reference past the object table, and an offset past the objects.
    read = unarchiveRichText(rawBinaryList({QByteArray::fromHex("a105")}, 0));
    QVERIFY(!read.ok());
    QByteArray badOffset = rawBinaryList({QByteArray::fromHex("a0")}, 0);
    badOffset[9] = char(0xf0);
    read = unarchiveRichText(badOffset);
    QVERIFY(!read.ok());
}

void TestKeyedArchive::binaryListBomb()
{
    // 40 arrays, each holding the next one twice: 2^40 nodes once expanded, in a file
    // of about 130 bytes. It must be refused quickly.
    std::vector<QByteArray> objects;
    const int levels = 40;
    for (int i = 0; i < levels; ++i) {
        QByteArray array = QByteArray::fromHex("a2");
        array += char(i + 1);
        array += char(i + 1);
        objects.push_back(array);
    }
    objects.push_back(QByteArray::fromHex("5161")); // "a"
    const auto started = std::chrono::steady_clock::now();
    const auto read = unarchiveRichText(rawBinaryList(objects, 0));
    const auto elapsed = std::chrono::steady_clock::now() - started;
    QVERIFY(!read.ok());
    QVERIFY2(read.error().message.contains(u"repeats objects"_s) ||
                 read.error().message.contains(u"nested too deeply"_s),
             qPrintable(read.error().message));
    QVERIFY(elapsed < std::chrono::seconds(2));

    // The same doubling, shallow enough to pass the depth limit (20 levels: a million
    // nodes from a tiny file).
    objects.clear();
    for (int i = 0; i < 20; ++i) {
        QByteArray array = QByteArray::fromHex("a2");
        array += char(i + 1);
        array += char(i + 1);
        objects.push_back(array);
    }
    objects.push_back(QByteArray::fromHex("5161"));
    const auto shallow = unarchiveRichText(rawBinaryList(objects, 0));
    QVERIFY(!shallow.ok());
    QVERIFY2(shallow.error().message.contains(u"repeats objects"_s),
             qPrintable(shallow.error().message));
}

void TestKeyedArchive::repeatedReferences()
{
    // An attribute list that names one dictionary 100000 times: a file of about 100 kB
    // that libplist would expand into 100000 nodes of a hundred bytes each. No real
    // archive is that dense; it is refused before libplist reads it.
    RichText text(u"ab"_s);
    TextAttributes underlined;
    underlined.underline = LineStyle::Single;
    text.setAttributes(1, 1, underlined);
    const QByteArray repeated = mutated(archiveRichText(text), [](ParsedArchive& p) {
        plist_t array = p.follow(plist_dict_get_item(p.root(), "NSAttributes"));
        uint64_t first = 0;
        plist_get_uid_val(plist_array_get_item(plist_dict_get_item(array, "NS.objects"), 0),
                          &first);
        plist_t items = plist_new_array();
        for (int i = 0; i < 100000; ++i)
            plist_array_append_item(items, plist_new_uid(first));
        plist_dict_set_item(array, "NS.objects", items);
    });
    QVERIFY(repeated.size() < 200000);
    const auto read = unarchiveRichText(repeated);
    QVERIFY(!read.ok());
    QVERIFY2(read.error().message.contains(u"repeats objects"_s), qPrintable(read.error().message));
}

void TestKeyedArchive::deeplyNestedLists()
{
    // XML nested far beyond the stack of a recursive parser.
    const int depth = 200000;
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\">";
    xml += QByteArray("<array>").repeated(depth);
    xml += QByteArray("</array>").repeated(depth);
    xml += "</plist>";
    auto read = unarchiveRichText(xml);
    QVERIFY(!read.ok());
    QVERIFY2(read.error().message.contains(u"nested too deeply"_s),
             qPrintable(read.error().message));

    // The same in binary: array i holds array i + 1 (two-byte references).
    const int levels = 5000;
    QByteArray data("bplist00");
    std::vector<quint32> offsets;
    for (int i = 0; i < levels; ++i) {
        offsets.push_back(quint32(data.size()));
        data += char(0xa1);
        data += char((i + 1) >> 8);
        data += char((i + 1) & 0xff);
    }
    offsets.push_back(quint32(data.size()));
    data += char(0x50); // ""
    const auto tableOffset = quint32(data.size());
    for (quint32 offset : offsets) {
        data += char(offset >> 16);
        data += char(offset >> 8);
        data += char(offset);
    }
    QByteArray trailer(32, '\0');
    trailer[6] = 3;
    trailer[7] = 2;
    trailer[14] = char((levels + 1) >> 8);
    trailer[15] = char((levels + 1) & 0xff);
    trailer[29] = char(tableOffset >> 16);
    trailer[30] = char(tableOffset >> 8);
    trailer[31] = char(tableOffset);
    read = unarchiveRichText(data + trailer);
    QVERIFY(!read.ok());
    QVERIFY2(read.error().message.contains(u"nested too deeply"_s),
             qPrintable(read.error().message));
}

void TestKeyedArchive::manyRunsShareOneDictionary()
{
    // 50000 runs alternating between two dictionaries: the dictionaries are decoded once
    // and the text is assembled without quadratic work.
    const int runs = 50000;
    TextAttributes red;
    red.foreground = Rgba{255, 0, 0, 255};
    TextAttributes blue;
    blue.foreground = Rgba{0, 0, 255, 255};
    const RichText text = alternating(0, runs, red, blue);
    QCOMPARE(text.runs().size(), std::size_t(runs));
    const QByteArray archive = archiveRichText(text);
    const auto started = std::chrono::steady_clock::now();
    const auto read = unarchiveRichText(archive);
    const auto elapsed = std::chrono::steady_clock::now() - started;
    QVERIFY(read.ok());
    QCOMPARE(read.value(), text);
    QVERIFY2(elapsed < std::chrono::seconds(10),
             qPrintable(
                 QStringLiteral("took %1 ms")
                     .arg(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count())));
}

void TestKeyedArchive::manyDistinctDictionaries()
{
    // 20000 runs, each of a colour of its own: an object table of some 40000 entries.
    // An object is found by its place in the table, not by walking the table to it.
    const int runs = 20000;
    RichText text;
    for (int run = 0; run < runs; ++run) {
        TextAttributes attributes;
        attributes.foreground = Rgba{quint8(run), quint8(run >> 8), 0, 255};
        text.append(QString(QChar(u'a' + run % 26)), attributes);
    }
    const QByteArray archive = archiveRichText(text);
    const auto started = std::chrono::steady_clock::now();
    const auto read = unarchiveRichText(archive);
    const auto elapsed = std::chrono::steady_clock::now() - started;
    QVERIFY2(read.ok(), qPrintable(read.ok() ? QString() : read.error().message));
    QCOMPARE(read.value(), text);
    QVERIFY2(elapsed < std::chrono::seconds(10),
             qPrintable(
                 QStringLiteral("took %1 ms")
                     .arg(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count())));
}

void TestKeyedArchive::oversizedArchive()
{
    // Far beyond any label: refused before it is parsed.
    QByteArray huge("bplist00");
    huge += QByteArray(kMaxArchiveSize, 'x');
    const auto read = unarchiveRichText(huge);
    QVERIFY(!read.ok());
    QVERIFY2(read.error().message.contains(u"too large"_s), qPrintable(read.error().message));
}

QTEST_GUILESS_MAIN(TestKeyedArchive)
#include "tst_keyedarchive.moc"
