#include "core/layout/labelcopypainter.h"

#include "core/layout/labeltextlayout.h"

#include <QAbstractTextDocumentLayout>
#include <QGlyphRun>
#include <QPainter>
#include <QRawFont>
#include <QTextBlock>
#include <QTextLayout>
#include <algorithm>
#include <array>
#include <map>
#include <unordered_map>
#include <vector>

namespace lomir {

namespace {

// Copies drawn together in one glyph run per colour and font. Enough to draw a typical
// page in a few calls; bounded so that a page of tiny labels needs no large buffers.
constexpr std::size_t kCopiesPerBatch = 512;

// Glyph outlines may be this far outside a copy's rectangle (in points) before the copy
// has to be clipped: the precision of font metrics at the layout resolution.
constexpr double kInkTolerance = 0.01;

// Layouts kept for patterns of digits. A number has at most 19 digits, and the digits of
// ordinary fonts form one or two groups, so a print needs at most a few hundred; beyond
// this the kept layouts are dropped and made again as needed.
constexpr std::size_t kKeptLayouts = 512;

// Text without a colour of its own is drawn black, as labels print.
const QColor kDefaultTextColor = Qt::black;

struct DigitSlot
{
    qsizetype glyph = 0; // index among the op's glyphs
    int digit = 0;       // index of the digit in the serial number
    bool operator==(const DigitSlot&) const = default;
};

// Positioned glyphs of one font and colour, in layout units from the top-left corner of
// the copy's rectangle, in the order the text engine draws them. Some glyphs may be
// serial digits that each copy replaces.
struct GlyphOp
{
    QRawFont font;
    QColor color;
    QList<quint32> glyphs;
    QList<QPointF> positions;
    std::vector<DigitSlot> slots;

    // Same font, colour, number of glyphs and digit places: drawable in one run.
    bool hasSameStructure(const GlyphOp& other) const
    {
        return font == other.font && color == other.color && glyphs.size() == other.glyphs.size() &&
               slots == other.slots;
    }

