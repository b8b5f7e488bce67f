#include "core/base/errors.h"
#include "core/document/document.h"
#include "core/document/documentformats.h"
#include "core/document/recoveryfolder.h"
#include "support/files.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using namespace lomir;

namespace {

// The file beside a copy that says where the copy belongs.
QString placePath(const QString& copyPath)
{
    return copyPath.chopped(int(QStringLiteral(".lomir").size())) + QStringLiteral(".json");
}

} // namespace

class RecoveryFolderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aCopyAndItsPlaceAreWritten()
    {
        QTemporaryDir root;
        RecoveryFolder folder(root.path());
        Document document;
        const QString key = folder.newKey();

        const Status written = folder.write(key, document);

        QVERIFY2(written, qPrintable(written ? QString() : written.error().message));
        QVERIFY(QFileInfo(folder.copyPath(key)).isFile());
        const QJsonObject place =
            QJsonDocument::fromJson(testing::readFile(placePath(folder.copyPath(key)))).object();
        QCOMPARE(place.value(u"fileType").toString(), document.fileType());
        QCOMPARE(place.value(u"filePath").toString(), QString());
    }

    // The place is written as every document file is: a folder under its name is
    // refused as no file, in the file errors' domain and with their sentence.
    void aFolderWhereThePlaceBelongsIsRefused()
    {
        QTemporaryDir root;
        RecoveryFolder folder(root.path());
        Document document;
        const QString key = folder.newKey();
        QVERIFY(folder.write(key, document));
        const QString place = placePath(folder.copyPath(key));
        QVERIFY(QFile::remove(place));
        QVERIFY(QDir().mkdir(place));

        const Status written = folder.write(key, document);

        QVERIFY(!written);
        QCOMPARE(written.error().domain, QString(kFileErrorDomain));
        QCOMPARE(written.error().code, kNotARegularFile);
        QCOMPARE(written.error().message,
                 QStringLiteral("Cannot write “%1”: it is a folder, not a file.").arg(place));
    }

    // A root that cannot be made (here, below a file) is reported with its own code,
    // not one that means something else in the file errors' domain.
    void aRootThatCannotBeMadeIsReported()
    {
        QTemporaryDir parent;
        const QString file = parent.filePath(QStringLiteral("file"));
        QVERIFY(testing::writeFile(file, "not a folder"));
        const QString rootPath = file + QStringLiteral("/recovery");
        RecoveryFolder folder(rootPath);
        Document document;

        const Status written = folder.write(folder.newKey(), document);

        QVERIFY(!written);
        QCOMPARE(written.error().domain, QString(kFileErrorDomain));
        QCOMPARE(written.error().code, kFolderUnavailable);
        QCOMPARE(written.error().message,
                 QStringLiteral("Cannot make the folder “%1”.").arg(rootPath));
    }
};

QTEST_GUILESS_MAIN(RecoveryFolderTest)

#include "tst_recoveryfolder.moc"
