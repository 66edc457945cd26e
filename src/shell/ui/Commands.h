#pragma once

#include <functional>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <vector>

class QDialog;
class QWidget;

namespace zq {

// One row of the command table: the menu keys it answers to and what it does. A screen row gives
// the screen (its singleton, created on the call) and the public settings assigned before it is
// shown; a print row gives an action instead.
struct Command {
    QStringList keys;
    std::function<QDialog*()> screen;
    std::function<void(QDialog& screen, qint16 state)> assign;
    std::function<void(qint16 state)> action;
};

// Appends a row to the table in use. Rows are matched top to bottom, keys without regard to case.
void registerCommand(const QStringList& keys, std::function<QDialog*()> screen,
                     std::function<void(QDialog&, qint16)> assign = {});
void registerAction(const QStringList& keys, std::function<void(qint16)> action);

// Adds the rows of every screen of the system, in menu order. Run once, before the first look-up.
void registerScreens();

// The first row that answers to the key, or nullptr.
const Command* findCommand(const QString& key);

// Carries out the row of the key: the action, or the screen with its settings assigned, shown
// modally and dropped when closed (unless it dropped itself). False for an unknown key. `extra`
// settings are assigned after the row's own, as properties of the screen.
bool runCommand(const QString& key, qint16 state, const QVariantMap& extra = {});

// Shows a screen modally and gives its result; exec() unless a test drives screens itself.
using ModalRunner = std::function<int(QDialog&)>;
void setModalRunner(ModalRunner runner);
int showModal(QDialog& screen);

// Screens that other screens open by name: the browser its record screens, the master record the
// department register, a staff button the picker. A caller that finds no such screen greys its
// button. A screen's public settings are its Qt properties; it runs its load steps when first
// shown, so settings assigned before showing take effect.
using FormFactory = std::function<QDialog*(QWidget* parent)>;
void registerForm(const QString& name, FormFactory factory);
bool hasForm(const QString& name);
// Creates the screen under parent, assigns the settings as properties, shows it modally and
// deletes it. The modal result, or -1 when there is no such screen (nothing is shown).
int openForm(const QString& name, QWidget* parent, const QVariantMap& settings = {});

// Replaces the whole table for its lifetime, so that a test sees only the rows it registers.
class CommandTableScope {
public:
    CommandTableScope();
    ~CommandTableScope();
    CommandTableScope(const CommandTableScope&) = delete;
    CommandTableScope& operator=(const CommandTableScope&) = delete;

private:
    std::vector<Command>* m_previous;
    std::vector<Command> m_table;
};

} // namespace zq