    // The same glyphs in the same places, the serial digits aside.
    bool hasSameLayout(const GlyphOp& other) const
    {
        if (!hasSameStructure(other) || positions != other.positions)
            return false;
        std::vector<bool> isDigit(std::size_t(glyphs.size()), false);
        for (const DigitSlot& slot : slots)
            isDigit[std::size_t(slot.glyph)] = true;
        for (qsizetype i = 0; i < glyphs.size(); ++i) {
            if (!isDigit[std::size_t(i)] && glyphs[i] != other.glyphs[i])
                return false;
        }
        return true;
    }
};

// Formatting that glyph runs alone do not draw: lines under or through the text,
// backgrounds, outlines. Text that has any is drawn the straightforward way.
bool drawnByGlyphsAlone(const QTextCharFormat& format)
{
    return !format.fontUnderline() && !format.fontStrikeOut() && !format.fontOverline() &&
           format.background().style() == Qt::NoBrush &&
           format.textOutline().style() == Qt::NoPen && !format.isAnchor();
}

// Blank characters: spaces of every width. Their glyphs have no outline, so they leave
// no mark; a printer would be sent them only to move past them.
bool isBlank(QChar character)
{
    const char16_t code = character.unicode();
    return code == u' ' || code == u'\t' || code == 0x00A0 || (code >= 0x2000 && code <= 0x200A) ||
           code == 0x202F || code == 0x205F || code == 0x3000;
}

enum class Piece
{
    Text,  // characters drawn as they are
    Blank, // blank characters, whose glyphs are left out when they have no outline
    Digit, // one serial digit, which each copy replaces
};

// Adds the glyphs of one line's characters [from, to) of a block (block positions).
// digitIndex is the place of the serial digit a Digit piece holds.
bool appendGlyphs(std::vector<GlyphOp>& ops, const QTextLine& line, const QPointF& origin, int from,
                  int to, const QColor& color, Piece piece, int digitIndex)
{
    const QList<QGlyphRun> runs = line.glyphRuns(from, to - from);
    if (piece == Piece::Digit && (runs.size() != 1 || runs.front().glyphIndexes().size() != 1))
        return false; // a digit that is not exactly one glyph
    for (const QGlyphRun& run : runs) {
        if (run.overline() || run.underline() || run.strikeOut())
            return false;
        const QRawFont font = run.rawFont();
        const QList<quint32> glyphs = run.glyphIndexes();
        const QList<QPointF> positions = run.positions();
        for (qsizetype i = 0; i < glyphs.size(); ++i) {
            if (piece == Piece::Blank && font.boundingRect(glyphs[i]).isEmpty())
                continue;
            if (ops.empty() || !(ops.back().font == font) || ops.back().color != color)
                ops.push_back(GlyphOp{font, color, {}, {}, {}});
            GlyphOp& op = ops.back();
            if (piece == Piece::Digit)
                op.slots.push_back(DigitSlot{op.glyphs.size(), digitIndex});
            op.glyphs.append(glyphs[i]);
            op.positions.append(positions[i] + origin);
        }
    }
    return true;
}

// The positioned glyphs of a laid-out label, the characters [serialStart, serialStart +
// serialLength) marked as digit slots. Lines that start below the clip height are left
// out, as the text engine leaves them out when drawing clipped. Nothing when the text
// needs more than glyphs to draw.
std::optional<std::vector<GlyphOp>> glyphOps(const LabelTextLayout& layout, int serialStart,
                                             int serialLength, double clipHeightInPoints)
{
    const QTextDocument& document = layout.document();
    const double clipHeight = clipHeightInPoints * layout.unitsPerPoint();
    std::vector<GlyphOp> ops;
    const int serialEnd = serialStart + serialLength;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().background().style() != Qt::NoBrush || block.textList())
            return std::nullopt;
        const QTextLayout* blockLayout = block.layout();
        const QPointF origin = blockLayout->position();
        const int blockStart = block.position();
        const QString blockText = block.text();
        for (int lineIndex = 0; lineIndex < blockLayout->lineCount(); ++lineIndex) {
            const QTextLine line = blockLayout->lineAt(lineIndex);
            if (origin.y() + line.y() > clipHeight)
                return ops;
            const int lineStart = line.textStart();
            const int lineEnd = lineStart + line.textLength();
            for (auto it = block.begin(); !it.atEnd(); ++it) {
                const QTextFragment fragment = it.fragment();
                const QTextCharFormat format = fragment.charFormat();
                if (!drawnByGlyphsAlone(format))
                    return std::nullopt;
                const QColor color = format.foreground().style() == Qt::NoBrush
                                         ? kDefaultTextColor
                                         : format.foreground().color();
                const int fragmentStart = fragment.position() - blockStart;
                int from = std::max(fragmentStart, lineStart);
                const int to = std::min(fragmentStart + fragment.length(), lineEnd);
                // Split the range into pieces: every serial digit on its own, and runs of
                // blanks apart from the other characters.
                while (from < to) {
                    const int documentPosition = blockStart + from;
                    int pieceEnd = to;
                    Piece piece = Piece::Text;
                    int digitIndex = -1;
                    if (documentPosition >= serialStart && documentPosition < serialEnd) {
                        pieceEnd = from + 1;
                        piece = Piece::Digit;
                        digitIndex = documentPosition - serialStart;
                    } else {
                        if (documentPosition < serialStart)
                            pieceEnd = std::min(to, serialStart - blockStart);
                        const bool blank = isBlank(blockText.at(from));
                        piece = blank ? Piece::Blank : Piece::Text;
                        int end = from + 1;
                        while (end < pieceEnd && isBlank(blockText.at(end)) == blank)
                            ++end;
                        pieceEnd = end;
                    }
                    if (!appendGlyphs(ops, line, origin, from, pieceEnd, color, piece, digitIndex))
                        return std::nullopt;
                    from = pieceEnd;
                }
            }
        }
    }
    return ops;
}

bool haveSameStructure(const std::vector<GlyphOp>& a, const std::vector<GlyphOp>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const GlyphOp& x, const GlyphOp& y) { return x.hasSameStructure(y); });
}

bool haveSameLayout(const std::vector<GlyphOp>& a, const std::vector<GlyphOp>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const GlyphOp& x, const GlyphOp& y) { return x.hasSameLayout(y); });
}

// The digit a probe layout puts in a place: probe j puts j / 10 in even places and
// j % 10 in odd ones, so that over the probes every digit stands in every place and
// every pair of digits stands side by side in every pair of neighbouring places. A
// one-digit number needs only the ten probes 0 to 9.
int probeDigit(int probe, int place, int probeCount)
{
    if (probeCount == 10)
        return probe;
    return place % 2 == 0 ? probe / 10 : probe % 10;
}

