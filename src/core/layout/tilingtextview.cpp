#include "core/layout/tilingtextview.h"

#include "core/base/fatal.h"
#include "core/layout/sheetgeometry.h"

#include <QPainter>
#include <cmath>
#include <limits>

namespace lomir {

namespace {

bool isIntegerType(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Char:
        return true;
    default:
        return false;
    }
}

bool isFloatingType(const QVariant& value)
{
    return value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Float;
}

// An integer key always yields a value: a number is read as an integer (a fraction
// truncated toward zero), and a missing key, or anything that is not a number that fits,
// reads 0.
qint64 archivedInteger(const QVariantMap& archive, const QString& key)
{
    const QVariant value = archive.value(key);
    if (value.typeId() == QMetaType::ULongLong || value.typeId() == QMetaType::ULong) {
        const qulonglong number = value.toULongLong();
        return number <= qulonglong(std::numeric_limits<qint64>::max()) ? qint64(number) : 0;
    }
    if (isIntegerType(value))
        return value.toLongLong();
    if (isFloatingType(value)) {
        // 2^63 is exactly representable; everything below it fits.
        const double number = std::trunc(value.toDouble());
        if (std::isfinite(number) && number < 9223372036854775808.0 &&
            number >= -9223372036854775808.0)
            return qint64(number);
    }
    return 0;
}

// A length key is kept only when it holds a number.
std::optional<double> archivedLength(const QVariantMap& archive, const QString& key)
{
    const QVariant value = archive.value(key);
    if (isIntegerType(value) || isFloatingType(value))
        return value.toDouble();
    return std::nullopt;
}

template <typename T>
std::optional<T> archivedObject(const QVariantMap& archive, const QString& key)
{
    const QVariant value = archive.value(key);
    if (value.metaType() == QMetaType::fromType<T>())
        return value.value<T>();
    return std::nullopt;
}

// Drawing reads these properties; whoever prints sets them all first (see
// makeTilingTextView()).
template <typename T> T required(const std::optional<T>& property, std::string_view message)
{
    if (!property)
        fatalError(message);
    return *property;
}

} // namespace

TilingTextView::TilingTextView(const QRectF& frame) : m_frame(frame) {}

TilingTextView::TilingTextView(const QVariantMap& archive)
    : m_text(archivedObject<RichText>(archive, QStringLiteral("text"))),
      m_quantity(archivedInteger(archive, QStringLiteral("quantity"))),
      m_serialStartFrom(archivedInteger(archive, QStringLiteral("serialStartFrom"))),
      m_serialDigitCount(archivedInteger(archive, QStringLiteral("serialDigitCount"))),
      m_cellWidth(archivedLength(archive, QStringLiteral("cellWidth"))),
      m_cellHeight(archivedLength(archive, QStringLiteral("cellHeight"))),
      m_pageWidth(archivedLength(archive, QStringLiteral("pageWidth"))),
      m_pageHeight(archivedLength(archive, QStringLiteral("pageHeight"))),
      m_numberOfColumns(archivedInteger(archive, QStringLiteral("numberOfColumns"))),
      m_numberOfRows(archivedInteger(archive, QStringLiteral("numberOfRows"))),
      m_numberOfRowsOnAPage(archivedInteger(archive, QStringLiteral("numberOfRowsOnAPage"))),
      m_numberOfPages(archivedInteger(archive, QStringLiteral("numberOfPages"))),
      m_serialStringRange(archivedObject<TextRange>(archive, QStringLiteral("serialStringRange"))),
      m_spacing(archivedLength(archive, QStringLiteral("spacing")))
{
}

TilingTextView::~TilingTextView() = default;

std::vector<LabelCopy> TilingTextView::copiesOnPage(const QRectF& rect) const
{
    const double pageHeight = required(m_pageHeight, "TilingTextView: pageHeight is not set");
    const qint64 rowsOnAPage =
        required(m_numberOfRowsOnAPage, "TilingTextView: numberOfRowsOnAPage is not set");
    const qint64 columns =
        required(m_numberOfColumns, "TilingTextView: numberOfColumns is not set");
    if (rowsOnAPage < 1 || columns < 1)
        fatalError("TilingTextView: a page needs at least one row and one column");

    // The print system asks for one whole page at a time, so the rectangle's top edge is
    // the top of a page.
    const qint64 page = checkedInt64(rect.top() / pageHeight);
    qint64 copy = checkedMultiply(checkedMultiply(rowsOnAPage, columns), page);

    std::vector<LabelCopy> copies;
    for (qint64 row = 0; row < rowsOnAPage; ++row) {
        const double cellHeight = required(m_cellHeight, "TilingTextView: cellHeight is not set");
        // Rounding can make the last row reach a hair past the page; it is not drawn.
        if (!rowFitsOnPage(row, cellHeight, pageHeight))
            return copies;
        for (qint64 column = 0; column < columns; ++column) {
            const CellSize cell{required(m_cellWidth, "TilingTextView: cellWidth is not set"),
                                cellHeight};
            const double spacing = required(m_spacing, "TilingTextView: spacing is not set");
            copies.push_back(LabelCopy{cellRect(rect.top(), row, column, cell, spacing), copy});
            copy = checkedAdd(copy, 1);
            if (copy == required(m_quantity, "TilingTextView: quantity is not set"))
                return copies;
        }
    }
    return copies;
}

const LabelCopyPainter& TilingTextView::copyPainter() const
{
    CopyPainterKey key{required(m_text, "TilingTextView: text is not set"), std::nullopt,
                       QSizeF(*m_cellWidth - *m_spacing, *m_cellHeight - *m_spacing)};
    if (m_serialStringRange) {
        key.numbering = SerialNumbering{
            *m_serialStringRange,
            required(m_serialStartFrom, "TilingTextView: serialStartFrom is not set"),
            required(m_serialDigitCount, "TilingTextView: serialDigitCount is not set")};
    }
    if (!m_copyPainter || m_copyPainterKey != key) {
        m_copyPainter.reset();
        m_copyPainter = std::make_unique<LabelCopyPainter>(key.text, key.numbering, key.textSize);
        m_copyPainterKey = std::move(key);
    }
    return *m_copyPainter;
}

void TilingTextView::drawRect(QPainter& painter, const QRectF& rect) const
{
    const std::vector<LabelCopy> copies = copiesOnPage(rect);
    if (copies.empty())
        return;
    // Every copy on the page has been placed, so the cell size and spacing are set.
    copyPainter().drawCopies(painter, copies);
}

} // namespace lomir
