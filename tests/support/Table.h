// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTest>

#include <tuple>

/// A table-driven test's rows, by the types of their columns: the data function makes one and adds rows, the
/// test function takes `current`. Texts may be literals (null: a null text); columns left out at a row's end
/// are empty.
template <typename... Values> class Table
{
public:
    Table() { QTest::addColumn<std::tuple<Values...>>("row"); }

    template <typename... Given> void row(const QByteArray &name, const Given &...given) const
    {
        std::tuple<Values...> values;
        fill(values, std::index_sequence_for<Given...>(), given...);
        QTest::newRow(name.constData()) << values;
    }
    static std::tuple<Values...> current()
    {
        using Row = std::tuple<Values...>;
        return *static_cast<const Row *>(QTest::qData("row", qMetaTypeId<Row>()));
    }

private:
    template <std::size_t... Places, typename... Given>
    static void fill(
        std::tuple<Values...> &values, std::index_sequence<Places...> /*places*/, const Given &...given)
    {
        ((std::get<Places>(values) = as<std::tuple_element_t<Places, std::tuple<Values...>>>(given)), ...);
    }
    template <typename Value, typename Given> static Value as(const Given &given)
    {
        if constexpr (std::is_same_v<Value, QString> && !std::is_convertible_v<Given, QString>) {
            return QString::fromUtf8(QByteArray(given));
        } else {
            return Value(given);
        }
    }
};
