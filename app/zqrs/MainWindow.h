#pragma once

#include <QHash>
#include <QMainWindow>
#include <QVariantMap>

class QAction;
class QLabel;
class QSettings;
class zqRs;
namespace zq {
class HomePage;
}

// The host: the menus of the personnel office, each item calling the control with its key after
// the rights check of entering; the system menu with login, password, users and the operation log;
// a status bar with company, user and database; the control's properties kept in the settings
// file between runs.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    MainWindow(QSettings& settings, QWidget* parent = nullptr);

    zqRs& control() { return *m_control; }
    // Runs one menu key, with settings of its screen beyond the key's; an error of the control is
    // shown, not thrown. The home page is read again afterwards.
    void run(const QString& key, qint16 state = 0, const QVariantMap& settings = {});
    zq::HomePage& home() { return *m_home; }
    // Reads the module captions of the database (once it can be opened) and enables what the user
    // may reach; then the status bar.
    void refresh();
    void updateStatus();
    // The stand-alone login, offering `userName` first; false when the user gave up. A user with
    // notices posted since he last opened the board is told how many.
    bool login(const QString& userName = QString());
    // Counts the notices posted since the user last opened the board, for the status bar.
    void updateUnread();
    int unreadNotices() const { return m_unread; }

    void changePassword();
    void openUserAdmin();
    void openLog();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    // The keys of the host's entry named by its first key, in the order they are tried.
    static QStringList entryKeys(const QString& key);
    void loadCaptions();
    void switchUser();

    QSettings& m_settings;
    zqRs* m_control;
    zq::HomePage* m_home;
    QLabel* m_company;
    QLabel* m_user;
    QLabel* m_database;
    QLabel* m_news;
    int m_unread = 0;
    QHash<QString, QAction*> m_items; // first menu key of an entry -> its item
    QAction* m_changePassword = nullptr;
    QAction* m_userAdmin = nullptr;
    QAction* m_log = nullptr;
};
