// SPDX-License-Identifier: GPL-3.0-or-later
#include "AccentCheckBox.h"
#include "AppDelegate.h"
#include "BreakSettings.h"
#include "Bundle.h"
#include "Card.h"
#include "CheckBoxes.h"
#include "LoginItem.h"
#include "MainWindow.h"
#include "Palette.h"
#include "Preferences.h"
#include "StandardUpdaterController.h"
#include "SymbolButton.h"
#include "TextButton.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontMetrics>
#include <QPushButton>
#include <QWheelEvent>

#include <algorithm>
#include <initializer_list>

using namespace Qt::StringLiterals;

namespace {

constexpr int pageMargin = 24;
constexpr int pageRight = 406;
constexpr int cardLeft = 40;
constexpr int cardRight = 390;
constexpr int popUpLeft = 270;
constexpr int controlFontSize = 13;
constexpr int smallestFontSize = 9;
constexpr int titlePadding = 11;

/// Moves `view` to `origin` at the size of its content. If it would extend beyond `right`, which happens with
/// wide desktop fonts, reduces its font until the text fits.
void fit(QWidget &view, QPoint origin, int right)
{
    QFont font = view.font();
    view.adjustSize();
    while (origin.x() + view.sizeHint().width() > right && font.pixelSize() > smallestFontSize) {
        font.setPixelSize(font.pixelSize() - 1);
        view.setFont(font);
        view.adjustSize();
    }
    view.move(origin);
}

/// Adds space beside the title, because some styles leave none.
void fitWithPadding(QPushButton &button)
{
    const int width = QFontMetrics(button.font()).horizontalAdvance(button.text()) + 2 * titlePadding;
    button.resize(std::max(button.sizeHint().width(), width), button.sizeHint().height());
}

/// Gives all the smallest of their fonts.
void fitAlike(std::initializer_list<QWidget *> views)
{
    const QWidget *smallest = std::min(views, [](const QWidget *one, const QWidget *other) {
        return one->font().pixelSize() < other->font().pixelSize();
    });
    for (QWidget *view : views) {
        view->setFont(smallest->font());
        view->adjustSize();
    }
}

/// A pop-up that leaves the wheel to the page.
class PopUpButton final : public QComboBox
{
protected:
    void wheelEvent(QWheelEvent *event) override { event->ignore(); }
};

/// Adds named controls to a page.
class PageBuilder
{
public:
    explicit PageBuilder(QWidget *root)
        : m_root(root)
    {
    }

    template <typename View>
    View *add(View *view, const QString &name)
    {
        view->setParent(m_root);
        view->setObjectName(name);
        return view;
    }

    void card(const QRect &frame) { add(new Card, u"card"_s)->setGeometry(frame); }

    AppearanceLabel *label(const QString &text, const QString &name, int size, QFont::Weight weight,
                           const AppearanceColor &color)
    {
        AppearanceLabel *view = add(makeLabel(text, size, weight, color), name);
        view->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        return view;
    }

    /// Adds a label and, to its right, a pop-up button for `options`.
    template <typename Options, typename Number>
    QComboBox *popUpRow(const QString &title, const QString &name, int middle, const Options &options,
                        Number number)
    {
        AppearanceLabel *caption =
            label(title, name + u"Label"_s, controlFontSize, QFont::Normal, labelColor());
        auto *popUp = add(new PopUpButton, name);
        popUp->setFont(systemFont(controlFontSize, QFont::Normal));
        // Screen readers take the name of a pop-up button from its buddy.
        caption->setBuddy(popUp);
        for (const auto &option : options)
            popUp->addItem(option.titre.toString(), option.*number);
        const int left = std::min(popUpLeft, cardRight - popUp->sizeHint().width());
        popUp->setGeometry(left, middle - 13, cardRight - left, 26);
        fit(*caption, {cardLeft, 0}, left - 8);
        caption->move(cardLeft, middle - caption->height() / 2);
        return popUp;
    }

    QCheckBox *checkBox(const QString &title, const QString &name, int top)
    {
        auto *box = add(new AccentCheckBox(title), name);
        box->setFont(systemFont(controlFontSize, QFont::Normal));
        fit(*box, {cardLeft, top}, cardRight);
        return box;
    }

    QPushButton *pushButton(const QString &title, const QString &name)
    {
        auto *button = add(new QPushButton(title), name);
        button->setFont(systemFont(controlFontSize, QFont::Normal));
        fitWithPadding(*button);
        return button;
    }

private:
    QWidget *m_root;
};

/// Places both buttons in one row, in the same font, which is reduced until they fit.
void placeButtonRow(QPushButton &first, QPushButton &second, int top)
{
    constexpr int gap = 10;
    QFont font = first.font();
    while (pageMargin + first.width() + gap + second.width() > pageRight &&
           font.pixelSize() > smallestFontSize) {
        font.setPixelSize(font.pixelSize() - 1);
        for (QPushButton *button : {&first, &second}) {
            button->setFont(font);
            fitWithPadding(*button);
        }
    }
    first.move(pageMargin, top);
    second.move(pageMargin + first.width() + gap, top);
}

} // namespace

void AppDelegate::ensureSettingsView()
{
    if (m_settingsView)
        return;
    m_settingsView = buildSettingsView();
    m_mainWindow->addPage(m_settingsView);
    showStoredSettings();
}

