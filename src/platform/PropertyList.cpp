// SPDX-License-Identifier: MIT
#include "platform/PropertyList.h"
#include "platform/FileSystem.h"

#include <QDateTime>
#include <QTimeZone>


#include <plist/plist.h>

#include <cctype>
#include <memory>
#include <vector>

namespace {

constexpr QByteArrayView binaryMagic("bplist00");

// Walks an XML plist the way libplist 2.2's reader (xplist.c) tokenizes it, so that both agree on where
// every tag ends: a double quote inside a tag, a processing instruction or a declaration opens a quoted
// section that runs to the next double quote, and a '>' inside it ends nothing (so <array a="/>"> opens
// an array). Comments and CDATA end at their first terminator, quotes or not. False when the nesting
// passes the depth limit, a dictionary holds more keys than the reader can take in reasonable time, the
// tags do not pair up, or the text holds a NUL character.
class XmlChecker
{
public:
    explicit XmlChecker(QByteArrayView xml) : m_xml(xml) {}

    bool check()
    {
        // libplist 2.2 aborts on text holding a NUL character, raw or as a character reference: the
        // assertion in plist_get_string_val quoted in https://github.com/libimobiledevice/libplist/issues/126.
        if (m_xml.contains('\0'))
            return false;
        const qsizetype n = m_xml.size();
        qsizetype i = 0;
        while (i < n) {
            if (m_xml[i] == '&') {
                if (isNulReference(i))
                    return false;
                ++i;
                continue;
            }
            if (m_xml[i] != '<') {
                ++i;
                continue;
            }
            const QByteArrayView rest = m_xml.sliced(i);
            if (rest.startsWith("<?")) {
                i = endOf(i + 2, "?>", true);
            } else if (rest.startsWith("<!--")) {
                i = endOf(i + 4, "-->", false);
            } else if (rest.startsWith("<![CDATA[")) {
                i = endOf(i + 9, "]]>", false);
            } else if (rest.startsWith("<!")) {
                // A declaration ends at its '>', or, with an internal subset, at "]>".
                const qsizetype stop = firstOf(i + 2, "[>");
                i = stop < n && m_xml[stop] == '[' ? endOf(stop, "]>", true) : stop + 1;
            } else if (!tag(i)) {
                return false;
            }
        }
        return true;
    }

private:
    // Past the first terminator at or after from (outside quotes when asked), or the end.
    qsizetype endOf(qsizetype from, QByteArrayView terminator, bool skipQuotes) const
    {
        const qsizetype n = m_xml.size();
        for (qsizetype k = from; k < n; ++k) {
            if (m_xml.sliced(k).startsWith(terminator))
                return k + terminator.size();
            if (skipQuotes && m_xml[k] == '"') {
                const qsizetype close = m_xml.indexOf('"', k + 1);
                if (close < 0)
                    return n;
                k = close;
            }
        }
        return n;
    }

    // The first of the given characters at or after from, outside quotes, or the end.
    qsizetype firstOf(qsizetype from, QByteArrayView characters) const
    {
        const qsizetype n = m_xml.size();
        for (qsizetype k = from; k < n; ++k) {
            if (m_xml[k] == '"') {
                const qsizetype close = m_xml.indexOf('"', k + 1);
                if (close < 0)
                    return n;
                k = close;
            } else if (characters.contains(m_xml[k])) {
                return k;
            }
        }
        return n;
    }

    bool isNulReference(qsizetype at) const
    {
        const qsizetype n = m_xml.size();
        qsizetype k = at + 1;
        if (k >= n || m_xml[k] != '#')
            return false;
        ++k;
        const bool hex = k < n && (m_xml[k] == 'x' || m_xml[k] == 'X');
        if (hex)
            ++k;
        bool nonZero = false;
        const qsizetype digits = k;
        while (k < n && (std::isdigit(uchar(m_xml[k])) || (hex && std::isxdigit(uchar(m_xml[k]))))) {
            nonZero = nonZero || m_xml[k] != '0';
            ++k;
        }
        return k > digits && !nonZero;
    }

