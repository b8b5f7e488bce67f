// `lomir print` as a user runs it: the PDF it writes is read back with pdftotext and
// pdfinfo, and every copy must stand where the sheet's geometry puts it, with its number.

#include "core/document/content.h"
#include "core/document/documentfile.h"
#include "core/document/documentformats.h"
#include "core/layout/measurement.h"
#include "support/files.h"
#include "support/lomirprocess.h"
#include "support/printedpdf.h"
#include "support/samplelabels.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>

using namespace lomir;
using namespace lomir::testing;

namespace {

// Written out here rather than taken from the code under test.
const QSizeF kLetter(612.0, 792.0);
const QSizeF kA4(210.0 * 72.0 / 25.4, 297.0 * 72.0 / 25.4);
const QMarginsF kHalfInch(36.0, 36.0, 36.0, 36.0);
constexpr double kSpacing = 4.0;
constexpr qint64 kFitToTextTag = 0;
constexpr qint64 kCustomSizeTag = 1;
constexpr qint64 kInchesMetric = 1;
// Text must land this close to where the geometry puts it, in points.
constexpr double kPlacementTolerance = 0.01;
// The settings key of the number of successful prints.
const QString kPrintCountKey = QStringLiteral("vadfjksldkjfdslkfjdsklfjk");

// A label as its document stores it.
struct Design
{
    qint64 sizeTag = kFitToTextTag;
    QSizeF customInches;  // the custom width and height, for the custom size
    bool spaced = false;  // the output spacing popup's item with tag 1
    QString quantity;     // the quantity field
    QString serialStart;  // the first serial number field
    int placeholderUnits; // as many as the fields' numbers need
    double zoom = 100.0;  // the zoom slider
};

Content recordOf(const Design& design)
{
    Content record;
    record.labelText = AttributedString(numberedLabel(design.placeholderUnits));
    record.quantity = design.quantity;
    record.serialStartFrom = design.serialStart;
    record.dimensions = design.sizeTag;
    record.metric = kInchesMetric;
    record.width = QString::number(design.customInches.width());
    record.height = QString::number(design.customInches.height());
    record.magnification = design.zoom;
    record.outputSpacing = design.spaced ? 1 : 0;
    return record;
}

// The size of a label that follows its text, with the run of placeholder units.
QSizeF textSize(int placeholderUnits)
{
    const RichText text = numberedLabel(placeholderUnits);
    return QSizeF(widestLineWidth(text), textHeight(text));
}

double roundedUpToSixPlaces(double value)
{
    return std::ceil(value * 1e6 - 1e-6) / 1e6;
}

// What the sheet's geometry makes of a print: the cell is the label plus the spacing,
// rounded up at the sixth decimal; whole cells fill the printable area across and down.
struct Sheet
{
    QSizeF paper;
    QMarginsF margins;
    QSizeF label;
    double spacing = 0.0;
    qint64 quantity = 0;
    qint64 serialStart = 0;

