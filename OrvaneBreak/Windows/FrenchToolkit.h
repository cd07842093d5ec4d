// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTranslator>

/// The toolkit's own texts that users see, the context menus of text fields, in French. Needs no file.
class FrenchToolkit final : public QTranslator
{
    Q_OBJECT

public:
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char *context, const char *sourceText, const char *disambiguation,
                                    int number) const override;
};
