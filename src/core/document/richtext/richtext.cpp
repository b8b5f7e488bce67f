#include "core/document/richtext/richtext.h"

#include <QHashFunctions>
#include <QTextBoundaryFinder>

namespace lomir {

namespace {

// A hash that agrees with TextAttributes' equality (qHash maps -0.0 and 0.0 alike).
std::size_t hashOf(const TextAttributes& attributes)
{
    std::size_t seed = 0;
    if (const std::optional<FontSpec>& font = attributes.font)
        seed = qHashMulti(seed, font->family, font->postScriptName, font->pointSize, font->bold,
                          font->italic);
    for (const std::optional<Rgba>& color : {attributes.foreground, attributes.background}) {
        seed = color ? qHashMulti(seed, color->red, color->green, color->blue, color->alpha)
                     : qHashMulti(seed, -1);
    }
    seed = qHashMulti(seed, attributes.underline, attributes.strikethrough);
    if (const std::optional<ParagraphStyle>& paragraph = attributes.paragraph)
        seed = qHashMulti(seed, int(paragraph->alignment), paragraph->lineSpacing,
                          paragraph->paragraphSpacing, paragraph->paragraphSpacingBefore,
                          paragraph->headIndent, paragraph->firstLineHeadIndent,
                          paragraph->tailIndent, paragraph->lineHeightMultiple);
    return seed;
}

} // namespace

QString Rgba::toHex() const
{
    return QStringLiteral("#%1%2%3%4")
        .arg(red, 2, 16, QLatin1Char('0'))
        .arg(green, 2, 16, QLatin1Char('0'))
        .arg(blue, 2, 16, QLatin1Char('0'))
        .arg(alpha, 2, 16, QLatin1Char('0'));
}

RichText::RichText(QString text, TextAttributes attributes) : m_string(std::move(text))
{
    if (!m_string.isEmpty())
        m_runs.push_back({qint32(length()), attributeSetFor(attributes)});
}

std::size_t RichText::runAt(int position) const
{
    const auto found = std::upper_bound(m_runs.begin(), m_runs.end(), position,
                                        [](int value, const Run& run) { return value < run.end; });
    return std::size_t(found - m_runs.begin());
}

const TextAttributes& RichText::attributesAt(int position) const
{
    Q_ASSERT(position >= 0 && position < length());
    const std::size_t run = std::min(runAt(position), m_runs.size() - 1);
    return m_attributeSets[m_runs[run].attributeSet];
}

RichText::Runs RichText::runs() const&
{
    return runs(0, length());
}

RichText::Runs RichText::runs(int location, int length) const&
{
    // The runs that reach past location and start before the range's end; an empty
    // range inside a run gives that run, clipped to nothing.
    const int end = location + length;
    const std::size_t first = runAt(location);
    const auto reachingEnd =
        std::lower_bound(m_runs.begin(), m_runs.end(), end,
                         [](const Run& run, int value) { return run.end < value; });
    std::size_t last = std::size_t(reachingEnd - m_runs.begin());
    if (last < m_runs.size())
        ++last;
    return Runs(*this, first, std::max(first, last), location, end);
}

bool RichText::Runs::operator==(const Runs& other) const
{
    if (size() != other.size())
        return false;
    for (std::size_t i = 0; i < size(); ++i) {
        if ((*this)[i] != other[i])
            return false;
    }
    return true;
}

RichText RichText::mid(int location, int length) const
{
    RichText result;
    result.m_string = m_string.mid(location, length);
    // Each set of this text becomes one of the result's, in order of first use.
    std::vector<quint32> setInResult(m_attributeSets.size(), kNoSet);
    const int end = location + length;
    for (std::size_t run = runAt(location); run < m_runs.size() && startOf(run) < end; ++run) {
        quint32& set = setInResult[m_runs[run].attributeSet];
        if (set == kNoSet)
            set = result.attributeSetFor(m_attributeSets[m_runs[run].attributeSet]);
        result.m_runs.push_back({qint32(std::min(int(m_runs[run].end), end) - location), set});
    }
    return result;
}

quint32 RichText::attributeSetFor(const TextAttributes& attributes)
{
    // The last run's set is the one asked for most while a text is built.
    if (!m_runs.empty() && m_attributeSets[m_runs.back().attributeSet] == attributes)
        return m_runs.back().attributeSet;
    if (m_setIndex.size() < 2 * (m_attributeSets.size() + 1))
        rebuildSetIndex();
    const std::size_t mask = m_setIndex.size() - 1;
    for (std::size_t slot = hashOf(attributes) & mask;; slot = (slot + 1) & mask) {
        const quint32 set = m_setIndex[slot];
        if (set == kNoSet) {
            m_attributeSets.push_back(attributes);
            m_setIndex[slot] = quint32(m_attributeSets.size() - 1);
            return m_setIndex[slot];
        }
        if (m_attributeSets[set] == attributes)
            return set;
    }
}

void RichText::rebuildSetIndex()
{
    std::size_t size = 8;
    while (size < 2 * (m_attributeSets.size() + 1))
        size *= 2;
    m_setIndex.assign(size, kNoSet);
    const std::size_t mask = size - 1;
    for (quint32 set = 0; set < m_attributeSets.size(); ++set) {
        std::size_t slot = hashOf(m_attributeSets[set]) & mask;
        while (m_setIndex[slot] != kNoSet)
            slot = (slot + 1) & mask;
        m_setIndex[slot] = set;
    }
}

std::size_t RichText::splitAt(int position)
{
    const std::size_t run = runAt(position);
    if (run == m_runs.size() || position == startOf(run))
        return run;
    m_runs.insert(m_runs.begin() + std::ptrdiff_t(run), Run{position, m_runs[run].attributeSet});
    return run + 1;
}

void RichText::normalize()
{
    std::size_t kept = 0;
    int start = 0;
    for (const Run& run : m_runs) {
        if (run.end <= start)
            continue;
        start = run.end;
        if (kept > 0 && m_runs[kept - 1].attributeSet == run.attributeSet) {
            m_runs[kept - 1].end = run.end;
            continue;
        }
        m_runs[kept++] = run;
    }
    m_runs.resize(kept);

    std::vector<quint32> renumbered(m_attributeSets.size(), kNoSet);
    quint32 used = 0;
    for (Run& run : m_runs) {
        quint32& set = renumbered[run.attributeSet];
        if (set == kNoSet)
            set = used++;
        run.attributeSet = set;
    }
    // Sets that keep their order move down in place; others go into a new table.
    bool keepOrder = true;
    quint32 next = 0;
    for (const quint32 set : renumbered) {
        if (set != kNoSet) {
            keepOrder = keepOrder && set == next;
            ++next;
        }
    }
    if (keepOrder) {
        for (quint32 set = 0; set < renumbered.size(); ++set) {
            if (renumbered[set] != kNoSet && renumbered[set] != set)
                m_attributeSets[renumbered[set]] = std::move(m_attributeSets[set]);
        }
        m_attributeSets.resize(used);
    } else {
        std::vector<TextAttributes> sets(used);
        for (quint32 set = 0; set < renumbered.size(); ++set) {
            if (renumbered[set] != kNoSet)
                sets[renumbered[set]] = std::move(m_attributeSets[set]);
        }
        m_attributeSets = std::move(sets);
    }
    rebuildSetIndex();
}

void RichText::mergeEqualSets()
{
    // The index is built afresh; a set equal to one before it gives way to that one.
    std::size_t size = 8;
    while (size < 2 * (m_attributeSets.size() + 1))
        size *= 2;
    m_setIndex.assign(size, kNoSet);
    const std::size_t mask = size - 1;
    std::vector<quint32> replacement(m_attributeSets.size());
    bool merged = false;
    for (quint32 set = 0; set < m_attributeSets.size(); ++set) {
        std::size_t slot = hashOf(m_attributeSets[set]) & mask;
        while (m_setIndex[slot] != kNoSet &&
               m_attributeSets[m_setIndex[slot]] != m_attributeSets[set])
            slot = (slot + 1) & mask;
        if (m_setIndex[slot] == kNoSet)
            m_setIndex[slot] = set;
        merged = merged || m_setIndex[slot] != set;
        replacement[set] = m_setIndex[slot];
    }
    if (!merged)
        return;
    for (Run& run : m_runs)
        run.attributeSet = replacement[run.attributeSet];
    normalize();
}

void RichText::replace(int location, int length, const QString& text)
{
    TextAttributes attributes;
    if (length > 0)
        attributes = attributesAt(location);
    else if (location > 0)
        attributes = attributesAt(location - 1);
    else if (!isEmpty())
        attributes = attributesAt(0);
    replace(location, length, RichText(text, std::move(attributes)));
}

void RichText::replace(int location, int length, const RichText& text)
{
    Q_ASSERT(location >= 0 && length >= 0 && location + length <= this->length());
    if (&text == this) {
        const RichText copy = text;
        replace(location, length, copy);
        return;
    }
    // The inserted text's sets, as sets of this text.
    std::vector<quint32> sets;
    sets.reserve(text.m_attributeSets.size());
    for (const TextAttributes& attributes : text.m_attributeSets)
        sets.push_back(attributeSetFor(attributes));

    if (location == this->length()) {
        // Appending touches only the boundary: both texts are canonical, so only the
        // first appended run can merge, and new sets come in order of first use.
        for (const Run& run : text.m_runs) {
            const Run appended{qint32(location + run.end), sets[run.attributeSet]};
            if (!m_runs.empty() && m_runs.back().attributeSet == appended.attributeSet)
                m_runs.back().end = appended.end;
            else
                m_runs.push_back(appended);
        }
        m_string.append(text.m_string);
        return;
    }
    const std::size_t first = splitAt(location);
    const std::size_t last = splitAt(location + length);
    const qint32 shift = qint32(text.length() - length);
    for (std::size_t i = last; i < m_runs.size(); ++i)
        m_runs[i].end += shift;
    std::vector<Run> inserted;
    inserted.reserve(text.m_runs.size());
    for (const Run& run : text.m_runs)
        inserted.push_back({qint32(location + run.end), sets[run.attributeSet]});
    m_runs.erase(m_runs.begin() + std::ptrdiff_t(first), m_runs.begin() + std::ptrdiff_t(last));
    m_runs.insert(m_runs.begin() + std::ptrdiff_t(first), inserted.begin(), inserted.end());
    m_string.replace(location, length, text.m_string);
    normalize();
}

void RichText::append(QStringView text, const TextAttributes& attributes)
{
    if (text.isEmpty())
        return;
    const quint32 set = attributeSetFor(attributes);
    m_string.append(text);
    if (!m_runs.empty() && m_runs.back().attributeSet == set)
        m_runs.back().end = qint32(length());
    else
        m_runs.push_back({qint32(length()), set});
}

void RichText::setAttributes(int location, int length, const TextAttributes& attributes)
{
    modifyAttributes(location, length, [&](TextAttributes& run) { run = attributes; });
}

bool RichText::deleteLastCharacter()
{
    if (isEmpty())
        return false;
    QTextBoundaryFinder graphemes(QTextBoundaryFinder::Grapheme, m_string);
    graphemes.toEnd();
    const qsizetype start = graphemes.toPreviousBoundary();
    remove(int(start < 0 ? 0 : start), length() - int(start < 0 ? 0 : start));
    return true;
}

} // namespace lomir
