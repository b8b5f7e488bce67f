#include "support/keyedarchivetests.h"

using namespace lomir;
using namespace lomir::testing;
using namespace Qt::StringLiterals;

// The run table on its own, and archives whose run table does not match their text.
class TestRunTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runTableNumbers_data();
    void runTableNumbers();
    void runTableOfRealSample();
    void runTableRefusals_data();
    void runTableRefusals();
    void runTableMismatch_data();
    void runTableMismatch();
};

void TestRunTable::runTableNumbers_data()
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

void TestRunTable::runTableNumbers()
{
    QFETCH(qint64, value);
    QFETCH(QByteArray, encoded);
    const QByteArray table = encodeRunTable({{value, 0}});
    QCOMPARE(table, encoded + QByteArray(1, '\0'));
    const auto decoded = decodeRunTable(table, value, 1);
    QVERIFY(decoded.ok());
    QCOMPARE(decoded.value(), (std::vector<RunTableEntry>{{value, 0}}));
}

void TestRunTable::runTableOfRealSample()
{
    // macOS 10.14's table for "0123456789" in four dictionaries.
    const QByteArray table = QByteArray::fromHex("010001010402020101030100");
    const auto decoded = decodeRunTable(table, 10, 4);
    QVERIFY(decoded.ok());
    const std::vector<RunTableEntry> expected{{1, 0}, {1, 1}, {4, 2}, {2, 1}, {1, 3}, {1, 0}};
    QCOMPARE(decoded.value(), expected);
    QCOMPARE(encodeRunTable(expected), table);
}

void TestRunTable::runTableRefusals_data()
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

void TestRunTable::runTableRefusals()
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

void TestRunTable::runTableMismatch_data()
{
    QTest::addColumn<QByteArray>("table");
    QTest::newRow("short of the text") << QByteArray::fromHex("0400");
    QTest::newRow("past the text") << QByteArray::fromHex("04000601");
    QTest::newRow("index out of range") << QByteArray::fromHex("04000602");
    QTest::newRow("2^60 characters") << QByteArray::fromHex("80808080808080808010000601");
    QTest::newRow("empty") << QByteArray();
}

void TestRunTable::runTableMismatch()
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

QTEST_GUILESS_MAIN(TestRunTable)
#include "tst_runtable.moc"
