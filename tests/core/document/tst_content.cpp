#include "core/document/content.h"
#include "core/document/keyedarchive/keyedarchive.h"
#include "support/archivebuilder.h"
#include "support/samplelabels.h"

#include <QFile>
#include <QTest>
#include <cmath>
#include <plist/plist.h>

using namespace lomir;
using namespace lomir::testing;

namespace {

// A complete record in JSON with the given label text and extra members.
QByteArray recordJson(const QString& labelText, const QByteArray& extra = {})
{
    return QByteArrayLiteral(R"({"labelText":")") + labelText.toLatin1() +
           QByteArrayLiteral(R"(","quantity":"25","width":"30","height":"10","dimensions":1,)"
                             R"("metric":1,"magnification":250.5,"outputSpacing":0)") +
           extra + '}';
}

QString emptyLabelBase64()
{
    return AttributedString(RichText()).encode();
}

// A keyed archive whose root is a plain string, not an attributed string.
QByteArray archiveOfString()
{
    testing::ArchiveBuilder archive;
    return archive.finish(archive.add(plist_new_string("just a string")));
}

QByteArray archiveWithNilRoot()
{
    return testing::ArchiveBuilder().finish(0);
}

} // namespace

class ContentTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults()
    {
        const Content content;
        QVERIFY(content.labelText.nsAttributedString().isEmpty());
        QCOMPARE(content.quantity, QStringLiteral("10"));
        QCOMPARE(content.serialStartFrom, std::optional(QStringLiteral("0")));
        QCOMPARE(content.width, QStringLiteral("2.0"));
        QCOMPARE(content.height, QStringLiteral("12"));
        QCOMPARE(content.dimensions, 0);
        QCOMPARE(content.metric, 0);
        QCOMPARE(content.magnification, 500.0);
        QCOMPARE(content.outputSpacing, 1);
        QVERIFY(!content.frameWidth);
        QVERIFY(!content.frameHeight);
    }

    void codingKeysAreTheFieldNamesInOrder()
    {
        QCOMPARE(Content::codingKeys(),
                 (QStringList{QStringLiteral("labelText"), QStringLiteral("quantity"),
                              QStringLiteral("serialStartFrom"), QStringLiteral("width"),
                              QStringLiteral("height"), QStringLiteral("dimensions"),
                              QStringLiteral("metric"), QStringLiteral("magnification"),
                              QStringLiteral("outputSpacing"), QStringLiteral("frameWidth"),
                              QStringLiteral("frameHeight")}));
    }

    void freshRecordEncodesItsDefaultsCompactInOrder()
    {
        const Result<QByteArray> json = Content().encode();
        QVERIFY(json.ok());
        const QByteArray expectedTail =
            "\",\"quantity\":\"10\",\"serialStartFrom\":\"0\",\"width\":\"2.0\","
            "\"height\":\"12\",\"dimensions\":0,\"metric\":0,\"magnification\":500,"
            "\"outputSpacing\":1}";
        QVERIFY2(json->startsWith("{\"labelText\":\""), json->constData());
        QVERIFY2(json->endsWith(expectedTail), json->constData());
        QVERIFY(!json->contains("frameWidth"));
        QVERIFY(!json->contains("frameHeight"));
        QVERIFY(!json->contains(' '));
        QVERIFY(!json->contains('\n'));
    }

    void optionalsAreWrittenOnlyWhenPresent()
    {
        Content content;
        content.serialStartFrom.reset();
        content.frameWidth = 72.5;
        content.frameHeight = 36.0;
        const QByteArray json = content.encode().value();
        QVERIFY(!json.contains("serialStartFrom"));
        QVERIFY2(json.endsWith(R"("outputSpacing":1,"frameWidth":72.5,"frameHeight":36})"),
                 json.constData());
    }

    void slashesAndControlCharactersAreEscaped()
    {
        Content content;
        content.quantity = QStringLiteral("a/b\"c\\d\n\u0001é");
        const QByteArray json = content.encode().value();
        QVERIFY2(json.contains(R"("quantity":"a\/b\"c\\d\n\u0001)"), json.constData());
        QVERIFY(json.contains(QStringLiteral("é").toUtf8()));
        QCOMPARE(Content::decode(json)->quantity, content.quantity);
    }

    void numbersAreWrittenInShortestForm_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("whole") << 500.0 << QByteArray("500");
        QTest::newRow("fraction") << 0.1 << QByteArray("0.1");
        QTest::newRow("negative") << -2.25 << QByteArray("-2.25");
        QTest::newRow("large") << 1e21 << QByteArray("1e+21");
    }

    void numbersAreWrittenInShortestForm()
    {
        QFETCH(double, value);
        QFETCH(QByteArray, text);
        Content content;
        content.magnification = value;
        const QByteArray json = content.encode().value();
        QVERIFY2(json.contains("\"magnification\":" + text + ','), json.constData());
        QCOMPARE(Content::decode(json)->magnification, value);
    }

    void numbersJsonCannotHoldFailToEncode()
    {
        Content content;
        content.frameWidth = std::nan("");
        const Result<QByteArray> json = content.encode();
        QVERIFY(!json.ok());
        QVERIFY(json.error().message.contains(QStringLiteral("frameWidth")));
    }

    void decodesAllFields()
    {
        const Result<Content> content = Content::decode(recordJson(
            emptyLabelBase64(), R"(,"serialStartFrom":"-3","frameWidth":100.25,"frameHeight":7)"));
        QVERIFY2(content.ok(), qPrintable(content.ok() ? QString() : content.error().message));
        QCOMPARE(content->quantity, QStringLiteral("25"));
        QCOMPARE(content->serialStartFrom, std::optional(QStringLiteral("-3")));
        QCOMPARE(content->width, QStringLiteral("30"));
        QCOMPARE(content->height, QStringLiteral("10"));
        QCOMPARE(content->dimensions, 1);
        QCOMPARE(content->metric, 1);
        QCOMPARE(content->magnification, 250.5);
        QCOMPARE(content->outputSpacing, 0);
        QCOMPARE(content->frameWidth, std::optional(100.25));
        QCOMPARE(content->frameHeight, std::optional(7.0));
    }

    void missingSerialStartIsAbsentNotDefault()
    {
        const Result<Content> content = Content::decode(recordJson(emptyLabelBase64()));
        QVERIFY(content.ok());
        QVERIFY(!content->serialStartFrom);
    }

    void nullSerialStartIsAbsent()
    {
        const auto content =
            Content::decode(recordJson(emptyLabelBase64(), R"(,"serialStartFrom":null)"));
        QVERIFY(content.ok());
        QVERIFY(!content->serialStartFrom);
    }

    void missingOrNullFrameIsAbsent()
    {
        const auto missing = Content::decode(recordJson(emptyLabelBase64()));
        QVERIFY(missing.ok());
        QVERIFY(!missing->frameWidth);
        QVERIFY(!missing->frameHeight);
        const auto null = Content::decode(
            recordJson(emptyLabelBase64(), R"(,"frameWidth":null,"frameHeight":null)"));
        QVERIFY(null.ok());
        QVERIFY(!null->frameWidth);
        QVERIFY(!null->frameHeight);
    }

    void unknownKeysAreIgnored()
    {
        const auto content = Content::decode(
            recordJson(emptyLabelBase64(), R"(,"colour":"red","nested":{"a":[1,2,{}]})"));
        QVERIFY(content.ok());
        QCOMPARE(content->quantity, QStringLiteral("25"));
    }

    void anySpellingAndOrderIsRead()
    {
        const QByteArray json =
            "\n{ \"outputSpacing\" : 2.0 ,\n  \"metric\":1e0, \"magnification\":5E2,"
            " \"dimensions\" : 7, \"height\":\"h\", \"width\" : \"w\",\n"
            " \"\\u0071uantity\": \"\\u0031\\u0032\", \"labelText\": \"" +
            emptyLabelBase64().replace(QStringLiteral("/"), QStringLiteral("\\/")).toLatin1() +
            "\" }\n";
        const Result<Content> content = Content::decode(json);
        QVERIFY2(content.ok(), qPrintable(content.ok() ? QString() : content.error().message));
        QCOMPARE(content->quantity, QStringLiteral("12"));
        QCOMPARE(content->outputSpacing, 2);
        QCOMPARE(content->metric, 1);
        QCOMPARE(content->magnification, 500.0);
        QCOMPARE(content->dimensions, 7);
    }

    void failures_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("mentions");

        const QString label = emptyLabelBase64();
        QTest::newRow("not json") << QByteArray("{\"labelText\":") << kDecodingCorrupt
                                  << QStringLiteral("not valid JSON");
        QTest::newRow("array") << QByteArray("[1,2]") << kDecodingCorrupt
                               << QStringLiteral("one JSON object");
        QTest::newRow("missing quantity") << recordJson(label).replace("\"quantity\":\"25\",", "")
                                          << kDecodingValueNotFound << QStringLiteral("“quantity”");
        QTest::newRow("missing label text")
            << QByteArray(R"({"quantity":"1","width":"1","height":"1","dimensions":0,)"
                          R"("metric":0,"magnification":1,"outputSpacing":0})")
            << kDecodingValueNotFound << QStringLiteral("“labelText”");
        QTest::newRow("missing output spacing")
            << recordJson(label).replace(",\"outputSpacing\":0", "") << kDecodingValueNotFound
            << QStringLiteral("“outputSpacing”");
        QTest::newRow("null width") << recordJson(label).replace("\"30\"", "null")
                                    << kDecodingValueNotFound << QStringLiteral("“width”");
        QTest::newRow("number for quantity") << recordJson(label).replace("\"25\"", "25")
                                             << kDecodingCorrupt << QStringLiteral("“quantity”");
        QTest::newRow("string for metric")
            << recordJson(label).replace("\"metric\":1", "\"metric\":\"1\"") << kDecodingCorrupt
            << QStringLiteral("“metric”");
        QTest::newRow("fraction for dimensions")
            << recordJson(label).replace("\"dimensions\":1", "\"dimensions\":1.5")
            << kDecodingCorrupt << QStringLiteral("“dimensions”");
        QTest::newRow("too large for dimensions")
            << recordJson(label).replace("\"dimensions\":1", "\"dimensions\":9223372036854775808")
            << kDecodingCorrupt << QStringLiteral("“dimensions”");
        QTest::newRow("bool for magnification")
            << recordJson(label).replace("250.5", "true") << kDecodingCorrupt
            << QStringLiteral("“magnification”");
        QTest::newRow("number for serial start")
            << recordJson(label, ",\"serialStartFrom\":3") << kDecodingCorrupt
            << QStringLiteral("“serialStartFrom”");
        QTest::newRow("string for frame width")
            << recordJson(label, ",\"frameWidth\":\"3\"") << kDecodingCorrupt
            << QStringLiteral("“frameWidth”");
        QTest::newRow("number for label text")
            << recordJson(label).replace(QByteArray("\"" + label.toLatin1() + "\""), "5")
            << kDecodingCorrupt << QStringLiteral("“labelText”");
    }

    void failures()
    {
        QFETCH(QByteArray, json);
        QFETCH(int, code);
        QFETCH(QString, mentions);
        const Result<Content> content = Content::decode(json);
        QVERIFY(!content.ok());
        QCOMPARE(content.error().domain, QStringLiteral("NSCocoaErrorDomain"));
        QCOMPARE(content.error().code, code);
        QVERIFY2(content.error().message.contains(mentions), qPrintable(content.error().message));
        QVERIFY(content.error().message.endsWith(QLatin1Char('.')));
    }

    void lineBreakInBase64IsNotBase64()
    {
        QString label = emptyLabelBase64();
        label.insert(8, QStringLiteral("\\n"));
        const Result<Content> content = Content::decode(recordJson(label));
        QVERIFY(!content.ok());
        QCOMPARE(content.error().code, kDecodingCorrupt);
        QVERIFY2(content.error().message.contains(
                     QStringLiteral("String is not a base64 encoded string")),
                 qPrintable(content.error().message));
    }

    void malformedBase64_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("bad letter") << QStringLiteral("YWJj*A==");
        QTest::newRow("no padding") << QStringLiteral("YWJjZA");
        QTest::newRow("padding inside") << QStringLiteral("YW=jZA==");
        QTest::newRow("blank") << QStringLiteral("YWJj ZGVm");
        QTest::newRow("url alphabet") << QStringLiteral("YWJj-_==");
    }

    void malformedBase64()
    {
        QFETCH(QString, text);
        const Result<AttributedString> decoded =
            AttributedString::decode(text, QStringLiteral("labelText"));
        QVERIFY(!decoded.ok());
        QVERIFY(decoded.error().message.contains(
            QStringLiteral("String is not a base64 encoded string")));
    }

    void archiveOfAnotherClassIsRefused()
    {
        const QString base64 = QString::fromLatin1(archiveOfString().toBase64());
        const Result<Content> content = Content::decode(recordJson(base64));
        QVERIFY(!content.ok());
        // Either the unarchiver refuses the class itself, or the record reports it.
        QCOMPARE(content.error().code, kDecodingCorrupt);
        QVERIFY2(
            content.error().message.contains(QStringLiteral("Data is not NSAttributedString")) ||
                content.error().domain == QStringLiteral("NSCocoaErrorDomain"),
            qPrintable(content.error().message));
    }

    void archiveWithoutRootIsNotAnAttributedString()
    {
        const QString base64 = QString::fromLatin1(archiveWithNilRoot().toBase64());
        const Result<Content> content = Content::decode(recordJson(base64));
        QVERIFY(!content.ok());
        QVERIFY2(content.error().message.contains(QStringLiteral("Data is not NSAttributedString")),
                 qPrintable(content.error().message));
    }

    void base64OfSomethingElseFails()
    {
        const QString base64 = QString::fromLatin1(QByteArray("hello, world").toBase64());
        const Result<Content> content = Content::decode(recordJson(base64));
        QVERIFY(!content.ok());
        QCOMPARE(content.error().domain, QStringLiteral("NSCocoaErrorDomain"));
    }

    void richTextSurvivesEncodeAndDecode()
    {
        Content content;
        content.labelText = AttributedString(styledPlumLabel());
        const Result<Content> decoded = Content::decode(content.encode().value());
        QVERIFY(decoded.ok());
        QCOMPARE(decoded->labelText.nsAttributedString(), styledPlumLabel());
    }

    void encodedLabelTextIsStandardBase64WithoutLineBreaks()
    {
        RichText longText(QString(2000, QLatin1Char('x')));
        const QString base64 = AttributedString(longText).encode();
        QVERIFY(!base64.contains(QLatin1Char('\n')));
        QVERIFY(!base64.contains(QLatin1Char('\r')));
        QCOMPARE(base64.size() % 4, 0);
        QCOMPARE(QByteArray::fromBase64(base64.toLatin1()), archiveRichText(longText));
    }

    void fileWeWroteRoundTripsToIdenticalBytes()
    {
        Content content;
        content.labelText = AttributedString(styledPlumLabel());
        content.quantity = QStringLiteral("0042");
        content.serialStartFrom = QStringLiteral("");
        content.width = QStringLiteral("25.4");
        content.height = QStringLiteral("not a number");
        content.dimensions = -3;
        content.metric = 7;
        content.magnification = 123.456;
        content.outputSpacing = 9;
        content.frameWidth = 283.46456692913387;
        content.frameHeight = 0.1;
        const QByteArray first = content.encode().value();
        const Result<Content> decoded = Content::decode(first);
        QVERIFY(decoded.ok());
        QCOMPARE(decoded->encode().value(), first);
    }

    void recordWrittenByOthersReencodesToAnEqualRecord_data()
    {
        QTest::addColumn<QString>("fixture");
        QTest::newRow("attributed string")
            << QStringLiteral("scf-macos10.14-NSAttributedString.bplist");
        QTest::newRow("mutable attributed string")
            << QStringLiteral("scf-macos10.14-NSMutableAttributedString.bplist");
        QTest::newRow("text storage")
            << QStringLiteral("menubarnotes-textstorage-light-srgb.bplist");
    }

    void recordWrittenByOthersReencodesToAnEqualRecord()
    {
        // A record as another program might write it: keys in another order, white space,
        // escaped slashes, and a label text archived by macOS itself.
        QFETCH(QString, fixture);
        QFile file(QStringLiteral(LOMIR_SHARED_DIR "/fixtures/keyed-archive/") + fixture);
        if (!file.exists())
            QSKIP("The shared fixtures folder is not beside the checkout.");
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray base64 = file.readAll().toBase64().replace("/", "\\/");
        const QByteArray json = "{\n  \"outputSpacing\" : 0,\n  \"frameHeight\" : 40.5,\n"
                                "  \"labelText\" : \"" +
                                base64 +
                                "\",\n  \"magnification\" : 1000,\n  \"metric\" : 1,\n"
                                "  \"dimensions\" : 4,\n  \"height\" : \"0.5\",\n"
                                "  \"width\" : \"1.25\",\n  \"quantity\" : \"100\"\n}";
        const Result<Content> read = Content::decode(json);
        QVERIFY2(read.ok(), qPrintable(read.ok() ? QString() : read.error().message));
        QVERIFY(!read->labelText.nsAttributedString().isEmpty());
        const Result<Content> again = Content::decode(read->encode().value());
        QVERIFY(again.ok());
        QCOMPARE(again->labelText.nsAttributedString(), read->labelText.nsAttributedString());
        QCOMPARE(again->quantity, read->quantity);
        QCOMPARE(again->serialStartFrom, read->serialStartFrom);
        QVERIFY(!again->serialStartFrom);
        QCOMPARE(again->width, read->width);
        QCOMPARE(again->height, read->height);
        QCOMPARE(again->dimensions, read->dimensions);
        QCOMPARE(again->metric, read->metric);
        QCOMPARE(again->magnification, read->magnification);
        QCOMPARE(again->outputSpacing, read->outputSpacing);
        QCOMPARE(again->frameWidth, read->frameWidth);
        QCOMPARE(again->frameHeight, std::optional(40.5));
    }

    void sharesTheTextItWasGiven()
    {
        auto text = std::make_shared<const RichText>(styledPlumLabel());
        const AttributedString wrapper(text);
        QCOMPARE(&wrapper.nsAttributedString(), text.get());
    }
};

QTEST_MAIN(ContentTest)
#include "tst_content.moc"