using DigitGroups = std::array<quint8, 10>;

constexpr DigitGroups kEveryDigitAlone{0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

QString digitString(const quint8* digits, std::size_t count)
{
    QString text(qsizetype(count), Qt::Uninitialized);
    for (std::size_t i = 0; i < count; ++i)
        text[qsizetype(i)] = QLatin1Char(char('0' + digits[i]));
    return text;
}

// The number with each digit replaced by its group's first digit.
QString inGroups(const QString& serial, const DigitGroups& groups)
{
    QString mapped = serial;
    for (QChar& character : mapped)
        character = QLatin1Char(char('0' + groups[std::size_t(character.unicode() - u'0')]));
    return mapped;
}

} // namespace

// The glyphs of one number's layout, ready to draw at a copy's place.
struct LabelCopyPainter::PositionedLabel
{
    std::vector<GlyphOp> ops;
    bool clips = false;     // some glyph reaches outside the copy's rectangle
    bool batchable = false; // same fonts and colours as the first layout, in the same order
};

struct LabelCopyPainter::SharedGlyphs
{
    double unitsPerPoint = 1.0;
    // The group of each digit, named by its first digit.
    DigitGroups digitGroups = kEveryDigitAlone;
    // The glyph of each digit value in each place of the serial number.
    std::vector<std::array<quint32, 10>> digitGlyphs;
    // The first layout; copies whose layouts have the same structure are drawn together.
    std::vector<GlyphOp> structure;
    // Layouts by the pattern of digit groups of their number.
    mutable std::unordered_map<quint64, std::shared_ptr<const PositionedLabel>> labels;
};

namespace {

// Whether any glyph, with any digit in its places, reaches outside the rectangle.
bool reachesOutside(const std::vector<GlyphOp>& ops,
                    const std::vector<std::array<quint32, 10>>& digitGlyphs, const QSizeF& size,
                    double unitsPerPoint)
{
    QRectF ink;
    for (const GlyphOp& op : ops) {
        std::vector<bool> isDigit(std::size_t(op.glyphs.size()), false);
        for (const DigitSlot& slot : op.slots) {
            isDigit[std::size_t(slot.glyph)] = true;
            for (quint32 glyph : digitGlyphs[std::size_t(slot.digit)])
                ink |= op.font.boundingRect(glyph).translated(op.positions[slot.glyph]);
        }
        for (qsizetype i = 0; i < op.glyphs.size(); ++i) {
            if (!isDigit[std::size_t(i)])
                ink |= op.font.boundingRect(op.glyphs[i]).translated(op.positions[i]);
        }
    }
    const double tolerance = kInkTolerance * unitsPerPoint;
    const QRectF bounds(-tolerance, -tolerance, size.width() * unitsPerPoint + 2 * tolerance,
                        size.height() * unitsPerPoint + 2 * tolerance);
    return !ink.isEmpty() && !bounds.contains(ink);
}

} // namespace

LabelCopyPainter::LabelCopyPainter(const RichText& text, std::optional<SerialNumbering> numbering,
                                   const QSizeF& textSize)
    : m_text(text), m_numbering(numbering), m_textSize(textSize)
{
    auto glyphs = std::make_unique<SharedGlyphs>();
    if (!m_numbering) {
        const LabelTextLayout layout(m_text, textSize.width());
        glyphs->unitsPerPoint = layout.unitsPerPoint();
        if (std::optional<std::vector<GlyphOp>> ops = glyphOps(layout, 0, 0, textSize.height()))
            glyphs->structure = std::move(*ops);
        else
            glyphs.reset();
    } else if (!probeNumberedLabel(*glyphs)) {
        glyphs.reset();
    }

    if (glyphs) {
        m_glyphs = std::move(glyphs);
        // The first layout is the one for zeros (or for the unnumbered text).
        auto first = std::make_shared<PositionedLabel>();
        first->ops = m_glyphs->structure;
        first->clips =
            reachesOutside(first->ops, m_glyphs->digitGlyphs, m_textSize, m_glyphs->unitsPerPoint);
        first->batchable = true;
        m_glyphs->labels.emplace(0, std::move(first));
    } else if (!m_numbering) {
        m_unnumberedLayout = std::make_unique<LabelTextLayout>(m_text, textSize.width());
    }
}