void AppDelegate::showStoredSettings()
{
    if (!m_settingsView)
        return;
    const auto select = [this](const QString &name, int number) {
        auto *popUp = m_settingsView->findChild<QComboBox *>(name);
        popUp->setCurrentIndex(popUp->findData(number));
    };
    const auto check = [this](const QString &name, bool isOn) {
        setCheckedQuietly(*m_settingsView->findChild<QCheckBox *>(name), isOn);
    };
    const SPUUpdater &updater = m_updaterController.updater();
    select(u"intervalPopUp"_s, BreakSettings::intervalMinutes(m_preferences));
    select(u"pausePopUp"_s, BreakSettings::pauseSeconds(m_preferences));
    check(u"soundCheckbox"_s, BreakSettings::soundEnabled(m_preferences));
    check(u"autoUpdatesCheckbox"_s,
          updater.automaticallyChecksForUpdates() && updater.automaticallyDownloadsUpdates());
    setCheckedQuietly(*m_menuBarCheckbox, isMenuBarMode());
    setCheckedQuietly(*m_loginCheckbox, m_loginItem.isEnabled());
}

QWidget *AppDelegate::buildSettingsView()
{
    auto *root = new FlippedView;
    root->setObjectName(u"settingsView"_s);
    root->resize(winSize);
    PageBuilder page(root);

    auto *back = page.add(new SymbolButton(u"chevron.left"_s, 15, u"Retour"_s), u"backButton"_s);
    back->setGeometry(18, 46, 28, 28);
    back->setAccessibleDescription(u"Quitte les réglages"_s);
    connect(back, &QPushButton::clicked, this, &AppDelegate::showMain);
    AppearanceLabel *title = page.label(u"Réglages"_s, u"settingsTitle"_s, 20, QFont::Bold, labelColor());
    title->adjustSize();
    title->move(54, 60 - title->height() / 2);

    buildRhythmCards(*root);
    buildSystemCard(*root);

    QPushButton *updates = page.pushButton(u"Rechercher des mises à jour…"_s, u"updatesButton"_s);
    connect(updates, &QPushButton::clicked, &m_updaterController,
            &SPUStandardUpdaterController::checkForUpdates);
    QPushButton *report = page.pushButton(u"Signaler un problème…"_s, u"reportButton"_s);
    connect(report, &QPushButton::clicked, this, &AppDelegate::reportProblemPressed);
    placeButtonRow(*updates, *report, 332);

    page.add(new Separator, u"separator"_s)->setGeometry(pageMargin, 372, pageRight - pageMargin, 1);
    buildFooter(*root);
    return root;
}

void AppDelegate::buildRhythmCards(QWidget &root)
{
    PageBuilder page(&root);
    page.card({pageMargin, 94, 382, 80});
    QComboBox *interval = page.popUpRow(u"Intervalle entre les pauses"_s, u"intervalPopUp"_s, 115,
                                        BreakSettings::intervals, &BreakSettings::IntervalOption::minutes);
    connect(interval, &QComboBox::activated, this, [this, interval] { intervalChanged(*interval); });
    QComboBox *pause = page.popUpRow(u"Durée d'une pause"_s, u"pausePopUp"_s, 149,
                                     BreakSettings::pauseDurations, &BreakSettings::PauseOption::secondes);
    connect(pause, &QComboBox::activated, this, [this, pause] { pauseDurationChanged(*pause); });

    page.card({pageMargin, 184, 382, 38});
    QCheckBox *sound = page.checkBox(u"Jouer un son doux au début de la pause"_s, u"soundCheckbox"_s, 193);
    connect(sound, &QCheckBox::toggled, this, [this, sound] { toggleSound(*sound); });
}

void AppDelegate::buildSystemCard(QWidget &root)
{
    PageBuilder page(&root);
    page.card({pageMargin, 232, 382, 90});
    QCheckBox *updates =
        page.checkBox(u"Installer les mises à jour automatiquement"_s, u"autoUpdatesCheckbox"_s, 242);
    connect(updates, &QCheckBox::toggled, this, [this, updates] { toggleAutoUpdates(*updates); });
    m_menuBarCheckbox =
        page.checkBox(u"Icône dans la barre de menus (au lieu du Dock)"_s, u"menuBarCheckbox"_s, 269);
    connect(m_menuBarCheckbox, &QCheckBox::toggled, this, [this] { toggleMenuBarMode(*m_menuBarCheckbox); });
    m_loginCheckbox = page.checkBox(u"Ouvrir à la connexion"_s, u"loginCheckbox"_s, 296);
    connect(m_loginCheckbox, &QCheckBox::toggled, this, [this] { toggleLoginItem(*m_loginCheckbox); });
    fitAlike({updates, m_menuBarCheckbox, m_loginCheckbox});
    m_loginItem.onRefused = [this] { setCheckedQuietly(*m_loginCheckbox, m_loginItem.isEnabled()); };
}

void AppDelegate::buildFooter(QWidget &root)
{
    PageBuilder page(&root);
    const QString version = m_bundle.shortVersion();
    fit(*page.label(u"OrvaneBreak v"_s + version, u"versionLabel"_s, 12, QFont::DemiBold, labelColor()),
        {pageMargin, 420}, pageRight);
    fit(*page.label(u"Développé par Orvane Labs,\nstudio suisse d'applications Mac."_s, u"makersLabel"_s, 11,
                    QFont::Normal, secondaryLabelColor()),
        {pageMargin, 438}, pageRight);
    auto *link = page.add(new TextButton(QStringLiteral(ORVANE_WEBSITE_NAME), systemFont(12, QFont::DemiBold),
                                         orvaneMauve(), QMargins()),
                          u"websiteLink"_s);
    link->setAccessibleDescription(QStringLiteral(ORVANE_WEBSITE_URL));
    connect(link, &QPushButton::clicked, this, &AppDelegate::openOrvaneLabs);
    fit(*link, {pageMargin, 470}, pageRight);
}
