#include "core/base/documentlimits.h"
#include "core/document/documentformats.h"
#include "core/document/rtf/rtf.h"
#include "support/records.h"
#include "support/samplelabels.h"

#include <QLocale>
#include <QTest>

using namespace lomir;
using namespace lomir::testing;
using testing::compareSettings;

namespace {

// The record the editor builds when saving: its controls, not the document's record.
Content editedRecord()
{
    Content record;
    record.labelText = AttributedString(styledApricotLabel());
    record.quantity = QStringLiteral("48");
    record.serialStartFrom = QStringLiteral("7");
    record.width = QStringLiteral("50.8");
    record.height = QStringLiteral("25.4");
    record.dimensions = 1;
    record.metric = 1;
    record.magnification = 320.0;
    record.outputSpacing = 0;
    record.frameWidth = 144.0;
    record.frameHeight = 72.0;
    return record;
}

// A record whose label text is as many euro signs as asked: one UTF-16 unit each, but
// three bytes in UTF-8 and an escape in RTF, so every type is at its largest.
Content recordWithTextOfLength(int length)
{
    Content record;
    record.labelText = AttributedString(RichText(QString(length, QChar(0x20AC))));
    return record;
}

QString textTooLongMessage(int length)
{
    return QStringLiteral("The label’s text has %1 characters, more than the %2 a label can hold.")
        .arg(QLocale().toString(length), QLocale().toString(kMaxLabelTextLength));
}

// The message of a failed result, for the log; empty when it succeeded.
template <typename T> QByteArray failure(const Result<T>& result)
{
    return result ? QByteArray() : result.error().message.toUtf8();
}

void addTheThreeTypes()
{
    QTest::addColumn<QString>("type");
    QTest::newRow("plain text") << QString(kPlainTextType);
    QTest::newRow("rtf") << QString(kRtfType);
    QTest::newRow("own type") << QString(kLomirDocumentType);
}

} // namespace

class DocumentFormatsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void untouchedDocumentRoundTripsInOwnType()
    {
        const Content fresh;
        const Result<QByteArray> data = dataOfType(fresh, QString(kLomirDocumentType));
        QVERIFY(data.ok());
        Content reopened;
        reopened.quantity = QStringLiteral("something else");
        QVERIFY(readFromData(*data, QString(kLomirDocumentType), reopened).ok());
        QCOMPARE(reopened.labelText.nsAttributedString(), fresh.labelText.nsAttributedString());
        compareSettings(reopened, fresh);
    }

    void editedDocumentRoundTripsInOwnType()
    {
        const Content saved = editedRecord();
        const QByteArray data = dataOfType(saved, QString(kLomirDocumentType)).value();
        Content reopened;
        QVERIFY(readFromData(data, QString(kLomirDocumentType), reopened).ok());
        QCOMPARE(reopened.labelText.nsAttributedString(), styledApricotLabel());
        compareSettings(reopened, saved);
        QCOMPARE(reopened.frameWidth, saved.frameWidth);
        QCOMPARE(reopened.frameHeight, saved.frameHeight);
        QCOMPARE(dataOfType(reopened, QString(kLomirDocumentType)).value(), data);
    }

    void plainTextKeepsOnlyTheCharacters()
    {
        const QByteArray data = dataOfType(editedRecord(), QString(kPlainTextType)).value();
        QCOMPARE(data, QStringLiteral("Apricot\nbest before 2027 €").toUtf8());
        QVERIFY(!data.startsWith("\xEF\xBB\xBF"));

        Content reopened;
        QVERIFY(readFromData(data, QString(kPlainTextType), reopened).ok());
        QCOMPARE(reopened.labelText.nsAttributedString(),
                 RichText(QStringLiteral("Apricot\nbest before 2027 €")));
        QVERIFY(reopened.labelText.nsAttributedString().runs().front().attributes ==
                TextAttributes{});
        compareSettings(reopened, Content());
        QCOMPARE(reopened.quantity, QStringLiteral("10"));
        QCOMPARE(reopened.serialStartFrom, std::optional(QStringLiteral("0")));
        QCOMPARE(reopened.width, QStringLiteral("2.0"));
        QCOMPARE(reopened.height, QStringLiteral("12"));
        QCOMPARE(reopened.dimensions, 0);
        QCOMPARE(reopened.metric, 0);
        QCOMPARE(reopened.magnification, 500.0);
        QCOMPARE(reopened.outputSpacing, 1);
    }

    void plainTextThatIsNotUtf8CannotBeTakenIn()
    {
        Content record = editedRecord();
        const Status read =
            readFromData(QByteArray("caf\xE9 \xFF"), QString(kPlainTextType), record);
        QVERIFY(!read.ok());
        QCOMPARE(read.error().domain, QString(kUnreadableTextDomain));
        QCOMPARE(read.error().code, kPlainTextNotUtf8);
        QCOMPARE(record.labelText.nsAttributedString(), styledApricotLabel());
    }

    void rtfKeepsFontsSizesAndStylesButNoSetting()
    {
        const QByteArray data = dataOfType(editedRecord(), QString(kRtfType)).value();
        QVERIFY(data.startsWith("{\\rtf1"));
        Content reopened;
        QVERIFY(readFromData(data, QString(kRtfType), reopened).ok());
        const RichText& text = reopened.labelText.nsAttributedString();
        QCOMPARE(text.string(), styledApricotLabel().string());
        const TextAttributes& title = text.attributesAt(0);
        QVERIFY(title.font);
        QCOMPARE(title.font->pointSize, 18.0);
        QVERIFY(title.font->bold);
        QCOMPARE(title.foreground, std::optional(Rgba{200, 0, 0, 255}));
        const TextAttributes& body = text.attributesAt(10);
        QVERIFY(body.font);
        QCOMPARE(body.font->pointSize, 10.0);
        QVERIFY(body.font->italic);
        QCOMPARE(body.underline, LineStyle::Single);
        compareSettings(reopened, Content());
    }

    void rtfThatCannotBeReadCannotBeTakenIn()
    {
        Content record;
        const Status read = readFromData(QByteArray("just words"), QString(kRtfType), record);
        QVERIFY(!read.ok());
        QCOMPARE(read.error().domain, QString(kUnreadableTextDomain));
        QCOMPARE(read.error().code, kRtfUnreadable);
    }

    void missingSerialStartOpensAbsent()
    {
        QByteArray data = dataOfType(editedRecord(), QString(kLomirDocumentType)).value();
        data.replace(R"("serialStartFrom":"7",)", "");
        Content reopened;
        QVERIFY(readFromData(data, QString(kLomirDocumentType), reopened).ok());
        QVERIFY(!reopened.serialStartFrom);
    }

    void fileWithoutFrameOpensLikeOneWithIt()
    {
        const QByteArray withFrame =
            dataOfType(editedRecord(), QString(kLomirDocumentType)).value();
        QByteArray withoutFrame = withFrame;
        withoutFrame.replace(R"(,"frameWidth":144,"frameHeight":72)", "");
        QVERIFY(withoutFrame != withFrame);
        Content a;
        Content b;
        QVERIFY(readFromData(withFrame, QString(kLomirDocumentType), a).ok());
        QVERIFY(readFromData(withoutFrame, QString(kLomirDocumentType), b).ok());
        QCOMPARE(a.labelText.nsAttributedString(), b.labelText.nsAttributedString());
        compareSettings(a, b);
    }

    void missingQuantityFailsAndKeepsTheRecord()
    {
        QByteArray data = dataOfType(editedRecord(), QString(kLomirDocumentType)).value();
        data.replace(R"("quantity":"48",)", "");
        Content record = editedRecord();
        const Status read = readFromData(data, QString(kLomirDocumentType), record);
        QVERIFY(!read.ok());
        QCOMPARE(read.error().code, kDecodingValueNotFound);
        QVERIFY(read.error().message.contains(QStringLiteral("quantity")));
        compareSettings(record, editedRecord());
    }

    void theLongestLabelTextIsWrittenAndReadBack_data() { addTheThreeTypes(); }

    void theLongestLabelTextIsWrittenAndReadBack()
    {
        QFETCH(QString, type);
        const Content record = recordWithTextOfLength(kMaxLabelTextLength);
        const Result<QByteArray> data = dataOfType(record, type);
        QVERIFY2(data.ok(), failure(data).constData());
        QVERIFY(data->size() <= kMaxDocumentFileSize);
        Content reopened;
        const Status read = readFromData(*data, type, reopened);
        QVERIFY2(read.ok(), failure(read).constData());
        QCOMPARE(reopened.labelText.nsAttributedString().string(),
                 record.labelText.nsAttributedString().string());
    }

    void aLabelTextBeyondTheLongestIsRefused_data() { addTheThreeTypes(); }

    void aLabelTextBeyondTheLongestIsRefused()
    {
        QFETCH(QString, type);
        const Content record = recordWithTextOfLength(kMaxLabelTextLength + 1);
        const Result<QByteArray> written = dataOfType(record, type);
        QVERIFY(!written.ok());
        QCOMPARE(written.error().domain, QString(kFileErrorDomain));
        QCOMPARE(written.error().code, kLabelTextTooLong);
        QCOMPARE(written.error().message, textTooLongMessage(kMaxLabelTextLength + 1));

        // The same text in a file another program wrote is not taken in either, so the
        // editor never holds a text it could not save.
        const RichText& text = record.labelText.nsAttributedString();
        const QByteArray data = type == kPlainTextType ? text.string().toUtf8()
                                : type == kRtfType     ? writeRtf(text)
                                                       : record.encode().value();
        Content kept = editedRecord();
        const Status read = readFromData(data, type, kept);
        QVERIFY(!read.ok());
        QCOMPARE(read.error().code, kLabelTextTooLong);
        QCOMPARE(read.error().message, textTooLongMessage(kMaxLabelTextLength + 1));
        QCOMPARE(kept.labelText.nsAttributedString(), styledApricotLabel());
        compareSettings(kept, editedRecord());
    }

    void aDocumentLargerThanTheLargestFileIsRefused()
    {
        // The settings are saved as typed, so only the size of the whole file bounds them.
        Content record;
        record.quantity = QString(kMaxDocumentFileSize, QLatin1Char('9'));
        const Result<QByteArray> written = dataOfType(record, QString(kLomirDocumentType));
        QVERIFY(!written.ok());
        QCOMPARE(written.error().domain, QString(kFileErrorDomain));
        QCOMPARE(written.error().code, kFileTooLarge);
        QCOMPARE(written.error().message,
                 QStringLiteral("The document would take more than 16 MB, the largest file "
                                "Lomir opens."));
    }

    void unknownTypes_data()
    {
        QTest::addColumn<QString>("type");
        QTest::newRow("rtf in capitals") << QStringLiteral("public.RTF");
        QTest::newRow("plain text in capitals") << QStringLiteral("Public.Plain-Text");
        QTest::newRow("own type with a blank") << QStringLiteral("com.brenvik.lomir-doc ");
        QTest::newRow("html") << QStringLiteral("public.html");
        QTest::newRow("empty") << QString();
    }

    void unknownTypes()
    {
        QFETCH(QString, type);
        const Result<QByteArray> written = dataOfType(editedRecord(), type);
        QVERIFY(!written.ok());
        QCOMPARE(written.error().domain, QStringLiteral("NSOSStatusErrorDomain"));
        QCOMPARE(written.error().code, -4);
        QVERIFY(written.error().message.contains(QStringLiteral("“%1”").arg(type)));

        Content record = editedRecord();
        const Status read = readFromData(QByteArray("text"), type, record);
        QVERIFY(!read.ok());
        QCOMPARE(read.error().code, -4);
        QCOMPARE(record.quantity, QStringLiteral("48"));
    }

    void typesByFileName_data()
    {
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QString>("type");
        QTest::newRow("own") << QStringLiteral("/tmp/jam.lomir") << QString(kLomirDocumentType);
        QTest::newRow("own upper case")
            << QStringLiteral("JAM.LOMIR") << QString(kLomirDocumentType);
        QTest::newRow("text") << QStringLiteral("notes.txt") << QString(kPlainTextType);
        QTest::newRow("rtf") << QStringLiteral("a.b.rtf") << QString(kRtfType);
        QTest::newRow("unknown") << QStringLiteral("label.doc") << QString();
        QTest::newRow("none") << QStringLiteral("label") << QString();
    }

    void typesByFileName()
    {
        QFETCH(QString, fileName);
        QFETCH(QString, type);
        QCOMPARE(typeForFileName(fileName), type);
    }
};

QTEST_MAIN(DocumentFormatsTest)
#include "tst_documentformats.moc"
