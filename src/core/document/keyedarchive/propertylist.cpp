#include "core/document/keyedarchive/propertylist.h"

#include "core/base/documentlimits.h"
#include "core/document/keyedarchive/archiveerrors.h"

#include <QXmlStreamReader>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace lomir {

namespace {

// ---------------------------------------------------------------------------------------
// Binary property lists: a check of the object graph before libplist sees it.
//
// Layout: "bplist00", the objects, an offset table (one big-endian offset per object),
// then a 32-byte trailer: 6 unused bytes, the size of an offset, the size of an object
// reference, the object count, the top object and the offset table's position (8 bytes
// each, big-endian). Arrays (0xA), ordered sets (0xB), sets (0xC) and dictionaries (0xD)
// hold object references; every other object is a leaf.

constexpr qsizetype kHeaderSize = 8;
constexpr qsizetype kTrailerSize = 32;

quint64 readBigEndian(const uchar* bytes, int size)
{
    quint64 value = 0;
    for (int i = 0; i < size; ++i)
        value = (value << 8) | bytes[i];
    return value;
}

class BinaryListCheck
{
public:
    explicit BinaryListCheck(const QByteArray& data)
        : m_bytes(reinterpret_cast<const uchar*>(data.constData())), m_size(quint64(data.size()))
    {
    }

    Status run()
    {
        if (Status trailer = readTrailer(); !trailer)
            return trailer;
        return walk();
    }

private:
    enum class State : quint8
    {
        Unvisited,
        Open,
        Done
    };

    // A container being walked: where its references are and how far the walk got.
    struct Frame
    {
        quint64 object = 0;
        quint64 references = 0; // position of the first reference
        quint64 referenceCount = 0;
        quint64 next = 0;
        quint64 weight = 1; // nodes libplist will make for this object and its contents
        quint32 height = 1;
    };

    Status readTrailer()
    {
        if (m_size < quint64(kHeaderSize + kTrailerSize))
            return archiveDamaged("its binary property list is too short");
        const uchar* trailer = m_bytes + m_size - kTrailerSize;
        m_offsetSize = trailer[6];
        m_referenceSize = trailer[7];
        m_count = readBigEndian(trailer + 8, 8);
        m_top = readBigEndian(trailer + 16, 8);
        m_tableOffset = readBigEndian(trailer + 24, 8);
        const quint64 objectsEnd = m_size - kTrailerSize;
        if (m_offsetSize < 1 || m_offsetSize > 8 || m_referenceSize < 1 || m_referenceSize > 8)
            return archiveDamaged("its binary property list has an invalid trailer");
        if (m_tableOffset < quint64(kHeaderSize) || m_tableOffset >= objectsEnd)
            return archiveDamaged("its binary property list has its offset table out of place");
        if (m_count == 0 || m_count > (objectsEnd - m_tableOffset) / m_offsetSize)
            return archiveDamaged("its binary property list has an invalid object count");
        if (m_top >= m_count)
            return archiveDamaged("its binary property list has no valid top object");
        return Done{};
    }

    // Where an object starts, or 0 if the offset table points outside the object area.
    quint64 offsetOf(quint64 object) const
    {
        const quint64 offset =
            readBigEndian(m_bytes + m_tableOffset + object * m_offsetSize, int(m_offsetSize));
        return offset >= quint64(kHeaderSize) && offset < m_tableOffset ? offset : 0;
    }

    quint64 referenceAt(quint64 position) const
    {
        return readBigEndian(m_bytes + position, int(m_referenceSize));
    }

    // Reads the header of a container object into a frame; a leaf gets no references.
    Status open(quint64 object, Frame& frame) const
    {
        frame = Frame{};
        frame.object = object;
        const quint64 offset = offsetOf(object);
        if (offset == 0)
            return archiveDamaged("its binary property list points outside the file");
        const uchar marker = m_bytes[offset];
        const int type = marker >> 4;
        if (type < 0xA || type > 0xD)
            return Done{};
        quint64 count = marker & 0x0f;
        quint64 position = offset + 1;
        if (count == 0x0f) {
            if (position >= m_tableOffset || (m_bytes[position] >> 4) != 0x1 ||
                (m_bytes[position] & 0x0f) > 3)
                return archiveDamaged("its binary property list has a malformed object");
            const int size = 1 << (m_bytes[position] & 0x0f);
            if (position + 1 + quint64(size) > m_tableOffset)
                return archiveDamaged("its binary property list has a malformed object");
            count = readBigEndian(m_bytes + position + 1, size);
            position += 1 + quint64(size);
        }
        const quint64 perEntry = type == 0xD ? 2 : 1;
        const quint64 room = (m_tableOffset - position) / m_referenceSize;
        if (count > room / perEntry)
            return archiveDamaged("its binary property list has a container larger than the "
                                  "file");
        frame.references = position;
        frame.referenceCount = count * perEntry;
        return Done{};
    }

    void finish(const Frame& frame)
    {
        m_state[frame.object] = State::Done;
        // Stored narrow: a file has at most one object per byte, so these tables are
        // the largest memory the check takes. Weights above the limit only need to stay
        // above it, and heights never pass the depth limit.
        m_weight[frame.object] = quint32(std::min<quint64>(frame.weight, kStoredWeightCap));
        m_height[frame.object] = quint8(std::min<quint32>(frame.height, 255));
    }