    QSizeF cell() const
    {
        return QSizeF(roundedUpToSixPlaces(label.width() + spacing),
                      roundedUpToSixPlaces(label.height() + spacing));
    }
    QSizeF printable() const
    {
        return QSizeF(paper.width() - margins.left() - margins.right(),
                      paper.height() - margins.top() - margins.bottom());
    }
    qint64 columns() const { return qint64(printable().width() / cell().width()); }
    qint64 rowsOnAPage() const { return qint64(printable().height() / cell().height()); }
    qint64 fullPage() const { return columns() * rowsOnAPage(); }
    qint64 pages() const
    {
        const qint64 rows = (quantity + columns() - 1) / columns();
        return (rows + rowsOnAPage() - 1) / rowsOnAPage();
    }
    int digits() const { return int(QString::number(serialStart + quantity).size()); }
};

// Where the sheet puts each copy, with its number.
std::vector<ExpectedCopy> copiesOnSheet(const Sheet& sheet)
{
    std::vector<ExpectedCopy> copies;
    for (qint64 copy = 0; copy < sheet.quantity; ++copy) {
        const qint64 row = copy / sheet.columns();
        const qint64 column = copy % sheet.columns();
        const qint64 rowOnPage = row % sheet.rowsOnAPage();
        const QPointF corner(
            sheet.margins.left() + double(column) * sheet.cell().width() + sheet.spacing / 2.0,
            sheet.margins.top() + double(rowOnPage) * sheet.cell().height() + sheet.spacing / 2.0);
        copies.push_back(
            ExpectedCopy{int(row / sheet.rowsOnAPage()) + 1, corner,
                         QStringLiteral("%1").arg(sheet.serialStart + copy, sheet.digits(), 10,
                                                  QLatin1Char('0'))});
    }
    return copies;
}

// Every copy read back is the expected one, on its page, with its number, where the
// geometry puts it.
void verifySheet(const QString& pdf, const Sheet& sheet)
{
    const PdfInfo info = pdfInfo(pdf);
    QCOMPARE(info.pages, int(sheet.pages()));
    // Qt's PDF writer gives the page's box in whole points; the labels are placed on the
    // exact paper from its top-left corner.
    QVERIFY2(
        info.pageSize.width() == std::round(sheet.paper.width()) &&
            info.pageSize.height() == std::round(sheet.paper.height()),
        qPrintable(
            QStringLiteral("page %1 x %2").arg(info.pageSize.width()).arg(info.pageSize.height())));

    const double largest = compareCopies(printedCopies(pdfWords(pdf)), copiesOnSheet(sheet));
    QVERIFY2(largest >= 0.0 && largest < kPlacementTolerance,
             qPrintable(QStringLiteral("a copy %1 points from its place").arg(largest)));
}

QString marginsArgument(const QMarginsF& margins)
{
    return QStringLiteral("%1,%2,%3,%4")
        .arg(margins.left())
        .arg(margins.top())
        .arg(margins.right())
        .arg(margins.bottom());
}

} // namespace

Q_DECLARE_METATYPE(Design)
Q_DECLARE_METATYPE(Sheet)

