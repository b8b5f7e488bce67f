#include "support/keyedarchivetests.h"

using namespace lomir;
using namespace lomir::testing;
using namespace Qt::StringLiterals;

// What the writer puts in an archive, and round trips through the writer and the reader.
class TestArchiveWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void roundTrip_data();
    void roundTrip();
    void fontWithoutPostScriptName();
    void nulCharacter();
    void xmlForm();
    void emptyTextForm();
    void singleRunForm();
    void multiRunForm();
    void paragraphStyleKeys();
    void colorForm();
    void checkedByPythonPlistlib();
};

void TestArchiveWriter::roundTrip_data()
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

void TestArchiveWriter::roundTrip()
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

void TestArchiveWriter::fontWithoutPostScriptName()
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

void TestArchiveWriter::nulCharacter()
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

void TestArchiveWriter::xmlForm()
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

void TestArchiveWriter::emptyTextForm()
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

void TestArchiveWriter::singleRunForm()
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

void TestArchiveWriter::multiRunForm()
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

void TestArchiveWriter::paragraphStyleKeys()
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

void TestArchiveWriter::colorForm()
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

void TestArchiveWriter::checkedByPythonPlistlib()
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

QTEST_GUILESS_MAIN(TestArchiveWriter)
#include "tst_archivewriter.moc"