    // One element tag starting at i; moves i past it. The name runs to white space or an angle
    // bracket, the tag to the next '>' outside quotes.
    bool tag(qsizetype &i)
    {
        const qsizetype n = m_xml.size();
        qsizetype nameEnd = i + 1;
        while (nameEnd < n && !QByteArrayView(" \r\n\t<>").contains(m_xml[nameEnd]))
            ++nameEnd;
        QByteArrayView name = m_xml.sliced(i + 1, nameEnd - i - 1);
        const qsizetype end = nameEnd < n && m_xml[nameEnd] == '>' ? nameEnd : firstOf(nameEnd, "<>");
        if (end >= n) {
            i = n;
            return true;
        }
        if (m_xml[end] == '<') {
            // The reader gives up on a tag without its '>'; the '<' starts the next token here.
            i = end;
            return true;
        }
        i = end + 1;
        const bool empty = m_xml[end - 1] == '/';
        if (empty && name.endsWith('/'))
            name.chop(1);
        if (name == "dict" || name == "array") {
            if (empty)
                return true;
            if (m_open.size() >= std::size_t(PropertyList::maximumDepth))
                return false;
            m_open.push_back({name == "dict", 0});
            return true;
        }
        if (name == "/dict" || name == "/array") {
            if (m_open.empty() || m_open.back().isDictionary != (name == "/dict"))
                return false;
            m_open.pop_back();
            return true;
        }
        // libplist 2.2 looks every new key up among the ones before it, one by one: measured here, the
        // time grows with the square of the keys.
        if (name == "key" && !empty && !m_open.empty() && m_open.back().isDictionary)
            return ++m_open.back().keys <= PropertyList::maximumDictionaryKeys;
        return true;
    }

    struct Container {
        bool isDictionary;
        qsizetype keys;
    };

    QByteArrayView m_xml;
    std::vector<Container> m_open;
};

// Checks a binary plist's trailer, offset table and every container's references, and measures the
// nesting depth without recursing more than the limit. False for anything libplist must not see.
class BinaryChecker
{
public:
    explicit BinaryChecker(QByteArrayView data) : m_data(data) {}

    bool check()
    {
        if (m_data.size() < qsizetype(binaryMagic.size()) + 32)
            return false;
        const qsizetype trailer = m_data.size() - 32;
        m_offsetSize = uchar(m_data[trailer + 6]);
        m_refSize = uchar(m_data[trailer + 7]);
        const quint64 objectCount = readBigEndian(trailer + 8, 8);
        const quint64 topObject = readBigEndian(trailer + 16, 8);
        const quint64 tableOffset = readBigEndian(trailer + 24, 8);
        if (m_offsetSize < 1 || m_offsetSize > 8 || m_refSize < 1 || m_refSize > 8)
            return false;
        if (objectCount == 0 || topObject >= objectCount || tableOffset >= quint64(trailer))
            return false;
        if (objectCount > quint64(trailer - tableOffset) / m_offsetSize)
            return false;
        m_objectCount = objectCount;
        m_tableOffset = qsizetype(tableOffset);
        m_state.assign(objectCount, Unvisited);
        m_depth.assign(objectCount, 0);
        m_expanded.assign(objectCount, 1);
        return depthOf(topObject, 1) <= PropertyList::maximumDepth;
    }

private:
    enum State : uchar { Unvisited, OnStack, Done };
    // The high four bits of an object's marker byte.
    enum Type : uchar { Data = 0x4, AsciiString = 0x5, Utf16String = 0x6, Array = 0xA, Dictionary = 0xD };
    static constexpr int tooDeep = PropertyList::maximumDepth + 1;

    quint64 readBigEndian(qsizetype at, int width) const
    {
        quint64 value = 0;
        for (int k = 0; k < width; ++k)
            value = (value << 8) | uchar(m_data[at + k]);
        return value;
    }

    // One object as its offset-table entry places it: the marker's type, its count (read from the
    // following integer when the marker's own four bits cannot hold it) and where its body starts.
    struct Object {
        uchar type;
        quint64 count;
        qsizetype body;
    };

