// SPDX-License-Identifier: MIT
#include "platform/NativePath.h"

namespace {

// Length of the valid UTF-8 sequence starting at s[i], or 0 when the bytes there are not one.
int validSequenceLength(const unsigned char *s, qsizetype i, qsizetype n)
{
    const unsigned char c = s[i];
    int length;
    char32_t minimum;
    if (c < 0x80)
        return 1;
    if ((c & 0xE0) == 0xC0) {
        length = 2;
        minimum = 0x80;
    } else if ((c & 0xF0) == 0xE0) {
        length = 3;
        minimum = 0x800;
    } else if ((c & 0xF8) == 0xF0) {
        length = 4;
        minimum = 0x10000;
    } else {
        return 0;
    }
    if (i + length > n)
        return 0;
    char32_t code = c & (0x7F >> length);
    for (int k = 1; k < length; ++k) {
        if ((s[i + k] & 0xC0) != 0x80)
            return 0;
        code = (code << 6) | (s[i + k] & 0x3F);
    }
    if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        return 0;
    return length;
}

} // namespace

namespace NativePath {

QString decode(const char *bytes, qsizetype length)
{
    const auto *s = reinterpret_cast<const unsigned char *>(bytes);
    bool ascii = true;
    for (qsizetype i = 0; i < length && ascii; ++i)
        ascii = s[i] < 0x80;
    if (ascii)
        return QString::fromLatin1(bytes, length);

    QString out;
    out.reserve(length);
    qsizetype i = 0;
    while (i < length) {
        const int len = validSequenceLength(s, i, length);
        if (len == 0) {
            out.append(QChar(char16_t(0xDC00 + s[i])));
            ++i;
        } else {
            out.append(QString::fromUtf8(bytes + i, len));
            i += len;
        }
    }
    return out;
}

QByteArray encode(const QString &path)
{
    QByteArray out;
    out.reserve(path.size());
    const qsizetype n = path.size();
    qsizetype start = 0;
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t u = path.at(i).unicode();
        const bool escaped = u >= 0xDC80 && u <= 0xDCFF
            && !(i > 0 && QChar::isHighSurrogate(path.at(i - 1).unicode()));
        if (escaped) {
            out.append(QStringView(path).mid(start, i - start).toUtf8());
            out.append(char(u - 0xDC00));
            start = i + 1;
        }
    }
    out.append(QStringView(path).mid(start).toUtf8());
    return out;
}

} // namespace NativePath
