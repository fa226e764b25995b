// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>

#include <variant>

// Hand-built binary property lists, so that tests can write exactly the broken structures (cycles,
// references past the end, absurd depth) that no serializer would produce.
namespace PlistBytes {

struct String {
    QByteArray ascii;
};
struct Array {
    QList<quint64> references;
};
struct Dictionary {
    QList<quint64> keys;
    QList<quint64> values;
};
using Object = std::variant<String, Array, Dictionary>;

inline void appendBigEndian(QByteArray &out, quint64 value, int width)
{
    for (int k = width - 1; k >= 0; --k)
        out.append(char((value >> (8 * k)) & 0xFF));
}

inline void appendMarker(QByteArray &out, int type, qsizetype count)
{
    if (count < 15) {
        out.append(char((type << 4) | int(count)));
    } else {
        out.append(char((type << 4) | 0x0F));
        out.append(char(0x13)); // an 8-byte integer follows
        appendBigEndian(out, quint64(count), 8);
    }
}

// Two-byte references and offsets; top is the index of the root object.
inline QByteArray binary(const QList<Object> &objects, quint64 top = 0)
{
    constexpr int width = 2;
    QByteArray out("bplist00");
    QList<quint64> offsets;
    for (const Object &object : objects) {
        offsets.append(quint64(out.size()));
        if (const auto *string = std::get_if<String>(&object)) {
            appendMarker(out, 0x5, string->ascii.size());
            out.append(string->ascii);
        } else if (const auto *array = std::get_if<Array>(&object)) {
            appendMarker(out, 0xA, array->references.size());
            for (quint64 reference : array->references)
                appendBigEndian(out, reference, width);
        } else if (const auto *dictionary = std::get_if<Dictionary>(&object)) {
            appendMarker(out, 0xD, dictionary->keys.size());
            for (quint64 reference : dictionary->keys)
                appendBigEndian(out, reference, width);
            for (quint64 reference : dictionary->values)
                appendBigEndian(out, reference, width);
        }
    }
    const quint64 tableOffset = quint64(out.size());
    for (quint64 offset : offsets)
        appendBigEndian(out, offset, width);
    out.append(QByteArray(6, '\0'));
    out.append(char(width));
    out.append(char(width));
    appendBigEndian(out, quint64(objects.size()), 8);
    appendBigEndian(out, top, 8);
    appendBigEndian(out, tableOffset, 8);
    return out;
}

// depth arrays, each holding the next, the innermost holding one string.
inline QByteArray nestedBinaryArrays(int depth)
{
    QList<Object> objects;
    for (int level = 0; level < depth; ++level)
        objects.append(Array{{quint64(level + 1)}});
    objects.append(String{"leaf"});
    return binary(objects);
}

inline QByteArray nestedXmlArrays(int depth)
{
    QByteArray xml("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">");
    for (int level = 0; level < depth; ++level)
        xml += "<array>";
    xml += "<string>leaf</string>";
    for (int level = 0; level < depth; ++level)
        xml += "</array>";
    xml += "</plist>\n";
    return xml;
}

inline QByteArray xmlDictionary(const QByteArray &body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\"><dict>"
        + body + "</dict></plist>\n";
}

} // namespace PlistBytes