    static void absorb(Frame& parent, quint64 weight, quint32 height)
    {
        parent.weight = std::min(parent.weight + weight, kWeightCap);
        parent.height = std::max(parent.height, height + 1);
    }

    Status walk()
    {
        m_state.assign(m_count, State::Unvisited);
        m_weight.assign(m_count, 0);
        m_height.assign(m_count, 0);
        // libplist makes one node per reference followed, and a node takes it about a
        // hundred bytes. The densest archives macOS and our writer make have a node for
        // every six and a half bytes or more; a list with more than one for every five
        // bytes, beyond what any small list may have, repeats objects to blow up.
        const quint64 maxNodes = m_size / kBytesPerNode + kNodeAllowance;

        std::vector<Frame> stack;
        Frame top;
        if (Status opened = open(m_top, top); !opened)
            return opened;
        m_state[m_top] = State::Open;
        stack.push_back(top);
        while (!stack.empty()) {
            const std::size_t current = stack.size() - 1;
            if (stack[current].next < stack[current].referenceCount) {
                const quint64 child = referenceAt(stack[current].references +
                                                  stack[current].next * quint64(m_referenceSize));
                ++stack[current].next;
                if (child >= m_count)
                    return archiveDamaged("its binary property list refers to an object that "
                                          "does not exist");
                switch (m_state[child]) {
                case State::Open:
                    return archiveDamaged("its binary property list contains itself");
                case State::Done:
                    absorb(stack[current], m_weight[child], m_height[child]);
                    break;
                case State::Unvisited: {
                    Frame frame;
                    if (Status opened = open(child, frame); !opened)
                        return opened;
                    if (frame.referenceCount == 0) {
                        finish(frame);
                        absorb(stack[current], frame.weight, frame.height);
                    } else {
                        if (stack.size() >= std::size_t(kMaxPropertyListDepth))
                            return archiveDamaged("its binary property list is nested too "
                                                  "deeply");
                        m_state[child] = State::Open;
                        stack.push_back(frame);
                    }
                    break;
                }
                }
            } else {
                const Frame done = stack.back();
                stack.pop_back();
                finish(done);
                if (!stack.empty())
                    absorb(stack.back(), done.weight, done.height);
            }
            if (!stack.empty()) {
                const Frame& frame = stack.back();
                if (frame.weight > maxNodes)
                    return archiveDamaged("its binary property list repeats objects so often "
                                          "that it cannot be expanded");
                if (stack.size() - 1 + frame.height > std::size_t(kMaxPropertyListDepth))
                    return archiveDamaged("its binary property list is nested too deeply");
            }
        }
        if (m_weight[m_top] > maxNodes)
            return archiveDamaged("its binary property list repeats objects so often that it "
                                  "cannot be expanded");
        return Done{};
    }

    static constexpr quint64 kBytesPerNode = 5;
    static constexpr quint64 kNodeAllowance = 4096;
    static constexpr quint64 kWeightCap = quint64(1) << 62;
    static constexpr quint64 kStoredWeightCap = 0xffffffff;

    const uchar* m_bytes;
    quint64 m_size;
    quint64 m_offsetSize = 0;
    quint64 m_referenceSize = 0;
    quint64 m_count = 0;
    quint64 m_top = 0;
    quint64 m_tableOffset = 0;
    std::vector<State> m_state;
    std::vector<quint32> m_weight;
    std::vector<quint8> m_height;
};

// ---------------------------------------------------------------------------------------
// XML property lists, read with Qt's stream reader (iterative, so no input can exhaust
// the stack) into libplist nodes.

class XmlListReader
{
public:
    explicit XmlListReader(const QByteArray& data) : m_xml(data) {}

    Result<PlistPtr> read()
    {
        if (!m_xml.readNextStartElement())
            return malformed();
        Result<PlistPtr> value = Error{};
        if (m_xml.name() == QLatin1String("plist")) {
            if (!m_xml.readNextStartElement())
                return malformed();
            value = readValue(1);
            if (!value)
                return value;
            // Nothing but the end of <plist> may follow.
            if (m_xml.readNextStartElement())
                return malformed();
        } else {
            value = readValue(1);
            if (!value)
                return value;
        }
        while (!m_xml.atEnd())
            m_xml.readNext();
        if (m_xml.hasError())
            return malformed();
        return value;
    }

private:
    Error malformed() const
    {
        if (m_xml.hasError()) {
            // Qt's reasons are sentences of their own; the full stop comes at the end.
            QString reason = m_xml.errorString();
            while (reason.endsWith(QLatin1Char('.')))
                reason.chop(1);
            return archiveDamaged(QStringLiteral("its XML property list is malformed (line %1: %2)")
                                      .arg(m_xml.lineNumber())
                                      .arg(reason));
        }
        return archiveDamaged(
            QStringLiteral("its XML property list is malformed (line %1)").arg(m_xml.lineNumber()));
    }