    static bool hasCount(uchar type)
    {
        return type == Data || type == AsciiString || type == Utf16String || isContainer(type);
    }

    // Arrays, ordered sets (0xB), sets (0xC) and dictionaries: the only objects that refer to others.
    static bool isContainer(uchar type) { return type >= Array && type <= Dictionary; }

    // Absent when the entry points outside the object area or the count runs past it.
    std::optional<Object> objectAt(quint64 index) const
    {
        const qsizetype end = m_tableOffset;
        const quint64 offset = readBigEndian(m_tableOffset + qsizetype(index) * m_offsetSize, m_offsetSize);
        if (offset < quint64(binaryMagic.size()) || offset >= quint64(end))
            return std::nullopt;
        const uchar marker = uchar(m_data[qsizetype(offset)]);
        Object object{uchar(marker >> 4), quint64(marker & 0x0F), qsizetype(offset) + 1};
        if (!hasCount(object.type) || object.count != 0x0F)
            return object;
        const qsizetype at = object.body;
        if (at >= end || (uchar(m_data[at]) >> 4) != 0x1)
            return std::nullopt;
        const int width = 1 << (uchar(m_data[at]) & 0x0F);
        if (width > 8 || at + 1 + width > end)
            return std::nullopt;
        object.count = readBigEndian(at + 1, width);
        object.body = at + 1 + width;
        return object;
    }

    // libplist 2.2 asserts that a key's or string's length equals its strlen() (plist_get_key_val and
    // plist_get_string_val, quoted in https://github.com/libimobiledevice/libplist/issues/126), so a NUL
    // character inside one, in ASCII or UTF-16 form, aborts the whole program.
    bool isTextWithoutNul(const Object &object) const
    {
        if (object.type != AsciiString && object.type != Utf16String)
            return true;
        const int unit = object.type == Utf16String ? 2 : 1;
        const qsizetype end = m_tableOffset;
        if (object.count > quint64(end) || object.count * unit > quint64(end - object.body))
            return false;
        const QByteArrayView text = m_data.sliced(object.body, qsizetype(object.count) * unit);
        for (qsizetype k = 0; k < text.size(); k += unit) {
            if (text[k] == 0 && (unit == 1 || text[k + 1] == 0))
                return false;
        }
        return true;
    }

    // Depth of the subtree at object index, entered at the given level; tooDeep on a cycle, a broken
    // reference, passing the depth limit or expanding to too many objects.
    int depthOf(quint64 index, int level)
    {
        if (index >= m_objectCount || m_state[index] == OnStack)
            return tooDeep;
        if (m_state[index] == Done)
            return m_depth[index];
        const std::optional<Object> object = objectAt(index);
        if (!object || !isTextWithoutNul(*object))
            return tooDeep;
        int depth = 0;
        if (isContainer(object->type)) {
            m_state[index] = OnStack;
            depth = containerDepth(index, *object, level);
        }
        m_state[index] = Done;
        m_depth[index] = depth;
        return depth;
    }

    // Only containers add a level: a string inside the deepest allowed array is fine.
    int containerDepth(quint64 index, const Object &container, int level)
    {
        if (level > PropertyList::maximumDepth)
            return tooDeep;
        // A dictionary lists its keys' references, then its values'.
        const quint64 references = container.type == Dictionary ? container.count * 2 : container.count;
        const qsizetype end = m_tableOffset;
        if (container.count > quint64(end) || references > quint64(end - container.body) / m_refSize)
            return tooDeep;
        int deepest = 0;
        // libplist 2.2 parses a referenced object again for every reference to it
        // (parse_bin_node_at_index keeps no table of parsed objects), so the objects are memoised but
        // the expansion is summed per reference: arrays that each hold the next one twice are a few
        // bytes and 2^depth copies.
        quint64 expanded = 1;
        for (quint64 k = 0; k < references && deepest < tooDeep; ++k) {
            const quint64 child = readBigEndian(container.body + qsizetype(k) * m_refSize, m_refSize);
            deepest = std::max(deepest, depthOf(child, level + 1));
            if (deepest < tooDeep)
                expanded += m_expanded[child];
            if (expanded > PropertyList::maximumObjects)
                deepest = tooDeep;
        }
        m_expanded[index] = expanded;
        return deepest >= tooDeep ? tooDeep : deepest + 1;
    }

