// SPDX-License-Identifier: GPL-3.0-or-later
#include "ReportForm.h"

#include "Palette.h"
#include "WritingField.h"

#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace {

constexpr int textHeight = 110;
constexpr int emailHeight = 24;

} // namespace

ReportForm::ReportForm(const QString &text, const QString &email)
    : Alert(
          u"reportForm"_s, u"Signaler un problème"_s,
          u"Décris ce qui ne va pas, ça arrive directement chez Orvane Labs. La réponse s'affichera dans l'app."_s)
    , m_text(new WritingField)
    , m_email(new QLineEdit)
{
    m_text->setObjectName(u"reportText"_s);
    m_text->setAccessibleName(u"Décris ce qui ne va pas"_s);
    m_text->setFont(systemFont(13, QFont::Normal));
    m_text->setTabChangesFocus(true);
    m_text->setFixedSize(contentWidth, textHeight);
    m_text->setPlainText(text);
    addAccessory(m_text);
    AppearanceLabel *limit = makeLabel(WritingField::limitText(), 11, QFont::Normal, secondaryLabelColor());
    limit->setObjectName(u"reportLimit"_s);
    limit->hide();
    addAccessory(limit);
    connect(m_text, &WritingField::limitChecked, limit, &QWidget::setVisible);
    m_email->setObjectName(u"reportEmail"_s);
    m_email->setFont(systemFont(12, QFont::Normal));
    m_email->setPlaceholderText(u"ton email (facultatif, pour te répondre aussi par mail)"_s);
    m_email->setAccessibleName(m_email->placeholderText());
    m_email->setFixedSize(contentWidth, emailHeight);
    m_email->setText(email);
    addAccessory(m_email);
    addDefaultButton(u"Envoyer"_s);
    addCancelButton(u"Annuler"_s);
    m_text->setFocus();
}

void ReportForm::accept()
{
    if (!m_text->isTooLong())
        Alert::accept();
}

QString ReportForm::text() const
{
    return m_text->text().trimmed();
}

QString ReportForm::email() const
{
    return m_email->text();
}
