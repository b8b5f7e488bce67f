#include "support/keyedarchivetests.h"

using namespace lomir;
using namespace lomir::testing;
using namespace Qt::StringLiterals;

// Colors as archives hold them: conversions against values macOS wrote, every color form macOS and
// UIKit write, and colors that contain themselves.
class TestArchivedColor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void genericRgbMatchesMacOs();
    void standaloneColors_data();
    void standaloneColors();
    void otherColorForms_data();
    void otherColorForms();
    void uikitColors_data();
    void uikitColors();
    void colorThatContainsItself();
};

void TestArchivedColor::genericRgbMatchesMacOs()
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

void TestArchivedColor::standaloneColors_data()
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

void TestArchivedColor::standaloneColors()
{
    REQUIRE_SHARED_DIR();
    QFETCH(QString, file);
    QFETCH(Rgba, color);
    const auto read = unarchiveColor(readFixture(file));
    QVERIFY2(read.ok(), qPrintable(read.ok() ? QString() : read.error().message));
    QCOMPARE(read.value(), color);
}

void TestArchivedColor::otherColorForms_data()
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

void TestArchivedColor::otherColorForms()
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

void TestArchivedColor::uikitColors_data()
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

void TestArchivedColor::uikitColors()
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

void TestArchivedColor::colorThatContainsItself()
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

QTEST_GUILESS_MAIN(TestArchivedColor)
#include "tst_archivedcolor.moc"
