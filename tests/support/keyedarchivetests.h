#pragma once

// Helpers of the keyed archive tests: fixtures, hand-built archives and sample texts.

#include "core/base/documentlimits.h"
#include "core/document/keyedarchive/colorspaces.h"
#include "core/document/keyedarchive/keyedarchive.h"
#include "core/document/keyedarchive/propertylist.h"
#include "core/document/keyedarchive/runtable.h"
#include "core/document/richtext/fontnames.h"
#include "support/archivebuilder.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <chrono>
#include <functional>
#include <plist/plist.h>

Q_DECLARE_METATYPE(lomir::Rgba)

namespace lomir {
// Lets QCOMPARE show colours that differ.
inline char* toString(const Rgba& color)
{
    return QTest::toString(color.toHex());
}
} // namespace lomir

namespace lomir::testing {

using namespace Qt::StringLiterals;

inline QString fixturePath(const QString& name)
{
    return QStringLiteral(LOMIR_SHARED_DIR "/fixtures/keyed-archive/") + name;
}

inline bool sharedDirPresent()
{
    return QDir(QStringLiteral(LOMIR_SHARED_DIR)).exists();
}

inline QByteArray readFixture(const QString& name)
{
    QFile file(fixturePath(name));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

#define REQUIRE_SHARED_DIR()                                                                       \
    do {                                                                                           \
        if (!sharedDirPresent())                                                                   \
            QSKIP(                                                                                 \
                "The shared fixtures folder (LOMIR_SHARED_DIR) is not present on this machine.");  \
    } while (false)

inline FontSpec font(const QString& family, double size, bool bold = false, bool italic = false)
{
    FontSpec face;
    face.family = family;
    face.postScriptName = postScriptNameFor(family, bold, italic);
    face.pointSize = size;
    face.bold = bold;
    face.italic = italic;
    return face;
}

inline ParagraphStyle aligned(TextAlignment alignment)
{
    ParagraphStyle style;
    style.alignment = alignment;
    return style;
}

// The object table of an archive, for looking at what the writer made.
struct ParsedArchive
{
    PlistPtr plist;
    plist_t objects = nullptr;

    plist_t object(quint64 uid) const { return plist_array_get_item(objects, uint32_t(uid)); }

    plist_t follow(plist_t reference) const
    {
        uint64_t uid = 0;
        plist_get_uid_val(reference, &uid);
        return object(uid);
    }

    plist_t root() const
    {
        return follow(plist_dict_get_item(plist_dict_get_item(plist.get(), "$top"), "root"));
    }

    QString className(plist_t object) const
    {
        plist_t description = follow(plist_dict_get_item(object, "$class"));
        char* name = nullptr;
        plist_get_string_val(plist_dict_get_item(description, "$classname"), &name);
        const QString result = QString::fromUtf8(name);
        free(name);
        return result;
    }

    // How many entries of the table are objects of the class.
    int count(const QString& wanted) const
    {
        int n = 0;
        for (uint32_t i = 1; i < plist_array_get_size(objects); ++i) {
            plist_t entry = object(i);
            if (plist_get_node_type(entry) == PLIST_DICT &&
                plist_dict_get_item(entry, "$class") != nullptr && className(entry) == wanted)
                ++n;
        }
        return n;
    }

    int countClassDescriptions(const QString& wanted) const
    {
        int n = 0;
        for (uint32_t i = 1; i < plist_array_get_size(objects); ++i) {
            plist_t entry = object(i);
            plist_t name = plist_get_node_type(entry) == PLIST_DICT
                               ? plist_dict_get_item(entry, "$classname")
                               : nullptr;
            if (name == nullptr)
                continue;
            char* text = nullptr;
            plist_get_string_val(name, &text);
            if (QString::fromUtf8(text) == wanted)
                ++n;
            free(text);
        }
        return n;
    }
};

inline ParsedArchive parse(const QByteArray& archive)
{
    plist_t plist = nullptr;
    plist_from_bin(archive.constData(), uint32_t(archive.size()), &plist);
    ParsedArchive parsed{PlistPtr(plist), nullptr};
    if (plist != nullptr)
        parsed.objects = plist_dict_get_item(plist, "$objects");
    return parsed;
}

// Parses an archive, lets the test change its object table, and writes it again.
inline QByteArray mutated(const QByteArray& archive,
                          const std::function<void(ParsedArchive&)>& change)
{
    ParsedArchive parsed = parse(archive);
    change(parsed);
    return binaryPropertyList(parsed.plist.get());
}

// An attributed string "Hello" whose single attribute dictionary holds one colour,
// built by hand so that the colour can take any form.
inline QByteArray archiveWithColor(const std::function<quint64(ArchiveBuilder&)>& makeColor)
{
    ArchiveBuilder b;
    const quint64 color = makeColor(b);
    return b.finish(b.addAttributedString("Hello", {{"NSColor", color}}));
}

inline plist_t colorObject(quint64 colorClass, qint64 model, const char* key,
                           const char* components)
{
    plist_t color = ArchiveBuilder::object(colorClass);
    plist_dict_set_item(color, "NSColorSpace", plist_new_uint(quint64(model)));
    if (key != nullptr) {
        const QByteArray bytes = QByteArray(components) + '\0';
        plist_dict_set_item(color, key, plist_new_data(bytes.constData(), quint64(bytes.size())));
    }
    return color;
}

// UIKit archives its colours and fonts under class descriptions that name the AppKit
// class to use where the UIKit one is unknown.
inline quint64 addUIColorClass(ArchiveBuilder& b)
{
    return b.addClass("UIColor", {"UIColor", "NSObject"}, {"NSColor"});
}

inline quint64 addUIFontClass(ArchiveBuilder& b)
{
    return b.addClass("UIFont", {"UIFont", "NSObject"}, {"NSFont"});
}

// A UIColor as UIKit archives one: the number of components and each component as a
// real, then the NSColor keys that macOS reads: device RGB (2) or device white (4), with
// the components as text without a closing NUL. A count of 0 leaves out UIKit's keys, a
// model of 0 AppKit's.
inline plist_t uiColorObject(quint64 colorClass, qint64 count,
                             std::initializer_list<std::pair<const char*, double>> components,
                             qint64 model = 0, const char* key = nullptr,
                             const char* text = nullptr)
{
    plist_t color = ArchiveBuilder::object(colorClass);
    if (count != 0)
        plist_dict_set_item(color, "UIColorComponentCount", plist_new_uint(quint64(count)));
    for (const auto& [name, value] : components)
        plist_dict_set_item(color, name, plist_new_real(value));
    if (model != 0) {
        plist_dict_set_item(color, "NSColorSpace", plist_new_uint(quint64(model)));
        plist_dict_set_item(color, key, plist_new_data(text, quint64(qstrlen(text))));
    }
    return color;
}

// A UIFont as UIKit archives one: its name and size under UIKit's keys and again under
// NSFont's, its traits, whether it is the system font, and a font descriptor (an object
// of a class that reading a font never needs).
inline quint64 addUIFont(ArchiveBuilder& b, const char* name, double size, bool systemFont)
{
    const quint64 fontClass = addUIFontClass(b);
    const quint64 descriptorClass =
        b.addClass("UIFontDescriptor", {"UIFontDescriptor", "NSObject"});
    const quint64 nameUid = b.addString(name);
    plist_t font = ArchiveBuilder::object(fontClass);
    plist_dict_set_item(font, "UIFontName", plist_new_uid(nameUid));
    plist_dict_set_item(font, "UIFontDescriptor",
                        plist_new_uid(b.add(ArchiveBuilder::object(descriptorClass))));
    plist_dict_set_item(font, "UIFontPointSize", plist_new_real(size));
    plist_dict_set_item(font, "UIFontTraits", plist_new_uint(0));
    plist_dict_set_item(font, "UISystemFont", plist_new_bool(systemFont ? 1 : 0));
    plist_dict_set_item(font, "NSName", plist_new_uid(nameUid));
    plist_dict_set_item(font, "NSSize", plist_new_real(size));
    return b.add(font);
}

// A label written on iOS: "Label from iOS" in Avenir Heavy 17, sRGB 0.2 0.4 0.6 on half
// transparent white, centred.
inline QByteArray uikitLabelArchive()
{
    ArchiveBuilder b;
    const quint64 colorClass = addUIColorClass(b);
    const quint64 font = addUIFont(b, "Avenir-Heavy", 17.0, false);
    const quint64 foreground = b.add(uiColorObject(
        colorClass, 4, {{"UIRed", 0.2}, {"UIGreen", 0.4}, {"UIBlue", 0.6}, {"UIAlpha", 1.0}}, 2,
        "NSRGB", "0.2 0.4 0.6"));
    const quint64 background = b.add(
        uiColorObject(colorClass, 2, {{"UIWhite", 1.0}, {"UIAlpha", 0.5}}, 4, "NSWhite", "1 0.5"));
    plist_t paragraph =
        ArchiveBuilder::object(b.addClass("NSParagraphStyle", {"NSParagraphStyle", "NSObject"}));
    plist_dict_set_item(paragraph, "NSAlignment", plist_new_uint(2));
    plist_dict_set_item(paragraph, "NSTabStops", plist_new_uid(0));
    const quint64 style = b.add(paragraph);
    return b.finish(b.addAttributedString("Label from iOS", {{"NSFont", font},
                                                             {"NSColor", foreground},
                                                             {"NSBackgroundColor", background},
                                                             {"NSParagraphStyle", style}}));
}

inline QString corpusPath(const QString& name)
{
    return QStringLiteral(LOMIR_TEST_DATA_DIR "/../../fuzz/corpus/keyed_archive/") + name;
}

// A binary property list written byte by byte: objects given as raw bytes, with
// one-byte offsets and references.
inline QByteArray rawBinaryList(const std::vector<QByteArray>& objects, quint8 top)
{
    QByteArray data("bplist00");
    std::vector<quint8> offsets;
    for (const QByteArray& object : objects) {
        offsets.push_back(quint8(data.size()));
        data += object;
    }
    const auto tableOffset = quint8(data.size());
    for (quint8 offset : offsets)
        data += char(offset);
    QByteArray trailer(32, '\0');
    trailer[6] = 1; // offset size
    trailer[7] = 1; // reference size
    trailer[15] = char(objects.size());
    trailer[23] = char(top);
    trailer[31] = char(tableOffset);
    return data + trailer;
}

inline RichText severalRuns()
{
    // "Bold 0123 on yellow, under, struck 🙂 end" with one run per feature.
    RichText text;
    TextAttributes base;
    base.font = font(u"Helvetica"_s, 12);
    text.append(u"Bold"_s, [&] {
        TextAttributes bold = base;
        bold.font = font(u"Helvetica"_s, 12, true);
        return bold;
    }());
    text.append(u" digits "_s, base);
    text.append(u"0123"_s, [&] {
        TextAttributes red = base;
        red.foreground = Rgba{255, 0, 0, 255};
        return red;
    }());
    text.append(u" on "_s, base);
    text.append(u"yellow"_s, [&] {
        TextAttributes highlighted = base;
        highlighted.background = Rgba{255, 255, 0, 128};
        return highlighted;
    }());
    text.append(u", "_s, base);
    text.append(u"under"_s, [&] {
        TextAttributes underlined = base;
        underlined.underline = LineStyle::Double;
        return underlined;
    }());
    text.append(u", "_s, base);
    text.append(u"struck"_s, [&] {
        TextAttributes struck = base;
        struck.strikethrough = LineStyle::Single | LineStyle::PatternDash | LineStyle::ByWord;
        return struck;
    }());
    text.append(u" "_s, base);
    text.append(u"\U0001F642\U0001F680"_s, [&] {
        TextAttributes emoji = base;
        emoji.font = font(u"Apple Color Emoji"_s, 18);
        return emoji;
    }());
    text.append(u" end"_s, base);
    return text;
}

// Characters alternating between two attribute sets, one run each, built by joining
// halves (appending one run at a time would take quadratic time).
inline RichText alternating(int first, int count, const TextAttributes& even,
                            const TextAttributes& odd)
{
    if (count == 1)
        return RichText(QString(QChar(u'a' + first % 26)), first % 2 == 0 ? even : odd);
    RichText left = alternating(first, count / 2, even, odd);
    left.append(alternating(first + count / 2, count - count / 2, even, odd));
    return left;
}

inline RichText everyAlignment()
{
    RichText text;
    const TextAlignment alignments[] = {TextAlignment::Left, TextAlignment::Right,
                                        TextAlignment::Center, TextAlignment::Justified,
                                        TextAlignment::Natural};
    int i = 0;
    for (TextAlignment alignment : alignments) {
        TextAttributes attributes;
        attributes.paragraph = aligned(alignment);
        text.append(QStringLiteral("Paragraph %1\n").arg(++i), attributes);
    }
    return text;
}

} // namespace lomir::testing
