// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTest>

// Five seconds, the toolkit's own limit, pass on a machine that is busy with other builds.
#undef QTRY_VERIFY
#undef QTRY_VERIFY2
#undef QTRY_COMPARE
#define QTRY_VERIFY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, 30'000)
#define QTRY_VERIFY2(condition, text) QTRY_VERIFY2_WITH_TIMEOUT(condition, text, 30'000)
#define QTRY_COMPARE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, 30'000)
