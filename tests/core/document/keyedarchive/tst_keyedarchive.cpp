#include "support/keyedarchivetests.h"

using namespace lomir;
using namespace lomir::testing;
using namespace Qt::StringLiterals;

// The reader: real archives written by macOS and by UIKit on iOS, classes that cannot be read, and
// archives of the wrong shape.
class TestKeyedArchive : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void attributedStringFixtures_data();
    void attributedStringFixtures();
    void textStorageFixtures_data();
    void textStorageFixtures();
    void sketchFixture();
    void standaloneFont();
    void fixturesReencode_data();
    void fixturesReencode();
    void standaloneArchivesAreNotText();
    void uikitLabel();
    void uikitFonts_data();
    void uikitFonts();
    void uikitStandaloneArchives();
    void uikitLabelInFuzzCorpus();
    void classHintsStandInOnlyForUnknownClasses();
    void unreadableClasses_data();
    void unreadableClasses();
    void unmodeledAttributesAreSkipped();
    void nilRoot();
    void rootOfAnotherClass_data();
    void rootOfAnotherClass();
    void wrongTypes_data();
    void wrongTypes();
    void repeatedReferences();
    void manyRunsShareOneDictionary();
    void manyDistinctDictionaries();
};

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
             u"The archive is damaged: where it should hold a color, it holds an object of "
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

QTEST_GUILESS_MAIN(TestKeyedArchive)
#include "tst_keyedarchive.moc"
