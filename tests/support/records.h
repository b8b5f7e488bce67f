#pragma once

// Comparing document records field by field, so a failure names the field.

#include "core/document/content.h"

#include <QTest>

namespace lomir::testing {

// The editor settings: every field but the text and the frame size.
inline void compareSettings(const Content& actual, const Content& expected)
{
    QCOMPARE(actual.quantity, expected.quantity);
    QCOMPARE(actual.serialStartFrom, expected.serialStartFrom);
    QCOMPARE(actual.width, expected.width);
    QCOMPARE(actual.height, expected.height);
    QCOMPARE(actual.dimensions, expected.dimensions);
    QCOMPARE(actual.metric, expected.metric);
    QCOMPARE(actual.magnification, expected.magnification);
    QCOMPARE(actual.outputSpacing, expected.outputSpacing);
}

inline void compareRecords(const Content& actual, const Content& expected)
{
    QCOMPARE(actual.labelText.nsAttributedString(), expected.labelText.nsAttributedString());
    compareSettings(actual, expected);
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(actual.frameWidth, expected.frameWidth);
    QCOMPARE(actual.frameHeight, expected.frameHeight);
}

// The text of the record's label, without its attributes.
inline QString labelTextOf(const Content& record)
{
    return record.labelText.nsAttributedString().string();
}

} // namespace lomir::testing
