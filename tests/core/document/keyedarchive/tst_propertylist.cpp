#include "support/keyedarchivetests.h"

using namespace lomir;
using namespace lomir::testing;
using namespace Qt::StringLiterals;

// The property list under an archive: broken, hostile and oversized lists are refused in bounded
// time and memory.
class TestPropertyList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void truncatedArchives();
    void randomBytes();
    void binaryListThatContainsItself();
    void binaryListBomb();
    void deeplyNestedLists();
    void oversizedArchive();
};

void TestPropertyList::truncatedArchives()
{
    const QByteArray archive = archiveRichText(severalRuns());
    for (qsizetype length = 0; length < archive.size(); ++length) {
        const auto read = unarchiveRichText(archive.left(length));
        QVERIFY2(!read.ok(), qPrintable(QStringLiteral("prefix of %1 bytes").arg(length)));
        QCOMPARE(read.error().domain, u"NSCocoaErrorDomain"_s);
        QVERIFY(!read.error().message.isEmpty());
    }
}

void TestPropertyList::randomBytes()
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

void TestPropertyList::binaryListThatContainsItself()
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

void TestPropertyList::binaryListBomb()
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

void TestPropertyList::deeplyNestedLists()
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

void TestPropertyList::oversizedArchive()
{
    // Far beyond any label: refused before it is parsed.
    QByteArray huge("bplist00");
    huge += QByteArray(kMaxArchiveSize, 'x');
    const auto read = unarchiveRichText(huge);
    QVERIFY(!read.ok());
    QVERIFY2(read.error().message.contains(u"too large"_s), qPrintable(read.error().message));
}

QTEST_GUILESS_MAIN(TestPropertyList)
#include "tst_propertylist.moc"
