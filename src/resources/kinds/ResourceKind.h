// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/KubeTableItem.h"

#include <QByteArrayView>
#include <QStringList>

#include <algorithm>
#include <functional>
#include <optional>
#include <variant>

namespace tidewright {

/// What rows are ordered by in one column: a number, or bytes in memcmp order (naturalSortKey). All rows of a
/// column give the same alternative.
using SortKey = std::variant<double, QByteArray>;

/// One column of a kind's table. The functions get rows of that kind only; main thread unless said otherwise.
struct Column
{
    QString identifier; ///< stable name, for settings and tests
    QString title;
    std::function<QString(const KubeTableItem &)> text;
    std::function<SortKey(const KubeTableItem &)> sortKey; ///< any thread
    Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter;
    int width = 120; ///< at first, in pixels at 100 %
    std::function<QString(const KubeTableItem &)> image = nullptr; ///< name of a state image, beside the text
    std::function<QString(const KubeTableItem &)> colour
        = nullptr; ///< name of a text colour, empty for the usual one
    bool movesWithTime = false; ///< the text is the time since then, by which rows are ordered (timeColumn)
    bool showsNumber = false; ///< the text is the number by which rows are ordered
    bool hidden = false; ///< at first; the header's menu shows it
    /// The title while rows come from listings alone, when their field holds something else.
    QString listedTitle = {};
    bool showsUsage = false; ///< a figure of ResourceKind::usage
    QString explanation = {}; ///< what the title alone does not tell; may be empty
};

/// What an object uses now. What is not known is negative.
struct Usage
{
    double cores = -1;
    double bytes = -1; ///< of memory

    friend bool operator==(const Usage &, const Usage &) = default;
};

/// The tab-separated fields of one line of a listing, as kubectl printed them.
using Fields = std::vector<QByteArrayView>;

/// Everything that tells one kind of object from another, declared once.
struct ResourceKind
{
    QString resourceName; ///< kubectl's word in delete, edit and preview
    QString humanReadableResourceName; ///< singular noun for messages
    QString pluralNoun; ///< for messages; empty for the singular with an "s"
    QString deletionWarning; ///< a sentence on what goes with an object; may be empty
    QString tableName; ///< the sidebar's name, such as "Config Maps"
    QString listWord; ///< kubectl's word after "get" in the listing
    QStringList outputArguments; ///< of the listing, after context and namespace
    std::size_t fieldCount = 0;
    bool namespaced = true; ///< false for kinds that the whole cluster shares
    /// Its objects hold what must not enter the program: only a template, run by kubectl, may read them.
    bool isConfidential = false;
    bool lastLineFirst = false; ///< lines are taken last to first
    /// How pods belong to an object of this kind: by its selector, or by running there.
    enum class Pods { None, BySelector, OnNode };
    Pods pods = Pods::None;
    bool hasOwner = false; ///< another object makes objects of this kind, as a rule
    /// The listing is a table that kubectl prints for people (PrintedTable), with the columns that the server
    /// has for the kind: their titles, without that of the namespace, of which the name's comes first among
    /// `columns`. Nothing for a kind that has a template.
    std::optional<QStringList> printedTitles;
    /// Where the server has the kind, such as "harbor.example/v1", when it is none of those that are known
    /// (ResourcePaths); empty when nobody has told.
    QString apiVersion;
    bool isWatchable = true; ///< false: the server says that it tells no changes of it
    /// What `kubectl logs` takes in front of an object's name, such as "deploy/"; nothing for kinds without
    /// logs.
    std::optional<QString> logTarget;
    /// A range in a JSONPath template that is not ended prints its body once more, for the list itself. That
    /// is nothing but white space as a rule; where it is more, this is it, and no line to complain of.
    QByteArray listRemainder;
    /// The field with a text of people or programs, in which line ends and tabs of their own may stand
    /// (FreeText.h); nothing for a kind that has none.
    std::optional<std::size_t> freeTextField;
    std::vector<Column> columns;
    /// The place of a column among them; there must be one of that identifier.
    int indexOf(QLatin1String identifier) const;

    /// What a live stream tells of an object beyond the fields of the listing: a template like that of
    /// `outputArguments`, which no kubectl gets. Empty: nothing.
    QStringList liveArguments;
    std::size_t liveFieldCount = 0;

    /// kubectl's word after "top"; empty for a kind of which it does not tell what objects use. No line
    /// assigns that: a changed copy of a row keeps it.
    QString topWord;

    // Any thread. The rows they get are of this kind.
    std::function<std::shared_ptr<KubeTableItem>(const QString &name)> create;
    std::function<std::shared_ptr<KubeTableItem>(const KubeTableItem &)> copy;
    std::function<bool(const KubeTableItem &, const KubeTableItem &)> equal;
    /// Assigns all fields but the first (the name). Assigning a line once more must change nothing: it is not
    /// called for the very line that a row has its fields from.
    std::function<void(const Fields &, KubeTableItem &)> assign;
    /// Assigns the fields of `liveArguments`, after those of the listing.
    std::function<void(const Fields &, KubeTableItem &)> assignLive = nullptr;
    /// Both there when `topWord` is.
    std::function<Usage(const KubeTableItem &)> usage = nullptr;
    std::function<void(const Usage &, KubeTableItem &)> assignUsage = nullptr;
    /// Told of each new row and of the moment at which its listing was read (seconds since 1970), the same
    /// for all rows of a listing.
    std::function<void(KubeTableItem &, double moment)> firstListed = nullptr;
    /// Told of each line that was taken; may write a diagnostic.
    std::function<void(QByteArrayView line)> lineTaken = nullptr;
    /// Told of each line whose field count is wrong; may write a diagnostic.
    std::function<void(QByteArrayView line, std::size_t fields)> lineSkipped = nullptr;
    /// The output arguments for a second try when a listing has failed with this error text; none when
    /// another template would not help.
    std::function<QStringList(const QString &error)> otherOutput = nullptr;
};

inline int ResourceKind::indexOf(QLatin1String identifier) const
{
    const auto found = std::find_if(columns.cbegin(), columns.cend(),
        [identifier](const Column &column) { return column.identifier == identifier; });
    Q_ASSERT(found != columns.cend());
    return static_cast<int>(found - columns.cbegin());
}

/// Fills `create`, `copy` and `equal` of a kind whose row type is `Item` (constructible from a name,
/// copyable, ==).
template <typename Item> ResourceKind kindOf()
{
    ResourceKind kind;
    kind.create = [](const QString &name) { return std::make_shared<Item>(name); };
    kind.copy
        = [](const KubeTableItem &item) { return std::make_shared<Item>(static_cast<const Item &>(item)); };
    kind.equal = [](const KubeTableItem &a, const KubeTableItem &b) {
        return static_cast<const Item &>(a) == static_cast<const Item &>(b);
    };
    return kind;
}

} // namespace tidewright