LabelCopyPainter::~LabelCopyPainter() = default;

bool LabelCopyPainter::probeNumberedLabel(SharedGlyphs& glyphs) const
{
    const SerialNumbering& numbering = *m_numbering;
    const qint64 digitCount = numbering.serialDigitCount;
    const int serialStart = numbering.range.location;
    if (digitCount < 1 || digitCount > 19 || serialStart < 0 || numbering.range.length < 0 ||
        serialStart + numbering.range.length > m_text.length())
        return false;

    // Layouts of the label with probe numbers, each made once.
    std::map<QString, std::optional<std::vector<GlyphOp>>> probed;
    auto probe = [&](const QString& serial) -> const std::optional<std::vector<GlyphOp>>& {
        auto it = probed.find(serial);
        if (it == probed.end()) {
            const LabelTextLayout layout(numberedText(m_text, numbering.range, serial),
                                         m_textSize.width());
            glyphs.unitsPerPoint = layout.unitsPerPoint();
            it = probed
                     .emplace(serial,
                              glyphOps(layout, serialStart, int(digitCount), m_textSize.height()))
                     .first;
        }
        return it->second;
    };

    const int probeCount = digitCount == 1 ? 10 : 100;
    std::vector<QString> serials;
    for (int j = 0; j < probeCount; ++j) {
        QString serial;
        for (int place = 0; place < digitCount; ++place)
            serial.append(QLatin1Char(char('0' + probeDigit(j, place, probeCount))));
        serials.push_back(serial);
    }

    // Every probe must be drawable from glyphs with the same fonts and colours in the same
    // order, and give each digit in each place one and the same glyph.
    glyphs.digitGlyphs.assign(std::size_t(digitCount), {});
    std::vector<std::array<bool, 10>> seen(std::size_t(digitCount), std::array<bool, 10>{});
    for (const QString& serial : serials) {
        const std::optional<std::vector<GlyphOp>>& ops = probe(serial);
        if (!ops)
            return false;
        if (glyphs.structure.empty())
            glyphs.structure = *ops;
        else if (!haveSameStructure(glyphs.structure, *ops))
            return false;
        for (const GlyphOp& op : *ops) {
            for (const DigitSlot& slot : op.slots) {
                const auto value = std::size_t(serial[slot.digit].unicode() - u'0');
                const quint32 glyph = op.glyphs[slot.glyph];
                auto& known = glyphs.digitGlyphs[std::size_t(slot.digit)];
                auto& placeSeen = seen[std::size_t(slot.digit)];
                if (placeSeen[value] && known[value] != glyph)
                    return false;
                placeSeen[value] = true;
                known[value] = glyph;
            }
        }
    }

    // Digits are interchangeable when putting one in place of another, next to every
    // digit and in every place, never moves a glyph. Try all of them as one group first,
    // then each digit with 0.
    auto interchangeable = [&](const DigitGroups& groups) {
        for (const QString& serial : serials) {
            const QString mapped = inGroups(serial, groups);
            if (mapped == serial)
                continue;
            const std::optional<std::vector<GlyphOp>>& original = probe(serial);
            const std::optional<std::vector<GlyphOp>>& replaced = probe(mapped);
            if (!original || !replaced || !haveSameLayout(*original, *replaced))
                return false;
        }
        return true;
    };
    DigitGroups groups{};
    if (!interchangeable(groups)) {
        groups = kEveryDigitAlone;
        for (std::size_t digit = 1; digit < 10; ++digit) {
            DigitGroups withZero = kEveryDigitAlone;
            withZero[digit] = 0;
            if (interchangeable(withZero))
                groups[digit] = 0;
        }
        if (!interchangeable(groups))
            groups = kEveryDigitAlone;
    }
    glyphs.digitGroups = groups;
    glyphs.structure = *probe(serials.front());
    return true;
}

int LabelCopyPainter::digitGroupCount() const
{
    if (!m_glyphs || !m_numbering)
        return 0;
    std::array<bool, 10> used{};
    for (quint8 group : m_glyphs->digitGroups)
        used[group] = true;
    return int(std::count(used.begin(), used.end(), true));
}

