// SPDX-License-Identifier: GPL-3.0-or-later
#include "FrenchToolkit.h"

#include <algorithm>
#include <iterator>
#include <string_view>

using namespace Qt::StringLiterals;

namespace {

struct Text
{
    std::string_view source;
    QStringView french;
};

constexpr Text texts[] = {{"&Undo", u"&Annuler"},
                          {"&Redo", u"&Rétablir"},
                          {"Cu&t", u"Co&uper"},
                          {"&Copy", u"&Copier"},
                          {"&Paste", u"C&oller"},
                          {"Delete", u"Supprimer"},
                          {"Select All", u"Tout sélectionner"},
                          {"Shift", u"Maj"},
                          {"Scroll here", u"Défiler jusqu'ici"},
                          {"Top", u"En haut"},
                          {"Bottom", u"En bas"},
                          {"Page up", u"Page précédente"},
                          {"Page down", u"Page suivante"},
                          {"Scroll up", u"Défiler vers le haut"},
                          {"Scroll down", u"Défiler vers le bas"}};

} // namespace

QString FrenchToolkit::translate(const char * /*context*/, const char *sourceText,
                                 const char * /*disambiguation*/, int /*number*/) const
{
    const auto *found = std::find_if(std::begin(texts), std::end(texts),
                                     [sourceText](const Text &text) { return text.source == sourceText; });
    return found == std::end(texts) ? QString() : found->french.toString();
}
