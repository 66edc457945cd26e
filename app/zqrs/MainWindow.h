#pragma once

#include <QMainWindow>

class QLabel;
class QSettings;
class zqRs;

// The host: menus that call the control with their keys, a status bar with the database and the
// user, and the control's properties kept in the settings file between runs.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    MainWindow(QSettings& settings, QWidget* parent = nullptr);

    zqRs& control() { return *m_control; }
    // Runs one menu key; an error of the control is shown, not thrown.
    void run(const QString& key, qint16 state = 0);
    void updateStatus();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();

    QSettings& m_settings;
    zqRs* m_control;
    QLabel* m_database;
    QLabel* m_user;
};