class TestPrintCommand : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString path(const QString& name) const { return m_dir.filePath(name); }

    // The environment of a run: the test's own, with folders of this test for the
    // settings and the runtime files, and the locale that decides the default paper.
    QProcessEnvironment environment(const QString& paperLocale = QStringLiteral("C.UTF-8")) const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), path(QStringLiteral("config")));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_dir.path());
        environment.remove(QStringLiteral("LC_ALL"));
        environment.insert(QStringLiteral("LANG"), QStringLiteral("C.UTF-8"));
        environment.insert(QStringLiteral("LC_PAPER"), paperLocale);
        return environment;
    }

    Run print(const QStringList& arguments, const QProcessEnvironment& environment) const
    {
        return runLomir(QStringList{QStringLiteral("print")} + arguments, 120000, {}, environment);
    }

    Run print(const QStringList& arguments) const { return print(arguments, environment()); }

    QString writeDesign(const QString& name, const Design& design) const
    {
        const QString file = path(name);
        const Status written = writeLabelFile(file, recordOf(design), QString(kLomirDocumentType));
        return written ? file : QString();
    }

    QString settingsFile() const { return path(QStringLiteral("config/Brenvik/Lomir.conf")); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        if (!popplerInstalled())
            QSKIP("pdftotext and pdfinfo (poppler-utils) are needed to read the PDFs back");
    }

    void copiesAsTheGeometrySays_data()
    {
        QTest::addColumn<Design>("design");
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<Sheet>("sheet");

        // A custom size of 1.5 x 0.75 inches on Letter with half-inch margins: 5 across,
        // 13 down.
        Design custom{kCustomSizeTag,       QSizeF(1.5, 0.75),     false,
                      QStringLiteral("25"), QStringLiteral("100"), 3};
        QTest::newRow("custom size, no spacing")
            << custom << QStringList{QStringLiteral("--paper"), QStringLiteral("Letter")}
            << Sheet{kLetter, kHalfInch, QSizeF(108.0, 54.0), 0.0, 25, 100};

        // With spacing the cells are 112 x 58: 4 across, 12 down, three pages for 100.
        Design spaced = custom;
        spaced.spaced = true;
        spaced.quantity = QStringLiteral("100");
        spaced.serialStart = QStringLiteral("1");
        QTest::newRow("custom size, spacing, three pages")
            << spaced << QStringList{QStringLiteral("--paper"), QStringLiteral("letter")}
            << Sheet{kLetter, kHalfInch, QSizeF(108.0, 54.0), kSpacing, 100, 1};

        // The quantity and first number typed in: the editor widens the run to four
        // digits (1000 + 30) and the label that follows its text grows with it.
        Design fit{kFitToTextTag, QSizeF(), false, QStringLiteral("5"), QStringLiteral("1"), 1};
        QTest::newRow("size of the text, numbers from the command line")
            << fit
            << QStringList{QStringLiteral("--quantity"), QStringLiteral("30"),
                           QStringLiteral("--serial-start"), QStringLiteral("1000")}
            << Sheet{kA4, kHalfInch, textSize(4), 0.0, 30, 1000};

        Design fitSpaced = fit;
        fitSpaced.spaced = true;
        fitSpaced.quantity = QStringLiteral("40");
        fitSpaced.serialStart = QStringLiteral("7");
        fitSpaced.placeholderUnits = 2;
        const QMarginsF margins(10.0, 20.0, 12.5, 5.0);
        QTest::newRow("size of the text, spacing, paper and margins of our own")
            << fitSpaced
            << QStringList{QStringLiteral("--paper"), QStringLiteral("100x150mm"),
                           QStringLiteral("--margins"), marginsArgument(margins)}
            << Sheet{QSizeF(100.0 * 72.0 / 25.4, 150.0 * 72.0 / 25.4),
                     margins,
                     textSize(2),
                     kSpacing,
                     40,
                     7};
    }

    void copiesAsTheGeometrySays()
    {
        QFETCH(Design, design);
        QFETCH(QStringList, options);
        QFETCH(Sheet, sheet);
        const QString file = writeDesign(QStringLiteral("label.lomir"), design);
        QVERIFY(!file.isEmpty());
        const QString pdf = path(QStringLiteral("copies.pdf"));
        const Run run = print(QStringList{file, QStringLiteral("-o"), pdf} + options);
        QVERIFY2(run.exitCode == 0, run.err.constData());
        verifySheet(pdf, sheet);
    }

    void fullPage_data()
    {
        QTest::addColumn<Design>("design");
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<Sheet>("sheet");

        // 1.5 x 0.7 inches on Letter with half-inch margins: 5 x 14 cells.
        Design custom{kCustomSizeTag,       QSizeF(1.5, 0.7),    false,
                      QStringLiteral("10"), QStringLiteral("1"), 2};
        const Sheet page{kLetter, kHalfInch, QSizeF(108.0, 50.4), 0.0, 70, 1};
        QVERIFY(page.columns() == 5 && page.rowsOnAPage() == 14);
        QTest::newRow("quantity 10 from 1: 70 copies, the run keeps two units")
            << custom << QStringList{QStringLiteral("--paper"), QStringLiteral("Letter")} << page;

        // Quantity 5 from 1 needs one digit, a full page of 70 needs two: the run is
        // widened for the print.
        Design oneUnit = custom;
        oneUnit.quantity = QStringLiteral("5");
        oneUnit.placeholderUnits = 1;
        QTest::newRow("quantity 5 from 1: the run widened to two units")
            << oneUnit << QStringList{QStringLiteral("--paper"), QStringLiteral("Letter")} << page;

        // The quantity given on the command line counts, not the document's.
        QTest::newRow("quantity from the command line")
            << custom
            << QStringList{QStringLiteral("--paper"), QStringLiteral("Letter"),
                           QStringLiteral("--quantity"), QStringLiteral("3")}
            << page;

        // A label that follows its text grows with the widened run, and the page is
        // filled with the larger cells. Paper 3 x 2 inches without margins.
        Design fit{kFitToTextTag, QSizeF(), false, QStringLiteral("1"), QStringLiteral("1"), 1};
        const QStringList small{QStringLiteral("--paper"), QStringLiteral("3x2in"),
                                QStringLiteral("--margins"), QStringLiteral("0,0,0,0")};
        const Sheet narrow{QSizeF(216.0, 144.0), QMarginsF(), textSize(1), 0.0, 0, 1};
        Sheet widened{QSizeF(216.0, 144.0), QMarginsF(), textSize(2), 0.0, 0, 1};
        widened.quantity = widened.fullPage();
        // The one-unit label fills the page with ten or more, so the run needs two units,
        // and the wider label fits fewer.
        QVERIFY(narrow.fullPage() >= 9 && widened.fullPage() < narrow.fullPage());
        QTest::newRow("size of the text: the label grows with the run") << fit << small << widened;

        // At a zoom of 200% the grown label is measured at twice its size.
        Design zoomed = fit;
        zoomed.zoom = 200.0;
        Sheet twice{QSizeF(216.0, 144.0), QMarginsF(), textSize(2) * 2.0, 0.0, 0, 1};
        twice.quantity = twice.fullPage();
        QTest::newRow("size of the text at 200%") << zoomed << small << twice;
    }

    void fullPage()
    {
        QFETCH(Design, design);
        QFETCH(QStringList, options);
        QFETCH(Sheet, sheet);
        const QString file = writeDesign(QStringLiteral("page.lomir"), design);
        const QByteArray before = readFile(file);
        const QString pdf = path(QStringLiteral("page.pdf"));
        const Run run = print(
            QStringList{file, QStringLiteral("-o"), pdf, QStringLiteral("--full-page")} + options);
        QVERIFY2(run.exitCode == 0, run.err.constData());
        verifySheet(pdf, sheet);
        // Printing never writes the document.
        QCOMPARE(readFile(file), before);
    }

    void defaultPaperFollowsTheLocale_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QSizeF>("paper");
        QTest::newRow("en_US: Letter") << QStringLiteral("en_US.UTF-8") << kLetter;
        QTest::newRow("en_CA: Letter") << QStringLiteral("en_CA.UTF-8") << kLetter;
        QTest::newRow("de_DE: A4") << QStringLiteral("de_DE.UTF-8") << kA4;
        QTest::newRow("C: A4") << QStringLiteral("C.UTF-8") << kA4;
    }

    void defaultPaperFollowsTheLocale()
    {
        QFETCH(QString, locale);
        QFETCH(QSizeF, paper);
        Design design{kCustomSizeTag,       QSizeF(1.5, 0.75),   false,
                      QStringLiteral("12"), QStringLiteral("1"), 2};
        const QString file = writeDesign(QStringLiteral("locale.lomir"), design);
        const QString pdf = path(QStringLiteral("locale.pdf"));
        const Run run = print({file, QStringLiteral("-o"), pdf}, environment(locale));
        QVERIFY2(run.exitCode == 0, run.err.constData());
        // Half-inch margins unless told otherwise.
        verifySheet(pdf, Sheet{paper, kHalfInch, QSizeF(108.0, 54.0), 0.0, 12, 1});
    }

    void labelTooLarge()
    {
        // 10 x 10 inches do not fit Letter less half-inch margins.
        Design design{kCustomSizeTag,      QSizeF(10.0, 10.0),  false,
                      QStringLiteral("1"), QStringLiteral("0"), 1};
        const QString file = writeDesign(QStringLiteral("large.lomir"), design);
        const QString pdf = path(QStringLiteral("large.pdf"));
        const Run run = print(
            {file, QStringLiteral("-o"), pdf, QStringLiteral("--paper"), QStringLiteral("Letter")});
        QCOMPARE(run.exitCode, 1);
        // The cell size alert's message and informative text, one line each.
        QCOMPARE(QString::fromUtf8(run.err),
                 QStringLiteral("The label is too large for the paper.\n"
                                "Make the label smaller, or print on larger paper or with "
                                "smaller margins.\n"));
        QVERIFY(!QFileInfo::exists(pdf));

        // A full page of a label that does not fit is refused the same way.
        const Run fullPage =
            print({file, QStringLiteral("-o"), pdf, QStringLiteral("--full-page")});
        QCOMPARE(fullPage.exitCode, 1);
        QCOMPARE(fullPage.err, run.err);
        QVERIFY(!QFileInfo::exists(pdf));
    }

    void errorsAreOneSentence_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("named");
        const QString label = QStringLiteral("LABEL");
        const QString pdf = QStringLiteral("PDF");
        QTest::newRow("no such file")
            << QStringList{QStringLiteral("MISSING"), QStringLiteral("-o"), pdf} << 1
            << QStringLiteral("missing.lomir");
        QTest::newRow("not a label document")
            << QStringList{QStringLiteral("GARBAGE"), QStringLiteral("-o"), pdf} << 1 << QString();
        QTest::newRow("unknown type")
            << QStringList{QStringLiteral("label.docx"), QStringLiteral("-o"), pdf} << 2
            << QStringLiteral("label.docx");
        QTest::newRow("unknown paper")
            << QStringList{label, QStringLiteral("-o"), pdf, QStringLiteral("--paper"),
                           QStringLiteral("A77")}
            << 2 << QStringLiteral("“A77”");
        QTest::newRow("paper without a unit")
            << QStringList{label, QStringLiteral("-o"), pdf, QStringLiteral("--paper"),
                           QStringLiteral("100x150")}
            << 2 << QStringLiteral("“100x150”");
        QTest::newRow("bad quantity")
            << QStringList{label, QStringLiteral("-o"), pdf, QStringLiteral("--quantity"),
                           QStringLiteral("ten")}
            << 2 << QStringLiteral("“ten”");
        QTest::newRow("quantity 0")
            << QStringList{label, QStringLiteral("-o"), pdf, QStringLiteral("--quantity"),
                           QStringLiteral("0")}
            << 2 << QStringLiteral("“0”");
        QTest::newRow("bad first number")
            << QStringList{label, QStringLiteral("-o"), pdf, QStringLiteral("--serial-start"),
                           QStringLiteral("-4")}
            << 2 << QStringLiteral("“-4”");
        QTest::newRow("bad margins")
            << QStringList{label, QStringLiteral("-o"), pdf, QStringLiteral("--margins"),
                           QStringLiteral("36,36")}
            << 2 << QStringLiteral("“36,36”");
        QTest::newRow("no output") << QStringList{label} << 2 << QStringLiteral("-o OUT.pdf");
        QTest::newRow("unwritable output")
            << QStringList{label, QStringLiteral("-o"), QStringLiteral("NOFOLDER")} << 1
            << QStringLiteral("copies.pdf");
        QTest::newRow("unknown printer")
            << QStringList{label, QStringLiteral("--printer"), QStringLiteral("NoSuchQueue42")} << 1
            << QStringLiteral("“NoSuchQueue42”");
    }

    void errorsAreOneSentence()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, named);
        Design design{kCustomSizeTag,      QSizeF(1.5, 0.75),   false,
                      QStringLiteral("3"), QStringLiteral("1"), 1};
        const QString label = writeDesign(QStringLiteral("error.lomir"), design);
        const QString garbage = path(QStringLiteral("garbage.lomir"));
        QVERIFY(writeFile(garbage, QByteArrayLiteral("{\"labelText\": 42")));
        const QString pdf = path(QStringLiteral("error.pdf"));
        QFile::remove(pdf);
        for (QString& argument : arguments) {
            if (argument == u"LABEL")
                argument = label;
            else if (argument == u"GARBAGE")
                argument = garbage;
            else if (argument == u"MISSING")
                argument = path(QStringLiteral("missing.lomir"));
            else if (argument == u"PDF")
                argument = pdf;
            else if (argument == u"NOFOLDER")
                argument = path(QStringLiteral("no folder/copies.pdf"));
        }
        const Run run = print(arguments);
        QCOMPARE(run.exitCode, exitCode);
        const QString sentence = oneLine(run);
        QVERIFY2(sentence.endsWith(u'.') && sentence.contains(named), qPrintable(sentence));
        QVERIFY(!QFileInfo::exists(pdf));
    }

    void deliberateStopStaysAStop()
    {
        // A quantity field holding "00" is a label of no copies: the program stops in the
        // grid arithmetic, as the editor's print command does.
        Design design{kCustomSizeTag,       QSizeF(1.5, 0.75),   false,
                      QStringLiteral("00"), QStringLiteral("1"), 1};
        const QString file = writeDesign(QStringLiteral("none.lomir"), design);
        const QString pdf = path(QStringLiteral("none.pdf"));
        const Run run = print({file, QStringLiteral("-o"), pdf});
        QCOMPARE(run.exitCode, -1); // ended by a signal, not an exit
        QVERIFY(!QFileInfo::exists(pdf));
    }

    void printsAreNotCounted()
    {
        QDir(path(QStringLiteral("config"))).removeRecursively();
        {
            QSettings settings(settingsFile(), QSettings::IniFormat);
            settings.setValue(kPrintCountKey, 4);
        }
        Design design{kCustomSizeTag,      QSizeF(1.5, 0.75),   false,
                      QStringLiteral("3"), QStringLiteral("1"), 1};
        const QString file = writeDesign(QStringLiteral("count.lomir"), design);
        const QString pdf = path(QStringLiteral("count.pdf"));
        for (int run = 0; run < 2; ++run)
            QCOMPARE(print({file, QStringLiteral("-o"), pdf}).exitCode, 0);
        QSettings settings(settingsFile(), QSettings::IniFormat);
        QCOMPARE(settings.value(kPrintCountKey).toLongLong(), qint64(4));
    }

    // Outside a desktop session there is no runtime folder: a print says nothing about it
    // and leaves nothing behind in the temporary folder.
    void aPrintOutsideASessionWritesNoWarning()
    {
        Design design{kCustomSizeTag,      QSizeF(1.5, 0.75),   false,
                      QStringLiteral("3"), QStringLiteral("1"), 1};
        const QString file = writeDesign(QStringLiteral("session.lomir"), design);
        const QString pdf = path(QStringLiteral("session.pdf"));
        const QString temporary = path(QStringLiteral("tmp"));
        QVERIFY(QDir().mkpath(temporary));
        QProcessEnvironment outside = environment();
        outside.remove(QStringLiteral("XDG_RUNTIME_DIR"));
        outside.insert(QStringLiteral("TMPDIR"), temporary);
        const Run run = print({file, QStringLiteral("-o"), pdf}, outside);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(QString::fromUtf8(run.err), QString());
        QVERIFY(QFileInfo::exists(pdf));
        QCOMPARE(QDir(temporary).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
                 QStringList());
    }

    void helpNamesEveryCommandAndOption()
    {
        const Run run = runLomir({QStringLiteral("--help")});
        QCOMPARE(run.exitCode, 0);
        const QString help = QString::fromUtf8(run.out);
        for (const char* word :
             {"lomir [FILE...]", "lomir convert IN OUT", "lomir inspect FILE", "lomir print FILE",
              "-o OUT.pdf", "--printer NAME", "--full-page", "--quantity N", "--serial-start N",
              "--paper NAME|WxHUNIT", "--margins L,T,R,B", "lomir --version", "lomir --help",
              "mm, in or pt", "36,36,36,36", "A4", "Letter", "status 1"})
            QVERIFY2(help.contains(QString::fromUtf8(word)), word);
    }
};

QTEST_MAIN(TestPrintCommand)
#include "tst_printcommand.moc"
