// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>

/// Whether no tag of an XML text has more than 64 attributes. The XML reader compares each attribute with all
/// others before it returns the tag: 100,000 of them take a minute. True or false for text that is not
/// well-formed; any bytes, any thread.
[[nodiscard]] bool hasSmallTags(QByteArrayView xml);
