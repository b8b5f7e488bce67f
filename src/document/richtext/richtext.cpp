#include "document/richtext/richtext.h"

#include <QTextBoundaryFinder>

namespace lomir {

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
        m_runs.push_back({length(), std::move(attributes)});
}

const TextAttributes& RichText::attributesAt(int position) const
{
    Q_ASSERT(position >= 0 && position < length());
    int start = 0;
    for (const Run& run : m_runs) {
        if (position < start + run.length)
            return run.attributes;
        start += run.length;
    }
    return m_runs.back().attributes;
}

std::vector<AttributeRun> RichText::runs(int location, int length) const
{
    std::vector<AttributeRun> result;
    forEachRun(location, length, [&](const TextAttributes& attributes, int from, int count) {
        result.push_back({from, count, attributes});
    });
    return result;
}

RichText RichText::mid(int location, int length) const
{
    RichText result;
    result.m_string = m_string.mid(location, length);
    forEachRun(location, length, [&](const TextAttributes& attributes, int, int count) {
        result.m_runs.push_back({count, attributes});
    });
    return result;
}

std::size_t RichText::splitAt(int position)
{
    int start = 0;
    for (std::size_t i = 0; i < m_runs.size(); ++i) {
        if (position == start)
            return i;
        const int end = start + m_runs[i].length;
        if (position < end) {
            Run tail{end - position, m_runs[i].attributes};
            m_runs[i].length = position - start;
            m_runs.insert(m_runs.begin() + std::ptrdiff_t(i) + 1, std::move(tail));
            return i + 1;
        }
        start = end;
    }
    return m_runs.size();
}

void RichText::normalize()
{
    std::vector<Run> merged;
    merged.reserve(m_runs.size());
    for (Run& run : m_runs) {
        if (run.length <= 0)
            continue;
        if (!merged.empty() && merged.back().attributes == run.attributes)
            merged.back().length += run.length;
        else
            merged.push_back(std::move(run));
    }
    m_runs = std::move(merged);
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
    if (location == this->length()) {
        // Appending touches only the boundary, so a text can be built run by run.
        m_string.append(text.m_string);
        for (const Run& run : text.m_runs) {
            if (!m_runs.empty() && m_runs.back().attributes == run.attributes)
                m_runs.back().length += run.length;
            else
                m_runs.push_back(run);
        }
        return;
    }
    const std::size_t first = splitAt(location);
    const std::size_t last = splitAt(location + length);
    m_runs.erase(m_runs.begin() + std::ptrdiff_t(first), m_runs.begin() + std::ptrdiff_t(last));
    m_runs.insert(m_runs.begin() + std::ptrdiff_t(first), text.m_runs.begin(), text.m_runs.end());
    m_string.replace(location, length, text.m_string);
    normalize();
}

void RichText::append(const QString& text, const TextAttributes& attributes)
{
    append(RichText(text, attributes));
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