bool LabelCopyPainter::clipsCopies() const
{
    if (!m_glyphs)
        return true;
    return std::any_of(m_glyphs->labels.begin(), m_glyphs->labels.end(),
                       [](const auto& entry) { return !entry.second || entry.second->clips; });
}

RichText LabelCopyPainter::copyText(qint64 copyIndex) const
{
    if (!m_numbering)
        return m_text;
    return numberedText(
        m_text, m_numbering->range,
        serialText(copyIndex, m_numbering->serialStartFrom, m_numbering->serialDigitCount));
}

bool LabelCopyPainter::serialDigits(qint64 copyIndex, quint8* digits) const
{
    const QString serial =
        serialText(copyIndex, m_numbering->serialStartFrom, m_numbering->serialDigitCount);
    if (serial.size() != m_numbering->serialDigitCount)
        return false;
    for (qsizetype i = 0; i < serial.size(); ++i) {
        const char16_t character = serial[i].unicode();
        if (character < u'0' || character > u'9')
            return false;
        digits[i] = quint8(character - u'0');
    }
    return true;
}

std::shared_ptr<const LabelCopyPainter::PositionedLabel>
LabelCopyPainter::positionedLabel(const quint8* groupDigits) const
{
    const std::size_t digitCount = m_numbering ? std::size_t(m_numbering->serialDigitCount) : 0;
    quint64 key = 0;
    for (std::size_t i = 0; i < digitCount; ++i)
        key = key * 10 + groupDigits[i];
    auto& labels = m_glyphs->labels;
    if (auto it = labels.find(key); it != labels.end())
        return it->second;

    // Only numbered labels get here: the unnumbered one is made by the constructor.
    if (labels.size() >= kKeptLayouts)
        labels.clear();
    const QString serial = digitString(groupDigits, digitCount);
    const LabelTextLayout layout(numberedText(m_text, m_numbering->range, serial),
                                 m_textSize.width());
    std::optional<std::vector<GlyphOp>> ops =
        glyphOps(layout, m_numbering->range.location, int(digitCount), m_textSize.height());
    std::shared_ptr<PositionedLabel> label;
    const bool sameDigitGlyphs =
        ops && std::all_of(ops->begin(), ops->end(), [&](const GlyphOp& op) {
            return std::all_of(op.slots.begin(), op.slots.end(), [&](const DigitSlot& slot) {
                const auto place = std::size_t(slot.digit);
                return op.glyphs[slot.glyph] == m_glyphs->digitGlyphs[place][groupDigits[place]];
            });
        });
    if (ops && sameDigitGlyphs && layout.unitsPerPoint() == m_glyphs->unitsPerPoint) {
        label = std::make_shared<PositionedLabel>();
        label->ops = std::move(*ops);
        label->clips =
            reachesOutside(label->ops, m_glyphs->digitGlyphs, m_textSize, m_glyphs->unitsPerPoint);
        label->batchable = haveSameStructure(label->ops, m_glyphs->structure);
    }
    labels.emplace(key, label);
    return label;
}

void LabelCopyPainter::drawStraightforward(QPainter& painter, const LabelCopy& copy) const
{
    if (m_unnumberedLayout)
        m_unnumberedLayout->draw(painter, copy.rect);
    else
        drawLabelText(painter, copyText(copy.index), copy.rect);
}

void LabelCopyPainter::drawCopies(QPainter& painter, std::span<const LabelCopy> copies) const
{
    if (!m_glyphs) {
        for (const LabelCopy& copy : copies)
            drawStraightforward(painter, copy);
        return;
    }
    while (!copies.empty()) {
        const std::size_t count = std::min(copies.size(), kCopiesPerBatch);
        drawFromGlyphs(painter, copies.first(count));
        copies = copies.subspan(count);
    }
}

struct LabelCopyPainter::PlacedCopy
{
    const LabelCopy* copy;
    std::shared_ptr<const PositionedLabel> label;
    std::size_t digits; // where the copy's digits start in the digits of its batch
};

