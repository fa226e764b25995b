// SPDX-License-Identifier: MIT
#include "services/OrphanRules.h"

#include "platform/TextCompare.h"

#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <array>
#include <vector>

namespace OrphanRules {

namespace {

bool isIdentifierCharacter(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z') || (u >= '0' && u <= '9') || u == '-';
}

constexpr std::array<QLatin1StringView, 11> componentMarkers = {
    QLatin1StringView(".helper"), QLatin1StringView(".helpers"), QLatin1StringView(".agent"),
    QLatin1StringView(".loginitem"), QLatin1StringView(".shipit"), QLatin1StringView(".updater"),
    QLatin1StringView(".daemon"), QLatin1StringView(".service"), QLatin1StringView(".xpc."),
    QLatin1StringView("loginhelper"), QLatin1StringView("crashreporter")};

} // namespace

bool isLikelyBundleID(const QString &text)
{
    // Only ASCII passes, so UTF-16 length equals the count of user-perceived characters here.
    if (text.size() < 5 || !text.contains(QLatin1Char('.')))
        return false;
    int parts = 1;
    bool partEmpty = true;
    for (const QChar c : text) {
        if (c == QLatin1Char('.')) {
            if (partEmpty)
                return false;
            ++parts;
            partEmpty = true;
        } else if (isIdentifierCharacter(c)) {
            partEmpty = false;
        } else {
            return false;
        }
    }
    return !partEmpty && parts >= 2;
}

bool isExcludedFolderName(const QString &lowerCasedName)
{
    static const QSet<QString> names = {
        QStringLiteral("addressbook"), QStringLiteral("animoji"), QStringLiteral("apple"),
        QStringLiteral("assistant"), QStringLiteral("calendars"), QStringLiteral("callhistorydb"),
        QStringLiteral("clouddocs"), QStringLiteral("cloudkit"), QStringLiteral("com.apple"),
        QStringLiteral("contacts"), QStringLiteral("controlcenter"), QStringLiteral("crashreporter"),
        QStringLiteral("differentialprivacy"), QStringLiteral("discord"), QStringLiteral("facetime"),
        QStringLiteral("fileprovider"), QStringLiteral("google"), QStringLiteral("homekit"),
        QStringLiteral("icloud"), QStringLiteral("identityservices"), QStringLiteral("knowledge"),
        QStringLiteral("mail"), QStringLiteral("messages"), QStringLiteral("metadata"),
        QStringLiteral("microsoft"), QStringLiteral("mobilesync"), QStringLiteral("network"),
        QStringLiteral("photos"), QStringLiteral("reminders"), QStringLiteral("spotlight"),
        QStringLiteral("syncservices"), QStringLiteral("tips"), QStringLiteral("translocation"),
        QStringLiteral("trial")};
    return names.contains(lowerCasedName);
}

bool isSystemArtifact(const std::optional<QString> &bundleID, const QString &name)
{
    if (bundleID) {
        const QString lower = bundleID->toLower();
        for (const QLatin1StringView prefix : {QLatin1StringView("com.apple."), QLatin1StringView("group.com.apple."),
                                               QLatin1StringView("com.kestrune.")}) {
            if (lower.startsWith(prefix))
                return true;
        }
    }
    const QString lowerName = name.toLower();
    return isExcludedFolderName(lowerName) || lowerName.startsWith(QLatin1StringView("com.apple"));
}

std::optional<QString> extractBundleIDFromGroupContainer(const QString &name)
{
    if (isLikelyBundleID(name))
        return name;
    static const QRegularExpression embedded(QStringLiteral("([A-Za-z0-9-]+\\.[A-Za-z0-9.-]+\\.[A-Za-z0-9.-]+)"));
    const QRegularExpressionMatch match = embedded.match(name);
    if (match.hasMatch() && isLikelyBundleID(match.captured(0)))
        return match.captured(0);
    if (name.startsWith(QLatin1StringView("group."))) {
        const QString rest = name.mid(6);
        if (isLikelyBundleID(rest))
            return rest;
    }
    return std::nullopt;
}

QString normalizedName(const QString &name)
{
    const QString lower = name.toLower();
    QString result;
    result.reserve(lower.size());
    for (const QChar c : lower) {
        const char16_t u = c.unicode();
        if ((u >= 'a' && u <= 'z') || (u >= '0' && u <= '9'))
            result.append(c);
    }
    return result;
}

std::optional<QString> nameFromIdentifierTail(const QString &bundleID)
{
    const QStringList parts = bundleID.split(QLatin1Char('.'), Qt::SkipEmptyParts);
    if (parts.isEmpty())
        return std::nullopt;
    QString tail = parts.constLast();
    tail.replace(QLatin1Char('-'), QLatin1Char(' '));
    tail.replace(QLatin1Char('_'), QLatin1Char(' '));
    tail = tail.toLower();
    if (tail.size() < 3)
        return std::nullopt;
    return tail;
}

bool looksLikeComponent(const std::optional<QString> &bundleID, const QString &nameOrKey)
{
    const QString text = (bundleID.value_or(QString()) + QLatin1Char(' ') + nameOrKey).toLower();
    return std::any_of(componentMarkers.begin(), componentMarkers.end(),
                       [&](QLatin1StringView marker) { return text.contains(marker); });
}

std::optional<OrphanConfidence> evaluateConfidence(bool hasBundleID, const QList<LeftoverCategory> &categories)
{
    using C = LeftoverCategory;
    const qsizetype n = categories.size();
    const auto has = [&](C category) { return categories.contains(category); };
    // A launch item runs a program from a bundle that is gone: nothing else names an app so surely.
    if (has(C::launchAgents) || has(C::launchDaemons))
        return OrphanConfidence::high;
    if (!hasBundleID && !has(C::applicationSupport))
        return std::nullopt;
    if (n == 1) {
        const C only = categories.constFirst();
        if (only == C::preferences || only == C::caches || only == C::webKit || only == C::httpStorages)
            return std::nullopt;
    }
    if (has(C::containers))
        return OrphanConfidence::high;
    if (has(C::applicationSupport))
        return n >= 2 ? std::optional(OrphanConfidence::high) : std::nullopt;
    if (has(C::preferences)) {
        if (has(C::caches) || has(C::savedState) || has(C::groupContainers) || n >= 3)
            return OrphanConfidence::medium;
        return OrphanConfidence::uncertain;
    }
    if (n == 1)
        return std::nullopt;
    if (n == 2)
        return OrphanConfidence::uncertain;
    return has(C::caches) ? OrphanConfidence::medium : OrphanConfidence::uncertain;
}

QString evidenceSummary(OrphanConfidence confidence, const QList<LeftoverCategory> &categories)
{
    if (confidence == OrphanConfidence::uncertain)
        return QStringLiteral("Weak match. Review carefully before deleting.");
    QStringList titles;
    for (const LeftoverCategory category : categories) {
        const QString title = LeftoverCategories::rawValue(category);
        if (!titles.contains(title))
            titles.append(title);
    }
    std::sort(titles.begin(), titles.end()); // plain code-unit order, not the localized one
    const QString count = QString::number(categories.size());
    const QString joined = titles.join(QStringLiteral(", "));
    return confidence == OrphanConfidence::high
        ? QStringLiteral("Strong match across %1 locations: %2.").arg(count, joined)
        : QStringLiteral("Related files in %1 locations: %2.").arg(count, joined);
}

QString displayNameFromKey(const QString &key)
{
    const QStringList parts = key.split(QLatin1Char('.'), Qt::SkipEmptyParts);
    if (parts.isEmpty())
        return key;
    QString name = parts.constLast();
    name.replace(QLatin1Char('-'), QLatin1Char(' '));
    // Words are delimited by white space only; every other letter of a word goes to lower case.
    bool wordStart = true;
    QString result;
    result.reserve(name.size());
    for (const QChar c : name) {
        if (c.isSpace()) {
            result.append(c);
            wordStart = true;
        } else {
            result.append(wordStart ? c.toUpper() : c.toLower());
            wordStart = false;
        }
    }
    return result;
}

void sortGroups(QList<OrphanedAppGroup> &groups)
{
    // Each group's total once, not once per comparison: thousands of groups sum their items otherwise.
    struct Keyed {
        int grade;
        qint64 size;
        OrphanedAppGroup group;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(size_t(groups.size()));
    for (OrphanedAppGroup &group : groups) {
        const int grade = OrphanConfidences::sortOrder(group.confidence);
        const qint64 size = group.totalSize();
        keyed.push_back({grade, size, std::move(group)});
    }
    std::stable_sort(keyed.begin(), keyed.end(), [](const Keyed &a, const Keyed &b) {
        if (a.grade != b.grade)
            return a.grade < b.grade;
        if (a.size != b.size)
            return a.size > b.size;
        return TextCompare::localizedCaseInsensitiveLess(a.group.displayName, b.group.displayName);
    });
    groups.clear();
    for (Keyed &entry : keyed)
        groups.append(std::move(entry.group));
}

} // namespace OrphanRules
