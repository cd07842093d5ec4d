// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakOverlayPanel.h"

#include "BreakAccessibility.h"
#include "Palette.h"
#include "RingView.h"
#include "TextButton.h"

#include <QImage>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QColor white(float alpha)
{
    return QColor::fromRgbF(1, 1, 1, alpha);
}

constexpr int ringSize = 150;
/// A text alone is a small target; the padding reaches into the gaps above and below, and draws nothing.
constexpr QMargins skipButtonPadding(12, 8, 12, 4);

constexpr int gapAfterTitle = 10;
constexpr int gapAfterSubtitle = 28;
constexpr int gapAfterRing = 30;
constexpr int gapAfterButton = 4;

/// What a column that is too large for its screen leaves free on each side.
constexpr int screenMargin = 4;

/// The layout decides which modifiers and which key type a period: Shift on a French keyboard, the keypad.
bool isCancelCommand(const QKeyEvent &event)
{
    constexpr Qt::KeyboardModifiers commands = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    return event.key() == Qt::Key_Period && (event.modifiers() & commands) == Qt::ControlModifier;
}

} // namespace

BreakOverlayPanel::BreakOverlayPanel(int pauseSeconds)
    : m_ring(new RingView)
    , m_skipButton(
          new TextButton(u"Passer"_s, systemFont(13, QFont::Medium), white(0.55F), skipButtonPadding))
{
    setObjectName(u"breakOverlayPanel"_s);
    setWindowTitle(u"OrvaneBreak"_s);
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_TranslucentBackground);
    QPalette colors = palette();
    colors.setColor(QPalette::Window, QColor::fromRgbF(0, 0, 0, 0.75F));
    setPalette(colors);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
    // No task bar shows this window; without an icon of its own, all sizes of the application's would be sent
    // to the display server for every panel while the user waits for the picture.
    QPixmap icon(1, 1);
    icon.fill(Qt::transparent);
    setWindowIcon(icon);

    m_ring->setFixedSize(ringSize, ringSize);
    m_ring->setSecondsLeft(pauseSeconds);
    m_ring->setLength(pauseSeconds);
    m_ring->setFraction(1.0);
    m_skipButton->setObjectName(u"skipButton"_s);
    m_skipButton->setFocusPolicy(Qt::NoFocus);

    auto *title = makeLabel(u"Regarde au loin, à 6 mètres"_s, 30, QFont::Bold, QColor(Qt::white));
    auto *subtitle = makeLabel(u"Laisse tes yeux se reposer un instant."_s, 16, QFont::Normal, white(0.7F));
    auto *hint = makeLabel(u"ou appuie sur Échap"_s, 11, QFont::Normal, white(0.35F));
    title->setObjectName(u"title"_s);
    subtitle->setObjectName(u"subtitle"_s);
    hint->setObjectName(u"hint"_s);
    describe(pauseSeconds);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(screenMargin, screenMargin, screenMargin, screenMargin);
    column->setSizeConstraint(QLayout::SetNoConstraint);
    column->setSpacing(0);
    column->addStretch();
    column->addWidget(title, 0, Qt::AlignHCenter);
    column->addSpacing(gapAfterTitle);
    column->addWidget(subtitle, 0, Qt::AlignHCenter);
    column->addSpacing(gapAfterSubtitle);
    column->addWidget(m_ring, 0, Qt::AlignHCenter);
    column->addSpacing(gapAfterRing - skipButtonPadding.top());
    column->addWidget(m_skipButton, 0, Qt::AlignHCenter);
    column->addSpacing(gapAfterButton - skipButtonPadding.bottom());
    column->addWidget(hint, 0, Qt::AlignHCenter);
    column->addStretch();
    m_columnFit.emplace(*column, *m_ring);
}

/// The texts on the panel are read as well, so the instruction is not said again.
void BreakOverlayPanel::describe(int pauseSeconds)
{
    describeBreakToScreenReaders();
    setAccessibleName(u"Pause de %1\u00A0secondes"_s.arg(pauseSeconds));
    setAccessibleDescription(u"Le bouton Passer et la touche Échap y mettent fin"_s);
    m_ring->setAccessibleName(u"Secondes restantes"_s);
    m_skipButton->setAccessibleDescription(u"Met fin à la pause, comme la touche Échap"_s);
}

void BreakOverlayPanel::cancelOperation() const
{
    if (onEscape)
        onEscape();
}

void BreakOverlayPanel::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Escape && !isCancelCommand(*event)) {
        QWidget::keyPressEvent(event);
        return;
    }
    event->accept();
    m_pressedKey = event->nativeScanCode();
    cancelOperation();
    m_pressedKey = 0;
}

void BreakOverlayPanel::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    const QBrush &background = palette().window();
    if (background.style() == Qt::TexturePattern)
        painter.drawImage(QPoint(), background.textureImage());
    else
        painter.fillRect(event->rect(), background);
}

void BreakOverlayPanel::resizeEvent(QResizeEvent *event)
{
    m_columnFit->fit(event->size());
}