    QByteArrayView m_data;
    int m_offsetSize = 0;
    int m_refSize = 0;
    quint64 m_objectCount = 0;
    qsizetype m_tableOffset = 0;
    std::vector<State> m_state;
    std::vector<int> m_depth;
    std::vector<quint64> m_expanded;
};

struct PlistDeleter {
    void operator()(void *node) const { plist_free(node); }
};
using PlistPointer = std::unique_ptr<void, PlistDeleter>;

QString takeString(char *raw)
{
    const QString value = QString::fromUtf8(raw ? raw : "");
    free(raw);
    return value;
}

QVariant toVariant(plist_t node);

QByteArray dataOf(plist_t node)
{
    char *raw = nullptr;
    uint64_t length = 0;
    plist_get_data_val(node, &raw, &length);
    QByteArray value(raw, qsizetype(length));
    free(raw);
    return value;
}

QDateTime dateOf(plist_t node)
{
    int32_t seconds = 0, microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    static const QDateTime reference(QDate(2001, 1, 1), QTime(0, 0), QTimeZone::utc());
    return reference.addMSecs(qint64(seconds) * 1000 + microseconds / 1000);
}

QVariantList listOf(plist_t node)
{
    QVariantList list;
    const uint32_t size = plist_array_get_size(node);
    list.reserve(size);
    for (uint32_t k = 0; k < size; ++k)
        list.append(toVariant(plist_array_get_item(node, k)));
    return list;
}

QVariantMap mapOf(plist_t node)
{
    QVariantMap map;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    for (;;) {
        char *key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(node, iterator, &key, &value);
        if (!value) {
            free(key);
            break;
        }
        map.insert(takeString(key), toVariant(value));
    }
    free(iterator);
    return map;
}

QVariant toVariant(plist_t node)
{
    char *text = nullptr;
    uint64_t number = 0;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return bool(value);
    }
    case PLIST_UINT:
        // libplist keeps signed integers in the same 64 bits.
        plist_get_uint_val(node, &number);
        return qint64(number);
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return value;
    }
    case PLIST_STRING:
        plist_get_string_val(node, &text);
        return takeString(text);
    case PLIST_KEY:
        plist_get_key_val(node, &text);
        return takeString(text);
    case PLIST_DATA:
        return dataOf(node);
    case PLIST_DATE:
        return dateOf(node);
    case PLIST_UID:
        plist_get_uid_val(node, &number);
        return quint64(number);
    case PLIST_ARRAY:
        return listOf(node);
    case PLIST_DICT:
        return mapOf(node);
    default:
        return {};
    }
}

} // namespace

namespace PropertyList {

std::optional<QVariant> fromData(const QByteArray &data)
{
    if (data.isEmpty() || data.size() > maximumBytes)
        return std::nullopt;
    const QByteArrayView view(data);
    plist_t root = nullptr;
    // plist_from_bin / plist_from_xml keep the same call form across libplist 2.2 and later releases.
    if (view.startsWith(binaryMagic)) {
        if (!BinaryChecker(view).check())
            return std::nullopt;
        plist_from_bin(data.constData(), uint32_t(data.size()), &root);
    } else {
        if (!XmlChecker(view).check())
            return std::nullopt;
        plist_from_xml(data.constData(), uint32_t(data.size()), &root);
    }
    if (!root)
        return std::nullopt;
    const PlistPointer owner(root);
    return toVariant(root);
}

std::optional<QVariant> read(const QString &path)
{
    const auto data = FileSystem::readFile(path, maximumBytes);
    if (!data)
        return std::nullopt;
    return fromData(*data);
}

std::optional<QVariantMap> readDictionary(const QString &path)
{
    const auto value = read(path);
    if (!value || value->typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    return value->toMap();
}

} // namespace PropertyList
