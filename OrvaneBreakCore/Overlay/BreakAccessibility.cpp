// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakAccessibility.h"

#include "BreakOverlayPanel.h"
#include "RingView.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace {

class AccessibleRing final : public QAccessibleWidget, public QAccessibleValueInterface
{
public:
    explicit AccessibleRing(RingView &ring)
        : QAccessibleWidget(&ring, QAccessible::ProgressBar)
        , m_ring(ring)
    {
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface *>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    [[nodiscard]] QVariant currentValue() const override { return m_ring.secondsLeft(); }
    void setCurrentValue(const QVariant & /*value*/) override {}
    [[nodiscard]] QVariant maximumValue() const override { return m_ring.length(); }
    [[nodiscard]] QVariant minimumValue() const override { return 0; }
    [[nodiscard]] QVariant minimumStepSize() const override { return 1; }

private:
    RingView &m_ring; ///< Outlives this object.
};

QAccessibleInterface *accessibleOf(const QString & /*className*/, QObject *object)
{
    if (auto *ring = qobject_cast<RingView *>(object))
        return new AccessibleRing(*ring);
    if (auto *panel = qobject_cast<BreakOverlayPanel *>(object))
        return new QAccessibleWidget(panel, QAccessible::Dialog);
    return nullptr;
}

} // namespace

void describeBreakToScreenReaders()
{
    QAccessible::installFactory(&accessibleOf);
}
