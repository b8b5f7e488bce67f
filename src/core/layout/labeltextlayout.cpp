#include "core/layout/labeltextlayout.h"

#include "core/base/units.h"
#include "core/document/richtext/richtextdocument.h"
#include "core/layout/layoutresolution.h"

#include <QAbstractTextDocumentLayout>
#include <QPaintDevice>
#include <QPainter>
#include <QTextBlock>
#include <QTextCursor>
#include <algorithm>

// The resolution Qt's document layout takes block lengths of the vertical kind to be in;
// Qt exports it for exactly this kind of unit conversion.
QT_BEGIN_NAMESPACE
Q_GUI_EXPORT int qt_defaultDpi();
QT_END_NAMESPACE

namespace lomir {

namespace {

class PointLayoutDevice final : public QPaintDevice
{
public:
    explicit PointLayoutDevice(int dpi) : m_dpi(dpi) {}
    QPaintEngine* paintEngine() const override { return nullptr; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return m_dpi;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return int(QPaintDevice::devicePixelRatioFScale());
        case PdmDepth:
            return 32;
        case PdmNumColors:
            return 0;
        case PdmWidth:
        case PdmHeight:
        case PdmWidthMM:
        case PdmHeightMM:
            // Large enough for any label; the layout never asks for the device's size.
            return 1 << 24;
        }
        return 0;
    }

private:
    int m_dpi;
};

} // namespace

std::unique_ptr<QPaintDevice> makeLayoutDevice(int dpi)
{
    return std::make_unique<PointLayoutDevice>(dpi);
}

void prepareLabelDocument(QTextDocument& document, QPaintDevice* layoutDevice)
{
    const double unitsPerPoint = layoutDevice->logicalDpiY() / kPointsPerInch;
    document.documentLayout()->setPaintDevice(layoutDevice);
    document.setDocumentMargin(0.0);
    document.setUseDesignMetrics(true);
    // Unhinted, so that advances are the fonts' design widths at every resolution. Runs
    // take what their own formats leave unset from this font.
    QFont defaultQFont = toQFont(defaultFont());
    defaultQFont.setHintingPreference(QFont::PreferNoHinting);
    document.setDefaultFont(defaultQFont);
    QTextOption option = document.defaultTextOption();
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setUseDesignMetrics(true);
    option.setTabStopDistance(kDefaultTabInterval * unitsPerPoint);
    document.setDefaultTextOption(option);
}

// The converter gives block formats their lengths in points. Qt's document layout takes
// horizontal ones (indents) in device units and vertical ones (paragraph spacing, line
// heights) in pixels of its default resolution, which it then scales to the device's
// resolution; both are converted here so that every length comes out in exact points.
void convertBlockLengthsToLayoutUnits(QTextDocument& document, double unitsPerPoint)
{
    const double horizontal = unitsPerPoint;
    const double vertical = double(qt_defaultDpi()) / kPointsPerInch;
    QTextCursor cursor(&document);
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        QTextBlockFormat format = block.blockFormat();
        bool changed = false;
        auto scale = [&](int property, double factor) {
            if (format.hasProperty(property)) {
                format.setProperty(property, format.doubleProperty(property) * factor);
                changed = true;
            }
        };
        scale(QTextFormat::BlockLeftMargin, horizontal);
        scale(QTextFormat::BlockRightMargin, horizontal);
        scale(QTextFormat::TextIndent, horizontal);
        scale(QTextFormat::BlockTopMargin, vertical);
        scale(QTextFormat::BlockBottomMargin, vertical);
        if (format.lineHeightType() != QTextBlockFormat::SingleHeight &&
            format.lineHeightType() != QTextBlockFormat::ProportionalHeight)
            scale(QTextFormat::LineHeight, vertical);
        if (changed) {
            cursor.setPosition(block.position());
            cursor.setBlockFormat(format);
        }
    }
}

LabelTextLayout::LabelTextLayout(const RichText& text, std::optional<double> wrapWidth)
    : m_device(
          makeLayoutDevice(layoutDpi(std::max(largestPointSize(text), defaultFont().pointSize)))),
      m_unitsPerPoint(m_device->logicalDpiY() / kPointsPerInch)
{
    prepareLabelDocument(m_document, m_device.get());
    m_document.setUndoRedoEnabled(false);
    setRichText(m_document, text);
    convertBlockLengthsToLayoutUnits(m_document, m_unitsPerPoint);
    m_document.setTextWidth(wrapWidth ? *wrapWidth * m_unitsPerPoint : -1.0);
    // Lay out now, so that drawing and reading the layout never change the document.
    m_document.documentLayout()->documentSize();
}

LabelTextLayout::~LabelTextLayout() = default;

QSizeF LabelTextLayout::size() const
{
    return m_document.documentLayout()->documentSize() / m_unitsPerPoint;
}

void LabelTextLayout::draw(QPainter& painter, const QRectF& rect) const
{
    painter.save();
    painter.translate(rect.topLeft());
    painter.scale(1.0 / m_unitsPerPoint, 1.0 / m_unitsPerPoint);
    const QRectF clip(0.0, 0.0, rect.width() * m_unitsPerPoint, rect.height() * m_unitsPerPoint);
    painter.setClipRect(clip, Qt::IntersectClip);
    QAbstractTextDocumentLayout::PaintContext context;
    context.clip = clip;
    context.palette.setColor(QPalette::Text, Qt::black);
    m_document.documentLayout()->draw(&painter, context);
    painter.restore();
}

void drawLabelText(QPainter& painter, const RichText& text, const QRectF& rect)
{
    const LabelTextLayout layout(text, rect.width());
    layout.draw(painter, rect);
}

} // namespace lomir
