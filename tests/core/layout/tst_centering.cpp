#include "core/layout/centering.h"

#include <QTest>

using namespace lomir;

class TestCentering : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void constrain_data()
    {
        QTest::addColumn<QRectF>("visible");
        QTest::addColumn<double>("currentWidth");
        QTest::addColumn<QRectF>("frame");
        QTest::addColumn<QMarginsF>("insets");
        QTest::addColumn<bool>("flipped");
        QTest::addColumn<double>("pixelsPerUnit");
        QTest::addColumn<QRectF>("expected");

        const QMarginsF none;
        // QMarginsF is (left, top, right, bottom).
        QTest::newRow("small label is centred")
            << QRectF(0, 0, 400, 300) << 400.0 << QRectF(0, 0, 100, 50) << none << true << 1.0
            << QRectF(-150, -125, 400, 300);
        QTest::newRow("centred wherever the view was")
            << QRectF(37, -80, 400, 300) << 400.0 << QRectF(0, 0, 100, 50) << none << false << 1.0
            << QRectF(-150, -125, 400, 300);
        QTest::newRow("centred around a label away from the origin")
            << QRectF(0, 0, 400, 300) << 400.0 << QRectF(20, 10, 100, 50) << none << true << 1.0
            << QRectF(-130, -115, 400, 300);

        const QRectF wide(0, 0, 800, 600);
        QTest::newRow("not past the right edge") << QRectF(500, 0, 400, 300) << 400.0 << wide
                                                 << none << true << 1.0 << QRectF(400, 0, 400, 300);
        QTest::newRow("not past the left edge") << QRectF(-20, 0, 400, 300) << 400.0 << wide << none
                                                << true << 1.0 << QRectF(0, 0, 400, 300);
        QTest::newRow("inside: stays") << QRectF(100, 0, 400, 300) << 400.0 << wide << none << true
                                       << 1.0 << QRectF(100, 0, 400, 300);
        QTest::newRow("not past the bottom edge")
            << QRectF(100, 400, 400, 300) << 400.0 << wide << none << true << 1.0
            << QRectF(100, 300, 400, 300);
        QTest::newRow("not past the top edge") << QRectF(100, -5, 400, 300) << 400.0 << wide << none
                                               << true << 1.0 << QRectF(100, 0, 400, 300);
        QTest::newRow("equal sizes keep the origin")
            << QRectF(-7, 9, 800, 600) << 800.0 << wide << none << true << 1.0
            << QRectF(-7, 9, 800, 600);
        QTest::newRow("wider label, shorter label: scroll across, centre down")
            << QRectF(500, 0, 400, 300) << 400.0 << QRectF(0, 0, 800, 100) << none << true << 1.0
            << QRectF(400, -100, 400, 300);

        // Top inset 10 in a flipped view pads the label 10 above: it is centred as if 60
        // tall starting at -10.
        const QRectF label(0, 0, 100, 50);
        const QMarginsF top10(0, 10, 0, 0);
        QTest::newRow("top inset, flipped") << QRectF(0, 0, 400, 300) << 400.0 << label << top10
                                            << true << 1.0 << QRectF(-150, -130, 400, 300);
        // Not flipped, the top inset is at the high-y edge.
        QTest::newRow("top inset, not flipped") << QRectF(0, 0, 400, 300) << 400.0 << label << top10
                                                << false << 1.0 << QRectF(-150, -120, 400, 300);
        QTest::newRow("top inset, flipped, larger label stops at the padded top")
            << QRectF(0, -50, 400, 300) << 400.0 << wide << top10 << true << 1.0
            << QRectF(0, -10, 400, 300);
        QTest::newRow("left and right insets")
            << QRectF(0, 0, 400, 300) << 400.0 << label << QMarginsF(10, 0, 30, 0) << true << 1.0
            << QRectF(-140, -125, 400, 300);

        // Insets are scaled by the change of width while the magnification changes.
        const QMarginsF left10(10, 0, 0, 0);
        QTest::newRow("zero current width scales insets by 1")
            << QRectF(0, 0, 400, 300) << 0.0 << label << left10 << true << 1.0
            << QRectF(-155, -125, 400, 300);
        QTest::newRow("visible width doubling doubles insets")
            << QRectF(0, 0, 400, 300) << 200.0 << label << left10 << true << 1.0
            << QRectF(-160, -125, 400, 300);

        // Every edge goes to the nearest device pixel.
        QTest::newRow("origin to the nearest pixel")
            << QRectF(0, 0, 400, 300) << 400.0 << QRectF(0, 0, 100.6, 50.2) << none << true << 1.0
            << QRectF(-150, -125, 400, 300);
        QTest::newRow("half pixels at twice the density")
            << QRectF(0, 0, 400, 300) << 400.0 << QRectF(0, 0, 100.6, 50.2) << none << true << 2.0
            << QRectF(-149.5, -125, 400, 300);
        QTest::newRow("both edges rounded, so the size may change")
            << QRectF(100.3, 0, 400.4, 300) << 400.4 << wide << none << true << 1.0
            << QRectF(100, 0, 401, 300);
    }

    void constrain()
    {
        QFETCH(QRectF, visible);
        QFETCH(double, currentWidth);
        QFETCH(QRectF, frame);
        QFETCH(QMarginsF, insets);
        QFETCH(bool, flipped);
        QFETCH(double, pixelsPerUnit);
        QFETCH(QRectF, expected);

        const QRectF result =
            constrainBoundsRect(visible, currentWidth, frame, insets, flipped, pixelsPerUnit);
        QCOMPARE(result, expected);
    }
};

QTEST_GUILESS_MAIN(TestCentering)
#include "tst_centering.moc"