    // Reads the element the reader stands on; afterwards it stands on its end tag.
    Result<PlistPtr> readValue(int depth)
    {
        if (depth > kMaxPropertyListDepth)
            return archiveDamaged("its XML property list is nested too deeply");
        const QStringView name = m_xml.name();
        if (name == QLatin1String("dict"))
            return readDictionary(depth);
        if (name == QLatin1String("array"))
            return readArray(depth);
        if (name == QLatin1String("true") || name == QLatin1String("false")) {
            const bool value = name == QLatin1String("true");
            m_xml.skipCurrentElement();
            return PlistPtr(plist_new_bool(value ? 1 : 0));
        }
        if (name == QLatin1String("date")) {
            // Dates never matter in a text archive; the value is not kept.
            m_xml.skipCurrentElement();
            return PlistPtr(plist_new_date(0, 0));
        }
        if (name != QLatin1String("string") && name != QLatin1String("integer") &&
            name != QLatin1String("real") && name != QLatin1String("data"))
            return malformed();

        const QString elementName = name.toString();
        const QString text = m_xml.readElementText(QXmlStreamReader::ErrorOnUnexpectedElement);
        if (m_xml.hasError())
            return malformed();
        if (elementName == QLatin1String("string"))
            return PlistPtr(plist_new_string(text.toUtf8().constData()));
        if (elementName == QLatin1String("integer")) {
            // Decimal, or hexadecimal after "0x"; values above the signed range are kept
            // as their unsigned bit pattern, as libplist stores every integer.
            bool ok = false;
            const QString trimmed = text.trimmed();
            const bool hex = trimmed.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
            const QString digits = hex ? trimmed.mid(2) : trimmed;
            const int base = hex ? 16 : 10;
            qint64 value = digits.toLongLong(&ok, base);
            if (!ok)
                value = qint64(digits.toULongLong(&ok, base));
            if (!ok)
                return archiveDamaged("its XML property list has an integer that is not a number");
            return PlistPtr(plist_new_uint(quint64(value)));
        }
        if (elementName == QLatin1String("real")) {
            bool ok = false;
            const double value = text.trimmed().toDouble(&ok);
            if (!ok)
                return archiveDamaged("its XML property list has a real that is not a number");
            return PlistPtr(plist_new_real(value));
        }
        QByteArray base64 = text.toLatin1();
        base64.removeIf([](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
        const auto decoded =
            QByteArray::fromBase64Encoding(base64, QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded)
            return archiveDamaged("its XML property list has data that is not base64");
        return PlistPtr(plist_new_data((*decoded).constData(), quint64((*decoded).size())));
    }

    Result<PlistPtr> readArray(int depth)
    {
        PlistPtr array(plist_new_array());
        while (m_xml.readNextStartElement()) {
            Result<PlistPtr> item = readValue(depth + 1);
            if (!item)
                return item;
            plist_array_append_item(array.get(), std::move(item).value().release());
        }
        if (m_xml.hasError())
            return malformed();
        return array;
    }

    Result<PlistPtr> readDictionary(int depth)
    {
        PlistPtr dict(plist_new_dict());
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() != QLatin1String("key"))
                return malformed();
            const QByteArray key =
                m_xml.readElementText(QXmlStreamReader::ErrorOnUnexpectedElement).toUtf8();
            if (m_xml.hasError() || !m_xml.readNextStartElement())
                return malformed();
            Result<PlistPtr> value = readValue(depth + 1);
            if (!value)
                return value;
            plist_dict_set_item(dict.get(), key.constData(), std::move(value).value().release());
        }
        if (m_xml.hasError())
            return malformed();
        // A keyed archive in XML writes each object reference as {CF$UID: n}.
        if (plist_dict_get_size(dict.get()) == 1) {
            plist_t uid = plist_dict_get_item(dict.get(), "CF$UID");
            if (uid != nullptr && plist_get_node_type(uid) == PLIST_UINT) {
                uint64_t value = 0;
                plist_get_uint_val(uid, &value);
                return PlistPtr(plist_new_uid(value));
            }
        }
        return dict;
    }

    QXmlStreamReader m_xml;
};

} // namespace

Result<PlistPtr> parsePropertyList(const QByteArray& data)
{
    if (data.size() > kMaxArchiveSize)
        return archiveDamaged("it is too large to be the archive of a label");
    if (data.startsWith("bplist")) {
        if (!data.startsWith("bplist00"))
            return archiveDamaged("its binary property list has an unknown version");
        LOMIR_RETURN_IF_ERROR(BinaryListCheck(data).run());
        plist_t root = nullptr;
        plist_from_bin(data.constData(), uint32_t(data.size()), &root);
        if (root == nullptr)
            return archiveDamaged("its binary property list cannot be read");
        return PlistPtr(root);
    }
    if (data.trimmed().isEmpty())
        return archiveDamaged("it is empty");
    return XmlListReader(data).read();
}

QByteArray binaryPropertyList(plist_t root)
{
    char* bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(root, &bytes, &length);
    if (bytes == nullptr)
        return {};
    QByteArray result(bytes, qsizetype(length));
    plist_to_bin_free(bytes);
    return result;
}

} // namespace lomir
