// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>

#include <variant>

// Hand-built binary property lists, so that tests can write exactly the broken structures (cycles,
// references past the end, absurd depth) that no serializer would produce.
namespace PlistBytes {

struct String { QByteArray bytes; bool utf16 = false; }; // utf16: bytes are big-endian UTF-16 units
struct Array { QList<quint64> references; };
struct Dictionary { QList<quint64> keys; QList<quint64> values; };
using Object = std::variant<String, Array, Dictionary>;

inline void appendBigEndian(QByteArray &out, quint64 value, int width)
{
    for (int k = width - 1; k >= 0; --k)
        out.append(char((value >> (8 * k)) & 0xFF));
}

// Counts from 15 on take the extended form: the marker's low nibble is 0xF and an 8-byte integer follows.
inline void appendMarker(QByteArray &out, int type, qsizetype count)
{
    out.append(char((type << 4) | int(count < 15 ? count : 0x0F)));
    if (count >= 15) {
        out.append(char(0x13));
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
            appendMarker(out, string->utf16 ? 0x6 : 0x5, string->bytes.size() / (string->utf16 ? 2 : 1));
            out.append(string->bytes);
            continue;
        }
        const auto *dictionary = std::get_if<Dictionary>(&object);
        const QList<quint64> references = dictionary ? dictionary->keys + dictionary->values : std::get<Array>(object).references;
        appendMarker(out, dictionary ? 0xD : 0xA, dictionary ? dictionary->keys.size() : references.size());
        for (quint64 reference : references)
            appendBigEndian(out, reference, width);
    }
    const quint64 tableOffset = quint64(out.size());
    for (quint64 offset : offsets)
        appendBigEndian(out, offset, width);
    out.append(QByteArray(6, '\0') + char(width) + char(width));
    for (const quint64 value : {quint64(objects.size()), top, tableOffset})
        appendBigEndian(out, value, 8);
    return out;
}

// levels arrays, each holding references to the next, the innermost holding one string. With two
// references a few bytes per level expand to 2^levels objects in a reader that copies every reference.
inline QByteArray nestedBinaryArrays(int levels, int references = 1)
{
    QList<Object> objects;
    for (int level = 0; level < levels; ++level)
        objects.append(Array{QList<quint64>(references, quint64(level + 1))});
    return binary(objects << String{"leaf"});
}

inline QByteArray nestedXmlArrays(int depth)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + QByteArray("<array>").repeated(depth)
           + "<string>leaf</string>" + QByteArray("</array>").repeated(depth) + "</plist>\n";
}

inline QByteArray xmlDictionary(const QByteArray &body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\"><dict>" + body + "</dict></plist>\n";
}

// One dictionary of count keys, each holding true.
inline QByteArray xmlManyKeys(int count)
{
    QByteArray body;
    for (int k = 0; k < count; ++k)
        body += "<key>k" + QByteArray::number(k) + "</key><true/>";
    return xmlDictionary(body);
}

} // namespace PlistBytes