std::vector<LabelCopyPainter::PlacedCopy>
LabelCopyPainter::placeCopies(QPainter& painter, std::span<const LabelCopy> copies,
                              std::vector<quint8>& digits) const
{
    const std::size_t digitCount = m_numbering ? std::size_t(m_numbering->serialDigitCount) : 0;
    digits.reserve(copies.size() * digitCount);
    std::vector<quint8> groupDigits(digitCount);
    std::vector<PlacedCopy> placed;
    placed.reserve(copies.size());
    for (const LabelCopy& copy : copies) {
        const std::size_t first = digits.size();
        digits.resize(first + digitCount);
        if (digitCount > 0 && !serialDigits(copy.index, digits.data() + first)) {
            digits.resize(first);
            drawStraightforward(painter, copy);
            continue;
        }
        for (std::size_t i = 0; i < digitCount; ++i)
            groupDigits[i] = m_glyphs->digitGroups[digits[first + i]];
        std::shared_ptr<const PositionedLabel> label = positionedLabel(groupDigits.data());
        if (!label) {
            digits.resize(first);
            drawStraightforward(painter, copy);
            continue;
        }
        placed.push_back(PlacedCopy{&copy, std::move(label), first});
    }
    return placed;
}

void LabelCopyPainter::drawFromGlyphs(QPainter& painter, std::span<const LabelCopy> copies) const
{
    std::vector<quint8> digits;
    const std::vector<PlacedCopy> placed = placeCopies(painter, copies, digits);
    if (placed.empty())
        return;

    // Glyph positions are in layout units relative to the first copy, so that they stay
    // small however far down the sheet the page lies.
    const double unitsPerPoint = m_glyphs->unitsPerPoint;
    const QPointF anchor = placed.front().copy->rect.topLeft();
    painter.save();
    painter.translate(anchor);
    painter.scale(1.0 / unitsPerPoint, 1.0 / unitsPerPoint);

    auto appendCopy = [&](const PlacedCopy& copy, const GlyphOp& op, QList<quint32>& glyphs,
                          QList<QPointF>& positions) {
        const QPointF offset = (copy.copy->rect.topLeft() - anchor) * unitsPerPoint;
        const qsizetype first = glyphs.size();
        glyphs.append(op.glyphs);
        for (const DigitSlot& slot : op.slots) {
            const auto place = std::size_t(slot.digit);
            glyphs[first + slot.glyph] = m_glyphs->digitGlyphs[place][digits[copy.digits + place]];
        }
        for (const QPointF& position : op.positions)
            positions.append(position + offset);
    };
    auto drawRun = [&](const GlyphOp& op, const QList<quint32>& glyphs,
                       const QList<QPointF>& positions) {
        QGlyphRun run;
        run.setRawFont(op.font);
        run.setGlyphIndexes(glyphs);
        run.setPositions(positions);
        // As the text engine draws text: a pen of the text's colour.
        painter.setPen(QPen(QBrush(op.color), 0));
        painter.drawGlyphRun(QPointF(0.0, 0.0), run);
    };

    // Copies whose text must be clipped, or whose layout has other fonts or colours than
    // the first, are drawn one by one; copies never overlap, so the order does not show.
    const QSizeF clipSize = m_textSize * unitsPerPoint;
    for (const PlacedCopy& copy : placed) {
        if (!copy.label->clips && copy.label->batchable)
            continue;
        painter.save();
        if (copy.label->clips) {
            const QPointF offset = (copy.copy->rect.topLeft() - anchor) * unitsPerPoint;
            painter.setClipRect(QRectF(offset, clipSize), Qt::IntersectClip);
        }
        for (const GlyphOp& op : copy.label->ops) {
            QList<quint32> glyphs;
            QList<QPointF> positions;
            appendCopy(copy, op, glyphs, positions);
            drawRun(op, glyphs, positions);
        }
        painter.restore();
    }

    // The others together, one run for each of the layout's runs.
    for (std::size_t index = 0; index < m_glyphs->structure.size(); ++index) {
        QList<quint32> glyphs;
        QList<QPointF> positions;
        glyphs.reserve(m_glyphs->structure[index].glyphs.size() * qsizetype(placed.size()));
        positions.reserve(glyphs.capacity());
        for (const PlacedCopy& copy : placed) {
            if (!copy.label->clips && copy.label->batchable)
                appendCopy(copy, copy.label->ops[index], glyphs, positions);
        }
        if (!glyphs.isEmpty())
            drawRun(m_glyphs->structure[index], glyphs, positions);
    }
    painter.restore();
}

} // namespace lomir
